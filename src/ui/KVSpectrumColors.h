#pragma once

#include "colour/ColorComponents.h"
#include "colour/ColorSpaceModel.h"
#include "colour/Matrix3.h"

#include <QColor>
#include <optional>

namespace tintorra {

// The kinds of colour the spectrogram knows how to draw. The cylinders share the numbers of the
// colour modes; the two LCh kinds have their own.
enum KVSpectrumColorKind : long {
    kSpectrumColorHCL = 2,
    kSpectrumColorHSB = 3,
    kSpectrumColorHSL = 4,
    kSpectrumColorRGB = 5,
    kSpectrumColorLChab = 8,
    kSpectrumColorLChuv = 9,
};

// Where the spectrogram's colours come from: LCh kinds hold (L, C, h), the others (h, c/s, l/b).
struct KVAnythingColor {
    ColorComponents components;
    long kind = kSpectrumColorLChuv;
};

// The kind in which a colour of `colorSpaceModel` is drawn: the LCh modes map onto their kinds,
// every other mode is passed on as it is.
long spectrumColorKindForModel(ColorSpaceModel colorSpaceModel);

// A drawable colour: LCh through XYZ with `MI` (XYZ to RGB), the cylinders directly, then encoded
// with the display gamma of 2.2. A kind we cannot convert is reported on standard error; RGB is
// then used unchanged, anything else gives no colour.
std::optional<QColor> colorFromAnythingColor(const KVAnythingColor& color, const Matrix3& MI);

std::optional<QColor> colorForLightness(double lightness, double chroma, double hue, double alpha,
                                        ColorSpaceModel colorSpaceModel, const Matrix3& MI);

} // namespace tintorra
