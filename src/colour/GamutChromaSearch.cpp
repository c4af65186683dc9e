#include "colour/GamutChromaSearch.h"

#include <cmath>
#include <cstring>

namespace tintorra {

namespace {

constexpr double kLabStartStep = 64.0;
constexpr double kLuvStartStep = 75.0;
constexpr double kSmallestStep = 0.001;

// The lightness terms of the Lab inversion, with the rounded constants the stored tables were
// produced with; they do not depend on the chroma, so a row computes them once per column.
struct LabLightnessTerms {
    double yr;
    double fy;
    double xLinear;
    double zLinear;
};

LabLightnessTerms labLightnessTerms(double L)
{
    const double l16 = 16.0 + L;
    return {L > 8.0 ? 6.40658e-7 * (l16 * l16 * l16) : 0.00110706 * L, 0.00862069 * L + 0.137931,
            0.00110705625 * L, 0.001107055 * L};
}

double luvLuminance(double L)
{
    const double l16 = 16.0 + L;
    return L > 8.0 ? 6.406576735413506e-7 * (l16 * l16 * l16) : 0.0011070564598794539 * L;
}

struct LinearRgb {
    double r;
    double g;
    double b;
};

LinearRgb labSearchRgb(const ChromaSearchCoefficients& p, const LabLightnessTerms& terms,
                       double cosHue, double sinHue, double C)
{
    const double fx = terms.fy + 0.002 * C * cosHue;
    const double fz = terms.fy - 0.005 * C * sinHue;
    const double fx3 = fx * fx * fx;
    const double fz3 = fz * fz * fz;
    const double xr = fx3 > 0.00885645 ? fx3 : terms.xLinear + 29.0 * 8.85645e-6 * C * cosHue;
    const double zr = fz3 > 0.00885645 ? fz3 : terms.zLinear - 29.0 * 2.21411e-5 * C * sinHue;
    return {p[0] * xr + p[1] * terms.yr + p[2] * zr, p[3] * xr + p[4] * terms.yr + p[5] * zr,
            p[6] * xr + p[7] * terms.yr + p[8] * zr};
}

LinearRgb luvSearchRgb(const ChromaSearchCoefficients& e, double L, double Y, double cosHue,
                       double sinHue, double C)
{
    const double u = C * cosHue;
    const double v = C * sinHue;
    const double t = Y / (0.164248 * v + L);
    return {t * (e[0] * L + e[1] * u + e[2] * v), t * (e[3] * L + e[4] * u + e[5] * v),
            t * (e[6] * L + e[7] * u + e[8] * v)};
}

// Step outward while inside, then bisect; `rgbOf` gives the unclamped linear RGB of a chroma.
template <class RgbOf>
double searchChroma(double startStep, RgbOf rgbOf)
{
    double C = startStep;
    double step = startStep;
    double factor = 1.0;
    bool beyond = false;
    do {
        const LinearRgb rgb = rgbOf(C);
        const bool inside =
            rgb.r > 0.0 && rgb.g > 0.0 && rgb.b > 0.0 && rgb.r < 1.0 && rgb.g < 1.0 && rgb.b < 1.0;
        beyond =
            rgb.r < 0.0 || rgb.g < 0.0 || rgb.b < 0.0 || rgb.r > 1.0 || rgb.g > 1.0 || rgb.b > 1.0;
        if (inside) {
            step *= factor;
            C += step;
        } else {
            step /= 2.0;
            C -= step;
            factor = 0.5;
        }
    } while (step > kSmallestStep);
    return beyond ? C - step : C;
}

// ---- The same search for several columns at once -------------------------------------------
//
// Sixteen lightness columns form a block that runs in lock step, spread over as many vector
// registers as their width needs (eight of two doubles, four of four), so that the long
// dependency chain of one search (divide, compare, step) overlaps with the others. A lane that
// has finished keeps its values. Every lane performs exactly the operations of the single search
// above, in the same order, so the results are bit-identical; the only liberty taken is halving
// by multiplying with 0.5, which is exact.

// The vector helpers below are internal and always inlined, so the calling convention for
// 32-byte vectors on processors without AVX, which GCC warns about, never comes into play.
#pragma GCC diagnostic ignored "-Wpsabi"

template <int Lanes>
struct VectorOf;
template <>
struct VectorOf<2> {
    using type = double __attribute__((vector_size(16)));
};
template <>
struct VectorOf<4> {
    using type = double __attribute__((vector_size(32)));
};

constexpr int kColumnsPerBlock = 16;
// Columns 1..199 carry a search; padding up to a whole number of blocks gives inert lanes.
constexpr int kFirstSearchedColumn = 1;
constexpr int kBlockCount = (199 + kColumnsPerBlock - 1) / kColumnsPerBlock;

template <int Lanes>
struct Block {
    using Vec = typename VectorOf<Lanes>::type;
    using Mask = decltype(Vec{} > Vec{});
    static constexpr int kVectors = kColumnsPerBlock / Lanes;

    struct Channels {
        Vec r;
        Vec g;
        Vec b;
    };

    [[gnu::always_inline]] static Vec splat(double value)
    {
        Vec v;
        for (int lane = 0; lane < Lanes; ++lane) {
            v[lane] = value;
        }
        return v;
    }

    [[gnu::always_inline]] static Vec load(const double* source)
    {
        Vec v;
        std::memcpy(&v, source, sizeof v);
        return v;
    }

    [[gnu::always_inline]] static void store(double* target, const Vec& v)
    {
        std::memcpy(target, &v, sizeof v);
    }

    [[gnu::always_inline]] static bool anyLane(const Mask& m)
    {
        bool any = false;
        for (int lane = 0; lane < Lanes; ++lane) {
            any = any || m[lane] != 0;
        }
        return any;
    }

    // The bisection shared by both models; `channelsOf(n, C)` gives the linear RGB of vector n.
    template <class ChannelsOf>
    [[gnu::always_inline]] static void search(double startStep, const double* lightness,
                                              double* chromas, ChannelsOf channelsOf)
    {
        const Vec zero = splat(0.0);
        const Vec one = splat(1.0);
        const Vec half = splat(0.5);
        const Vec smallest = splat(kSmallestStep);
        const Vec start = splat(startStep);
        const Vec hundred = splat(100.0);

        Vec C[kVectors];
        Vec step[kVectors];
        Vec factor[kVectors];
        Mask searched[kVectors];
        Mask active[kVectors];
        Mask beyond[kVectors];
        for (int n = 0; n < kVectors; ++n) {
            const Vec L = load(lightness + n * Lanes);
            C[n] = start;
            step[n] = start;
            factor[n] = one;
            searched[n] = (L > zero) & (L < hundred);
            active[n] = searched[n];
            beyond[n] = Mask{};
        }

        bool running = true;
        while (running) {
            Mask anyActive = Mask{};
            for (int n = 0; n < kVectors; ++n) {
                const Channels rgb = channelsOf(n, C[n]);
                const Mask inside = (rgb.r > zero) & (rgb.g > zero) & (rgb.b > zero) &
                                    (rgb.r < one) & (rgb.g < one) & (rgb.b < one);
                const Mask outward = (rgb.r < zero) | (rgb.g < zero) | (rgb.b < zero) |
                                     (rgb.r > one) | (rgb.g > one) | (rgb.b > one);
                const Vec grownStep = step[n] * factor[n];
                const Vec halvedStep = step[n] * half;
                const Vec nextStep = inside ? grownStep : halvedStep;
                const Vec nextC = inside ? C[n] + grownStep : C[n] - halvedStep;
                const Vec nextFactor = inside ? factor[n] : half;
                step[n] = active[n] ? nextStep : step[n];
                C[n] = active[n] ? nextC : C[n];
                factor[n] = active[n] ? nextFactor : factor[n];
                beyond[n] = active[n] ? outward : beyond[n];
                active[n] = active[n] & (step[n] > smallest);
                anyActive |= active[n];
            }
            running = anyLane(anyActive);
        }

        for (int n = 0; n < kVectors; ++n) {
            const Vec result = beyond[n] ? C[n] - step[n] : C[n];
            store(chromas + n * Lanes, searched[n] ? result : zero);
        }
    }

    [[gnu::always_inline]] static void labRow(const ChromaSearchCoefficients& p, double hue,
                                              double* chromas)
    {
        const double cosHue = std::cos(hue);
        const double sinHue = std::sin(hue);
        const Vec cosV = splat(cosHue);
        const Vec sinV = splat(sinHue);
        const Vec p0 = splat(p[0]), p1 = splat(p[1]), p2 = splat(p[2]);
        const Vec p3 = splat(p[3]), p4 = splat(p[4]), p5 = splat(p[5]);
        const Vec p6 = splat(p[6]), p7 = splat(p[7]), p8 = splat(p[8]);
        const Vec threshold = splat(0.00885645);
        const Vec xSlope = splat(29.0 * 8.85645e-6);
        const Vec zSlope = splat(29.0 * 2.21411e-5);
        const Vec xScale = splat(0.002);
        const Vec zScale = splat(0.005);

        for (int block = 0; block < kBlockCount; ++block) {
            alignas(32) double lightness[kColumnsPerBlock];
            alignas(32) double yr[kColumnsPerBlock];
            alignas(32) double fy[kColumnsPerBlock];
            alignas(32) double xLinear[kColumnsPerBlock];
            alignas(32) double zLinear[kColumnsPerBlock];
            alignas(32) double result[kColumnsPerBlock];
            const int firstColumn = kFirstSearchedColumn + block * kColumnsPerBlock;
            for (int lane = 0; lane < kColumnsPerBlock; ++lane) {
                // Lanes past the last column get L = 100, which the search leaves at 0.
                const int column = firstColumn + lane;
                lightness[lane] = column < 200 ? column * 0.5 : 100.0;
                const LabLightnessTerms terms = labLightnessTerms(lightness[lane]);
                yr[lane] = terms.yr;
                fy[lane] = terms.fy;
                xLinear[lane] = terms.xLinear;
                zLinear[lane] = terms.zLinear;
            }
            search(kLabStartStep, lightness, result, [&](int n, const Vec& C) {
                const Vec fyV = load(fy + n * Lanes);
                const Vec yrV = load(yr + n * Lanes);
                const Vec fx = fyV + xScale * C * cosV;
                const Vec fz = fyV - zScale * C * sinV;
                const Vec fx3 = fx * fx * fx;
                const Vec fz3 = fz * fz * fz;
                const Vec xr =
                    fx3 > threshold ? fx3 : load(xLinear + n * Lanes) + xSlope * C * cosV;
                const Vec zr =
                    fz3 > threshold ? fz3 : load(zLinear + n * Lanes) - zSlope * C * sinV;
                return Channels{p0 * xr + p1 * yrV + p2 * zr, p3 * xr + p4 * yrV + p5 * zr,
                                p6 * xr + p7 * yrV + p8 * zr};
            });
            for (int lane = 0; lane < kColumnsPerBlock && firstColumn + lane < 200; ++lane) {
                chromas[firstColumn + lane] = result[lane];
            }
        }
        chromas[0] = 0.0;
        chromas[200] = 0.0;
    }

    [[gnu::always_inline]] static void luvRow(const ChromaSearchCoefficients& e, double hue,
                                              double* chromas)
    {
        const double cosHue = std::cos(hue);
        const double sinHue = std::sin(hue);
        const Vec cosV = splat(cosHue);
        const Vec sinV = splat(sinHue);
        const Vec e1 = splat(e[1]), e2 = splat(e[2]);
        const Vec e4 = splat(e[4]), e5 = splat(e[5]);
        const Vec e7 = splat(e[7]), e8 = splat(e[8]);
        const Vec vScale = splat(0.164248);

        for (int block = 0; block < kBlockCount; ++block) {
            alignas(32) double lightness[kColumnsPerBlock];
            alignas(32) double luminance[kColumnsPerBlock];
            alignas(32) double rL[kColumnsPerBlock];
            alignas(32) double gL[kColumnsPerBlock];
            alignas(32) double bL[kColumnsPerBlock];
            alignas(32) double result[kColumnsPerBlock];
            const int firstColumn = kFirstSearchedColumn + block * kColumnsPerBlock;
            for (int lane = 0; lane < kColumnsPerBlock; ++lane) {
                const int column = firstColumn + lane;
                const double L = column < 200 ? column * 0.5 : 100.0;
                lightness[lane] = L;
                luminance[lane] = luvLuminance(L);
                rL[lane] = e[0] * L;
                gL[lane] = e[3] * L;
                bL[lane] = e[6] * L;
            }
            search(kLuvStartStep, lightness, result, [&](int n, const Vec& C) {
                const Vec u = C * cosV;
                const Vec v = C * sinV;
                const Vec t =
                    load(luminance + n * Lanes) / (vScale * v + load(lightness + n * Lanes));
                return Channels{t * (load(rL + n * Lanes) + e1 * u + e2 * v),
                                t * (load(gL + n * Lanes) + e4 * u + e5 * v),
                                t * (load(bL + n * Lanes) + e7 * u + e8 * v)};
            });
            for (int lane = 0; lane < kColumnsPerBlock && firstColumn + lane < 200; ++lane) {
                chromas[firstColumn + lane] = result[lane];
            }
        }
        chromas[0] = 0.0;
        chromas[200] = 0.0;
    }
};

// Four-wide registers where the processor has them, two-wide (which every x86-64 processor has)
// otherwise. The arithmetic is the same IEEE operations either way (no fused multiply-add is
// enabled), so the choice cannot change a result.
#if defined(__x86_64__)
[[gnu::target("avx2")]] void labRowAvx2(const ChromaSearchCoefficients& p, double hue,
                                        double* chromas)
{
    Block<4>::labRow(p, hue, chromas);
}

[[gnu::target("avx2")]] void luvRowAvx2(const ChromaSearchCoefficients& e, double hue,
                                        double* chromas)
{
    Block<4>::luvRow(e, hue, chromas);
}

bool hasAvx2()
{
    static const bool available = __builtin_cpu_supports("avx2");
    return available;
}
#else
// Other processors always take the two-wide blocks.
void labRowAvx2(const ChromaSearchCoefficients& p, double hue, double* chromas)
{
    Block<2>::labRow(p, hue, chromas);
}

void luvRowAvx2(const ChromaSearchCoefficients& e, double hue, double* chromas)
{
    Block<2>::luvRow(e, hue, chromas);
}

bool hasAvx2()
{
    return false;
}
#endif

} // namespace

ChromaSearchCoefficients labMatrixPrecalc(const Matrix3& MI)
{
    ChromaSearchCoefficients table = MI;
    for (int row = 0; row < 3; ++row) {
        table[3 * row] *= 0.95047;
        table[3 * row + 2] *= 1.08883;
    }
    return table;
}

ChromaSearchCoefficients luvMatrixPrecalc(const Matrix3& MI)
{
    ChromaSearchCoefficients table{};
    for (int row = 0; row < 3; ++row) {
        const double m0 = MI[3 * row];
        const double m1 = MI[3 * row + 1];
        const double m2 = MI[3 * row + 2];
        table[3 * row] = 0.95047 * m0 + m1 + 1.08883 * m2;
        table[3 * row + 1] = 0.369557 * m0 - 0.123186 * m2;
        table[3 * row + 2] = 0.164248 * m1 - 0.821238 * m2;
    }
    return table;
}

double labChromaSearch(const ChromaSearchCoefficients& coefficients, double hue, double lightness)
{
    if (lightness <= 0.0 || lightness >= 100.0) {
        return 0.0;
    }
    const LabLightnessTerms terms = labLightnessTerms(lightness);
    const double cosHue = std::cos(hue);
    const double sinHue = std::sin(hue);
    return searchChroma(kLabStartStep, [&](double C) {
        return labSearchRgb(coefficients, terms, cosHue, sinHue, C);
    });
}

double luvChromaSearch(const ChromaSearchCoefficients& coefficients, double hue, double lightness)
{
    if (lightness <= 0.0 || lightness >= 100.0) {
        return 0.0;
    }
    const double Y = luvLuminance(lightness);
    const double cosHue = std::cos(hue);
    const double sinHue = std::sin(hue);
    return searchChroma(kLuvStartStep, [&](double C) {
        return luvSearchRgb(coefficients, lightness, Y, cosHue, sinHue, C);
    });
}

void labChromaSearchRow(const ChromaSearchCoefficients& coefficients, double hue, double* chromas,
                        ChromaRowKernel kernel)
{
    if (kernel == ChromaRowKernel::best && hasAvx2()) {
        labRowAvx2(coefficients, hue, chromas);
    } else {
        Block<2>::labRow(coefficients, hue, chromas);
    }
}

void luvChromaSearchRow(const ChromaSearchCoefficients& coefficients, double hue, double* chromas,
                        ChromaRowKernel kernel)
{
    if (kernel == ChromaRowKernel::best && hasAvx2()) {
        luvRowAvx2(coefficients, hue, chromas);
    } else {
        Block<2>::luvRow(coefficients, hue, chromas);
    }
}

} // namespace tintorra
