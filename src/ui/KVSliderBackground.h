#pragma once

#include "colour/ColorComponents.h"
#include "colour/KVColorGamut.h"

#include <QColor>
#include <QImage>
#include <QSize>
#include <cstdint>
#include <optional>
#include <vector>

namespace tintorra {

class KVCircularSliderGeometry;

// The colour the hue ring shows for a hue (a fraction of the circle), gamma-encoded RGB: in the
// LCh modes the gamut's most chromatic colour of that hue in the gamut's RGB space, encoded with
// gamma 2.2 as the spectrogram draws its colours; in HCL, HSB and HSL the fully saturated colour
// of the hue. Nothing when an LCh mode has no gamut to ask.
std::optional<ColorComponents> hueRingColor(double hueFraction, ColorSpaceModel colorSpaceModel,
                                            const KVColorGamut* gamut);

// Everything the still part of a range slider depends on: the hue ring or the straight slot with
// its outlines. A repaint draws this image and only the moving parts on top of it.
struct KVSliderBackgroundInputs {
    QSize size; // logical points
    qreal devicePixelRatio = 1.0;
    bool circular = true;
    ColorSpaceModel colorSpaceModel = ColorSpaceModel::LChuv;
    KVColorGamutPtr gamut;
    QColor lowerColor;
    QColor middleColor; // invalid: the slot runs straight from lower to upper
    QColor upperColor;
    QColor neutralColor; // the ring when there are no hue colours to show
    QColor outlineColor;

    friend bool operator==(const KVSliderBackgroundInputs&,
                           const KVSliderBackgroundInputs&) = default;
};

// Where the selection lies on a ring, as fractions of the scale (one turn), ascending and
// unwrapped: the lower fall-off's end, the two bounds and the upper fall-off's end.
struct KVRingSelection {
    double lowerFalloff = 0.0;
    double lower = 0.0;
    double upper = 0.0;
    double upperFalloff = 0.0;
};

// The cached background, at device pixels. A ring also lists its pixels with their angles, so
// that a frame can lay the selection over the hues by weighting those pixels, without asking
// for an angle per pixel again.
class KVSliderBackground {
public:
    // Builds the background again when the inputs differ from the last build's.
    void prepare(const KVSliderBackgroundInputs& inputs, const KVCircularSliderGeometry& geometry);
    const QImage& image() const { return image_; }

    // The prepared ring with the selection: a veil over the hues outside it and a track along it
    // inside the band, both fading across the fall-offs.
    const QImage& ringFrame(const KVRingSelection& selection, const QColor& track,
                            const QColor& veil);

    // The colour the prepared background shows at a fraction of the scale (for filling the
    // middle thumb).
    QColor colorAt(double fraction) const;

    // How many times the background has been built (each build is a full pass over the ring).
    int buildCount() const { return buildCount_; }

private:
    // A pixel of the ring's band or track: where it lies in the image, its angle in steps of a
    // turn and how much of it the shape covers.
    struct RingPixel {
        std::uint32_t offset;
        std::uint16_t angle;
        std::uint8_t coverage;
    };

    void build(const KVCircularSliderGeometry& geometry);
    void fillRing(const KVCircularSliderGeometry& geometry);
    void paintSlot(const KVCircularSliderGeometry& geometry);

    std::optional<KVSliderBackgroundInputs> inputs_;
    QImage image_;
    QImage frame_;
    // One colour per half degree of hue (the gamut's own resolution); empty for a neutral ring.
    std::vector<QRgb> hueColors_;
    std::vector<RingPixel> bandPixels_;
    std::vector<RingPixel> trackPixels_;
    int buildCount_ = 0;
};

} // namespace tintorra
