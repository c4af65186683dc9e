#include "tools/IconPainter.h"

#include "colour/ColorConversions.h"
#include "colour/HueAngles.h"
#include "colour/IccProfiles.h"
#include "colour/KVColorGamut.h"
#include "image/PixelAccess.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <iomanip>
#include <sstream>

namespace tintorra {

namespace {

// Geometry in units of the icon's half width, centred.
constexpr double kRingInner = 0.54;
constexpr double kRingOuter = 0.84;
// The lifted arc: hues from 15 to 75 degrees, pushed outwards.
constexpr double kArcFrom = 15.0 * kPi / 180.0;
constexpr double kArcTo = 75.0 * kPi / 180.0;
constexpr double kArcLift = 0.12;
constexpr double kArcGap = 0.03;
constexpr double kDiscRadius = 0.40;
constexpr double kTargetHue = 250.0 * kPi / 180.0;

enum class Region { none, ring, arc, disc };

double hueAngle(double x, double y)
{
    const double angle = std::atan2(y, x);
    return angle < 0.0 ? angle + 2.0 * kPi : angle;
}

bool inArc(double angle)
{
    return angle >= kArcFrom && angle <= kArcTo;
}

Region regionAt(double x, double y)
{
    const double r = std::hypot(x, y);
    if (r <= kDiscRadius) {
        return Region::disc;
    }
    const double angle = hueAngle(x, y);
    if (inArc(angle)) {
        // The arc keeps the ring's width but sits further out, with a gap on both sides along
        // the ring so that it reads as taken out of it.
        const double gapAngle = kArcGap / (kRingOuter + kArcLift);
        if (angle < kArcFrom + gapAngle || angle > kArcTo - gapAngle) {
            return Region::none;
        }
        return (r >= kRingInner + kArcLift && r <= kRingOuter + kArcLift) ? Region::arc
                                                                          : Region::none;
    }
    return (r >= kRingInner && r <= kRingOuter) ? Region::ring : Region::none;
}

// The lightness of each half degree's most chromatic colour, smoothed over 40 degrees: the
// peak lightness jumps between neighbouring hues (most between green and cyan), which would
// streak the ring.
std::array<double, 720> smoothedPeakLightness(const KVColorGamut& gamut)
{
    std::array<double, 720> raw{};
    for (std::size_t i = 0; i < raw.size(); ++i) {
        raw[i] = gamut.maxChromaForHue(static_cast<double>(i) * kPi / 360.0).c0;
    }
    std::array<double, 720> smooth{};
    constexpr int kHalfWindow = 40;
    for (std::size_t i = 0; i < raw.size(); ++i) {
        double sum = 0.0;
        for (int k = -kHalfWindow; k <= kHalfWindow; ++k) {
            sum += raw[(i + raw.size() + static_cast<std::size_t>(k + 720)) % raw.size()];
        }
        smooth[i] = sum / (2 * kHalfWindow + 1);
    }
    return smooth;
}

struct Palette {
    const KVColorGamut& gamut;
    Matrix3 MI;
    std::array<double, 720> peakLightness;
};

// The ring's colour: near the most chromatic colour of the hue, a little darker towards the
// inside, at 96 % of the largest chroma the lightness allows.
ColorComponents ringColour(const Palette& palette, double hue, double t, double lightening)
{
    const auto index = static_cast<std::size_t>(std::lround(hue * 360.0 / kPi)) % 720;
    // Pulled towards a middle lightness so that yellow and cyan do not fade into white.
    const double base = 0.7 * palette.peakLightness[index] + 0.3 * 55.0;
    const double lightness = std::clamp(base + (t - 0.6) * 22.0 + lightening, 5.0, 95.0);
    const double chroma = 0.96 * palette.gamut.chromaForHue(hue, lightness);
    return lchuvToRgb({lightness, chroma, hue, 1.0}, palette.MI);
}

ColorComponents discColour(const Palette& palette, double r)
{
    // A soft highlight towards the top left keeps the disc from looking flat.
    const double lightness = 48.0 + 10.0 * (1.0 - r / kDiscRadius);
    const double chroma = 0.9 * palette.gamut.chromaForHue(kTargetHue, lightness);
    return lchuvToRgb({lightness, chroma, kTargetHue, 1.0}, palette.MI);
}

ColorComponents regionColour(Region region, double x, double y, const Palette& palette)
{
    const double r = std::hypot(x, y);
    double hue = hueAngle(x, y);
    switch (region) {
    case Region::ring:
        return ringColour(palette, hue,
                          std::clamp((r - kRingInner) / (kRingOuter - kRingInner), 0.0, 1.0), 0.0);
    case Region::arc:
        hue = std::clamp(hue, kArcFrom, kArcTo);
        return ringColour(
            palette, hue,
            std::clamp((r - kRingInner - kArcLift) / (kRingOuter - kRingInner), 0.0, 1.0), 6.0);
    case Region::disc:
        return discColour(palette, std::hypot(x + 0.1, y - 0.1));
    case Region::none:
        break;
    }
    return {0.0, 0.0, 0.0, 0.0};
}

// Gamma-encoded as the bitmap's pixels are, as #rrggbb.
std::string hexColour(const ColorComponents& linear)
{
    char text[8];
    const auto encode = [](double c) {
        return static_cast<int>(std::lround(255.0 * std::pow(std::clamp(c, 0.0, 1.0), 1.0 / 2.2)));
    };
    std::snprintf(text, sizeof text, "#%02x%02x%02x", encode(linear.c0), encode(linear.c1),
                  encode(linear.c2));
    return text;
}

// A point at an angle and radius (in units of the half width) in the SVG's 512 unit space,
// whose y runs down.
void writePoint(std::ostream& out, double angle, double radius)
{
    out << 256.0 + 256.0 * radius * std::cos(angle) << ','
        << 256.0 - 256.0 * radius * std::sin(angle);
}

// A wedge of the ring between two angles and radii.
void writeWedgePath(std::ostream& out, double from, double to, double inner, double outer)
{
    out << 'M';
    writePoint(out, from, outer);
    out << 'A' << 256.0 * outer << ',' << 256.0 * outer << " 0 0 0 ";
    writePoint(out, to, outer);
    out << 'L';
    writePoint(out, to, inner);
    out << 'A' << 256.0 * inner << ',' << 256.0 * inner << " 0 0 1 ";
    writePoint(out, from, inner);
    out << 'Z';
}

} // namespace

std::string tintorraIconSvg()
{
    const KVColorSpace space = sRGBColorSpace();
    const KVColorGamut gamut(&space, ColorSpaceModel::LChuv);
    Palette palette{gamut, {}, smoothedPeakLightness(gamut)};
    gamut.copy_XYZ_to_RGB_matrix(palette.MI);

    std::ostringstream defs;
    std::ostringstream shapes;
    defs << std::fixed << std::setprecision(2);
    shapes << std::fixed << std::setprecision(2);
    int gradient = 0;
    // One wedge per two degrees, each a little wider than its share so that neighbours overlap
    // and no seam shows between them.
    constexpr int kWedges = 180;
    constexpr double kStep = 2.0 * kPi / kWedges;
    constexpr double kOverlap = 0.004;
    const auto addWedge = [&](double from, double to, double inner, double outer,
                              double lightening) {
        const double hue = 0.5 * (from + to);
        const int id = gradient++;
        // Three stops: the shade is not linear across the band, and two would muddy the arc.
        defs << "<radialGradient id=\"w" << id
             << "\" gradientUnits=\"userSpaceOnUse\" cx=\"256\" cy=\"256\" r=\"" << 256.0 * outer
             << "\">";
        for (const double t : {0.0, 0.5, 1.0}) {
            defs << "<stop offset=\"" << (inner + t * (outer - inner)) / outer << "\" stop-color=\""
                 << hexColour(ringColour(palette, hue, t, lightening)) << "\"/>";
        }
        defs << "</radialGradient>\n";
        shapes << "<path fill=\"url(#w" << id << ")\" d=\"";
        writeWedgePath(shapes, from - kOverlap, to + kOverlap, inner, outer);
        shapes << "\"/>\n";
    };
    for (int i = 0; i < kWedges; ++i) {
        const double from = i * kStep;
        const double to = from + kStep;
        if (to > kArcFrom && from < kArcTo) {
            continue; // taken out of the ring: the arc below
        }
        addWedge(from, to, kRingInner, kRingOuter, 0.0);
    }
    const double gapAngle = kArcGap / (kRingOuter + kArcLift);
    const double arcFrom = kArcFrom + gapAngle;
    const double arcTo = kArcTo - gapAngle;
    const int arcWedges = static_cast<int>(std::ceil((arcTo - arcFrom) / kStep));
    for (int i = 0; i < arcWedges; ++i) {
        const double from = arcFrom + (arcTo - arcFrom) * i / arcWedges;
        const double to = arcFrom + (arcTo - arcFrom) * (i + 1) / arcWedges;
        addWedge(from, to, kRingInner + kArcLift, kRingOuter + kArcLift, 6.0);
    }
    // The disc's highlight sits up and to the left, as in the bitmap.
    defs << "<radialGradient id=\"disc\" gradientUnits=\"userSpaceOnUse\" cx=\"" << 256.0 - 25.6
         << "\" cy=\"" << 256.0 - 25.6 << "\" r=\"" << 256.0 * kDiscRadius << "\">";
    for (const double r : {0.0, 0.5, 1.0}) {
        defs << "<stop offset=\"" << r << "\" stop-color=\""
             << hexColour(discColour(palette, r * kDiscRadius)) << "\"/>";
    }
    defs << "</radialGradient>\n";
    shapes << "<circle cx=\"256\" cy=\"256\" r=\"" << 256.0 * kDiscRadius
           << "\" fill=\"url(#disc)\"/>\n";

    std::ostringstream svg;
    svg << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"512\" height=\"512\" "
        << "viewBox=\"0 0 512 512\">\n<title>Tintorra</title>\n<defs>\n"
        << defs.str() << "</defs>\n"
        << shapes.str() << "</svg>\n";
    return svg.str();
}

KVBitmapPtr paintTintorraIcon(int size)
{
    KVBitmapPtr bitmap = KVBitmap::deviceRGBA8888Rep(size, size, false);
    if (!bitmap) {
        return nullptr;
    }
    bitmap->setColorSpace(sRGBColorSpace());
    const KVColorGamut gamut(&bitmap->colorSpace(), ColorSpaceModel::LChuv);
    Palette palette{gamut, {}, smoothedPeakLightness(gamut)};
    gamut.copy_XYZ_to_RGB_matrix(palette.MI);
    const PixelManipulationOffsets offsets =
        pixelManipulationOffsetsWithImageGamma(bitmap, 1.0 / 2.2);

    // Small icons get more samples per pixel: their edges are most of what they show.
    const int grid = size <= 64 ? 8 : 4;
    const double scale = 2.0 / size;
    for (int py = 0; py < size; ++py) {
        for (int px = 0; px < size; ++px) {
            // Coverage of each region by a regular grid of samples; each region's colour is
            // taken once, at the sample nearest the pixel centre inside it.
            std::array<int, 4> hits{};
            std::array<ColorComponents, 4> colours{};
            std::array<double, 4> nearest{1e9, 1e9, 1e9, 1e9};
            for (int sy = 0; sy < grid; ++sy) {
                for (int sx = 0; sx < grid; ++sx) {
                    const double fx = (sx + 0.5) / grid;
                    const double fy = (sy + 0.5) / grid;
                    const double x = (px + fx) * scale - 1.0;
                    const double y = 1.0 - (py + fy) * scale;
                    const Region region = regionAt(x, y);
                    const auto index = static_cast<std::size_t>(region);
                    ++hits[index];
                    const double d = std::hypot(fx - 0.5, fy - 0.5);
                    if (region != Region::none && d < nearest[index]) {
                        nearest[index] = d;
                        colours[index] = regionColour(region, x, y, palette);
                    }
                }
            }
            ColorComponents sum{0.0, 0.0, 0.0, 0.0};
            for (std::size_t i = 1; i < hits.size(); ++i) {
                const double weight = static_cast<double>(hits[i]) / (grid * grid);
                sum.c0 += colours[i].c0 * weight;
                sum.c1 += colours[i].c1 * weight;
                sum.c2 += colours[i].c2 * weight;
                sum.alpha += weight;
            }
            if (sum.alpha > 0.0) {
                sum.c0 /= sum.alpha;
                sum.c1 /= sum.alpha;
                sum.c2 /= sum.alpha;
            }
            writeLinearFloats(px, py, offsets, sum);
        }
    }
    return bitmap;
}

} // namespace tintorra
