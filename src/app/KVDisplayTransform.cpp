#include "app/KVDisplayTransform.h"

#include "colour/LcmsProfile.h"

#include <lcms2.h>

#include <QCryptographicHash>
#include <map>
#include <mutex>
#include <utility>
#include <vector>

namespace tintorra {

namespace {

LcmsProfileHandle openRgbProfile(const std::vector<std::uint8_t>& bytes)
{
    if (bytes.empty())
        return LcmsProfileHandle(cmsCreate_sRGBProfile());
    LcmsProfileHandle profile = openLcmsProfile(bytes);
    if (profile && cmsGetColorSpace(profile.get()) != cmsSigRgbData)
        return {};
    return profile;
}

std::vector<std::uint8_t> bytesOf(const QByteArray& array)
{
    return {array.cbegin(), array.cend()};
}

// Keyed by the digests of both profiles and the depth; a handful of images per session.
using TransformKey = std::pair<QByteArray, bool>;

QByteArray keyDigest(const std::vector<std::uint8_t>& image, const QByteArray& display)
{
    QCryptographicHash hash(QCryptographicHash::Sha1);
    hash.addData(QByteArrayView(reinterpret_cast<const char*>(image.data()),
                                static_cast<qsizetype>(image.size())));
    hash.addData(QByteArrayView("|"));
    hash.addData(display);
    return hash.result();
}

} // namespace

std::shared_ptr<const KVDisplayTransform>
KVDisplayTransform::forImage(const KVColorSpace& space, bool sixteenBits,
                             const QByteArray& displayProfile)
{
    static std::mutex mutex;
    static std::map<TransformKey, std::shared_ptr<const KVDisplayTransform>> cache;

    const std::vector<std::uint8_t> imageBytes =
        space.model() == KVColorSpaceModel::rgb ? space.iccProfile() : std::vector<std::uint8_t>{};
    const TransformKey key{keyDigest(imageBytes, displayProfile), sixteenBits};
    const std::lock_guard lock(mutex);
    if (const auto found = cache.find(key); found != cache.end())
        return found->second;

    void* transform = nullptr;
    const std::vector<std::uint8_t> displayBytes = bytesOf(displayProfile);
    if (imageBytes != displayBytes) {
        const LcmsProfileHandle from = openRgbProfile(imageBytes);
        const LcmsProfileHandle to = openRgbProfile(displayBytes);
        if (from && to) {
            const cmsUInt32Number format = sixteenBits ? TYPE_RGBA_16 : TYPE_RGBA_8;
            // No one-pixel cache, so that worker threads can share the transform.
            transform = cmsCreateTransform(from.get(), format, to.get(), format, INTENT_PERCEPTUAL,
                                           cmsFLAGS_NOCACHE | cmsFLAGS_COPY_ALPHA);
        }
    }
    std::shared_ptr<const KVDisplayTransform> made(new KVDisplayTransform(transform, sixteenBits));
    // A session that meets many profiles should not keep every transform alive.
    if (cache.size() > 16)
        cache.clear();
    cache.emplace(key, made);
    return made;
}

KVDisplayTransform::~KVDisplayTransform()
{
    if (transform_)
        cmsDeleteTransform(transform_);
}

void KVDisplayTransform::transform8(const std::uint8_t* in, std::uint8_t* out, int count) const
{
    if (transform_)
        cmsDoTransform(transform_, in, out, static_cast<cmsUInt32Number>(count));
    else if (in != out)
        std::copy(in, in + 4 * count, out);
}

void KVDisplayTransform::transform16(const std::uint16_t* in, std::uint16_t* out, int count) const
{
    if (transform_)
        cmsDoTransform(transform_, in, out, static_cast<cmsUInt32Number>(count));
    else if (in != out)
        std::copy(in, in + 4 * count, out);
}

} // namespace tintorra
