#pragma once

#include "colour/ColorComponents.h"

namespace tintorra {

// Colour differences between two Lab colours (L, a, b in c0..c2; alpha ignored). The first colour
// is the reference: the weighted formulas take their weights from it, and the signed
// differences are second minus first.

// Euclidean distance in Lab.
double deltaE76(ColorComponents lab1, ColorComponents lab2);

// L2 - L1.
double deltaL(ColorComponents lab1, ColorComponents lab2);

// C2 - C1, the chromas being hypot(a, b).
double deltaC(ColorComponents lab1, ColorComponents lab2);

// The hue part of the distance, sqrt(da^2 + db^2 - dC^2) (0 where rounding makes the radicand
// negative).
double deltaH(ColorComponents lab1, ColorComponents lab2);

// CIE94. textiles == 1 selects the textile weights (kL 2, K1 0.048, K2 0.014); any other value
// the graphic-arts weights (1, 0.045, 0.015).
double deltaE94(int textiles, ColorComponents lab1, ColorComponents lab2);

// CIEDE2000 with kL = kC = kH = 1.
double deltaE2000(ColorComponents lab1, ColorComponents lab2);

// CMC l:c, and its three weighted terms: lightness dL / (l SL), chroma dC / (c SC) (both signed
// as above) and hue dH / SH (not negative). deltaECMC is the root of the sum of their squares.
double deltaECMC(ColorComponents lab1, ColorComponents lab2, double l, double c);
double deltaECMCLightness(ColorComponents lab1, ColorComponents lab2, double l);
double deltaECMCChroma(ColorComponents lab1, ColorComponents lab2, double c);
double deltaECMCHue(ColorComponents lab1, ColorComponents lab2);

} // namespace tintorra
