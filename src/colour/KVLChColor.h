#pragma once

#include "colour/ColorComponents.h"
#include "colour/KVColorGamut.h"
#include "colour/Matrix3.h"

#include <memory>

namespace tintorra {

// One LCh colour travelling between views: a clicked spectrogram colour, a dominant-colour
// swatch. Lightness 0..100, chroma >= 0, hue in radians, alpha 0..1, and optionally the gamut it
// was measured in.
class KVLChColor {
public:
    KVLChColor() = default;
    KVLChColor(double lightness, double chroma, double hue, double alpha)
        : lightness_(lightness), chroma_(chroma), hue_(hue), alpha_(alpha)
    {}

    double lightness() const { return lightness_; }
    void setLightness(double lightness) { lightness_ = lightness; }
    double chroma() const { return chroma_; }
    void setChroma(double chroma) { chroma_ = chroma; }
    double hue() const { return hue_; }
    void setHue(double hue) { hue_ = hue; }
    double alpha() const { return alpha_; }
    void setAlpha(double alpha) { alpha_ = alpha; }
    const KVColorGamutPtr& gamut() const { return gamut_; }
    void setGamut(KVColorGamutPtr gamut) { gamut_ = std::move(gamut); }

    // (L, C, h, alpha).
    ColorComponents lchColor() const { return {lightness_, chroma_, hue_, alpha_}; }

    // Linear RGB through `MI` (XYZ to RGB), clamped to 0..1. The value is always read as LCh over
    // Luv, whichever mode produced it: the swatches are drawn that way on purpose.
    ColorComponents rgbUsingMatrix(const Matrix3& MI) const;

private:
    double lightness_ = 0.0;
    double chroma_ = 0.0;
    double hue_ = 0.0;
    double alpha_ = 1.0;
    KVColorGamutPtr gamut_;
};

} // namespace tintorra
