#pragma once

#include "colour/KVColorSpace.h"

#include <QByteArray>
#include <cstdint>
#include <memory>

namespace tintorra {

// The colour transform from an image's RGB space (its ICC profile, sRGB when it has none) to the
// display's (its profile, sRGB when it has none). Rows go through Little CMS in place of the
// whole photo: the view converts only what it shows, after scaling. Thread-safe; shared through
// a small cache so that every repaint of an image reuses one transform.
class KVDisplayTransform {
public:
    // The transform for images in `space` with 8- or 16-bit samples, shown on a display with
    // `displayProfile` (empty: sRGB). Never null; an identity when both sides are the same or a
    // profile cannot be used (a grey or broken one).
    static std::shared_ptr<const KVDisplayTransform>
    forImage(const KVColorSpace& space, bool sixteenBits, const QByteArray& displayProfile);

    ~KVDisplayTransform();
    KVDisplayTransform(const KVDisplayTransform&) = delete;
    KVDisplayTransform& operator=(const KVDisplayTransform&) = delete;

    bool isIdentity() const { return transform_ == nullptr; }
    bool sixteenBits() const { return sixteenBits_; }
    // `count` pixels r g b a in, the same order out, alpha copied; in and out may be the same.
    void transform8(const std::uint8_t* in, std::uint8_t* out, int count) const;
    void transform16(const std::uint16_t* in, std::uint16_t* out, int count) const;

private:
    KVDisplayTransform(void* transform, bool sixteenBits)
        : transform_(transform), sixteenBits_(sixteenBits)
    {}

    void* transform_ = nullptr; // cmsHTRANSFORM
    bool sixteenBits_ = false;
};

} // namespace tintorra
