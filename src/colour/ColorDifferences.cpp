#include "colour/ColorDifferences.h"

#include "colour/HueAngles.h"

#include <cmath>

namespace tintorra {

namespace {

double chroma(ColorComponents lab)
{
    return std::hypot(lab.c1, lab.c2);
}

double squared(double x)
{
    return x * x;
}

double hueDistanceSquared(ColorComponents lab1, ColorComponents lab2)
{
    const double dC = chroma(lab2) - chroma(lab1);
    const double h2 = squared(lab2.c1 - lab1.c1) + squared(lab2.c2 - lab1.c2) - squared(dC);
    return h2 > 0.0 ? h2 : 0.0;
}

// Hue angle in degrees, [0, 360).
double hueDegrees(double a, double b)
{
    return wrapDegrees(degreesFromRadians(std::atan2(b, a)));
}

double cosDegrees(double degrees)
{
    return std::cos(radiansFromDegrees(degrees));
}

// The CMC weights all come from the reference colour.
struct CmcWeights {
    double sl;
    double sc;
    double sh;
};

CmcWeights cmcWeights(ColorComponents reference)
{
    const double L1 = reference.c0;
    const double C1 = chroma(reference);
    const double sl = L1 < 16.0 ? 0.511 : 0.040975 * L1 / (1.0 + 0.01765 * L1);
    const double sc = 0.0638 * C1 / (1.0 + 0.0131 * C1) + 0.638;
    // A neutral reference has no hue of its own; 0 degrees stands in for it.
    const double h1 = C1 < 1e-6 ? 0.0 : hueDegrees(reference.c1, reference.c2);
    const double t = (h1 >= 164.0 && h1 <= 345.0) ? 0.56 + std::fabs(0.2 * cosDegrees(h1 + 168.0))
                                                  : 0.36 + std::fabs(0.4 * cosDegrees(h1 + 35.0));
    const double c4 = squared(squared(C1));
    const double f = std::sqrt(c4 / (c4 + 1900.0));
    return {sl, sc, sc * (f * t + 1.0 - f)};
}

} // namespace

double deltaE76(ColorComponents lab1, ColorComponents lab2)
{
    return std::sqrt(squared(lab2.c0 - lab1.c0) + squared(lab2.c1 - lab1.c1) +
                     squared(lab2.c2 - lab1.c2));
}

double deltaL(ColorComponents lab1, ColorComponents lab2)
{
    return lab2.c0 - lab1.c0;
}

double deltaC(ColorComponents lab1, ColorComponents lab2)
{
    return chroma(lab2) - chroma(lab1);
}

double deltaH(ColorComponents lab1, ColorComponents lab2)
{
    return std::sqrt(hueDistanceSquared(lab1, lab2));
}

double deltaE94(int textiles, ColorComponents lab1, ColorComponents lab2)
{
    const bool forTextiles = textiles == 1;
    const double kL = forTextiles ? 2.0 : 1.0;
    const double k1 = forTextiles ? 0.048 : 0.045;
    const double k2 = forTextiles ? 0.014 : 0.015;
    const double C1 = chroma(lab1);
    const double lightnessTerm = deltaL(lab1, lab2) / kL;
    const double chromaTerm = deltaC(lab1, lab2) / (1.0 + k1 * C1);
    const double hueTerm = deltaH(lab1, lab2) / (1.0 + k2 * C1);
    return std::sqrt(squared(lightnessTerm) + squared(chromaTerm) + squared(hueTerm));
}

double deltaE2000(ColorComponents lab1, ColorComponents lab2)
{
    constexpr double kTwentyFiveToTheSeventh = 6103515625.0;
    const auto seventh = [](double x) {
        const double x2 = x * x;
        return x2 * x2 * x2 * x;
    };

    const double L1 = lab1.c0, a1 = lab1.c1, b1 = lab1.c2;
    const double L2 = lab2.c0, a2 = lab2.c1, b2 = lab2.c2;

    // a is stretched for low-chroma colours, which brings blues and neutrals into line.
    const double meanChroma = 0.5 * (chroma(lab1) + chroma(lab2));
    const double c7 = seventh(meanChroma);
    const double g = 0.5 * (1.0 - std::sqrt(c7 / (c7 + kTwentyFiveToTheSeventh)));
    const double a1p = (1.0 + g) * a1;
    const double a2p = (1.0 + g) * a2;
    const double C1p = std::hypot(a1p, b1);
    const double C2p = std::hypot(a2p, b2);
    const double h1p = (a1p == 0.0 && b1 == 0.0) ? 0.0 : hueDegrees(a1p, b1);
    const double h2p = (a2p == 0.0 && b2 == 0.0) ? 0.0 : hueDegrees(a2p, b2);
    const bool neutral = C1p * C2p == 0.0;

    const double dLp = L2 - L1;
    const double dCp = C2p - C1p;
    double dhp = 0.0;
    if (!neutral) {
        dhp = h2p - h1p;
        if (dhp > 180.0) {
            dhp -= 360.0;
        } else if (dhp < -180.0) {
            dhp += 360.0;
        }
    }
    const double dHp = 2.0 * std::sqrt(C1p * C2p) * std::sin(radiansFromDegrees(0.5 * dhp));

    const double meanL = 0.5 * (L1 + L2);
    const double meanCp = 0.5 * (C1p + C2p);
    double meanHp = h1p + h2p;
    if (!neutral) {
        if (std::fabs(h1p - h2p) <= 180.0) {
            meanHp *= 0.5;
        } else if (h1p + h2p < 360.0) {
            meanHp = 0.5 * (meanHp + 360.0);
        } else {
            meanHp = 0.5 * (meanHp - 360.0);
        }
    }

    const double t = 1.0 - 0.17 * cosDegrees(meanHp - 30.0) + 0.24 * cosDegrees(2.0 * meanHp) +
                     0.32 * cosDegrees(3.0 * meanHp + 6.0) - 0.20 * cosDegrees(4.0 * meanHp - 63.0);
    const double rotationDegrees = 30.0 * std::exp(-squared((meanHp - 275.0) / 25.0));
    const double cp7 = seventh(meanCp);
    const double rc = 2.0 * std::sqrt(cp7 / (cp7 + kTwentyFiveToTheSeventh));
    const double lightnessOffset = squared(meanL - 50.0);
    const double sl = 1.0 + 0.015 * lightnessOffset / std::sqrt(20.0 + lightnessOffset);
    const double sc = 1.0 + 0.045 * meanCp;
    const double sh = 1.0 + 0.015 * meanCp * t;
    const double rt = -std::sin(radiansFromDegrees(2.0 * rotationDegrees)) * rc;

    const double lightnessTerm = dLp / sl;
    const double chromaTerm = dCp / sc;
    const double hueTerm = dHp / sh;
    return std::sqrt(squared(lightnessTerm) + squared(chromaTerm) + squared(hueTerm) +
                     rt * chromaTerm * hueTerm);
}

double deltaECMCLightness(ColorComponents lab1, ColorComponents lab2, double l)
{
    return deltaL(lab1, lab2) / (l * cmcWeights(lab1).sl);
}

double deltaECMCChroma(ColorComponents lab1, ColorComponents lab2, double c)
{
    return deltaC(lab1, lab2) / (c * cmcWeights(lab1).sc);
}

double deltaECMCHue(ColorComponents lab1, ColorComponents lab2)
{
    return deltaH(lab1, lab2) / cmcWeights(lab1).sh;
}

double deltaECMC(ColorComponents lab1, ColorComponents lab2, double l, double c)
{
    const CmcWeights w = cmcWeights(lab1);
    const double lightnessTerm = deltaL(lab1, lab2) / (l * w.sl);
    const double chromaTerm = deltaC(lab1, lab2) / (c * w.sc);
    const double hueTerm = deltaH(lab1, lab2) / w.sh;
    return std::sqrt(squared(lightnessTerm) + squared(chromaTerm) + squared(hueTerm));
}

} // namespace tintorra
