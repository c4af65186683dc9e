// Compiled for AVX2 and FMA without contraction (see src/CMakeLists.txt); called only after the
// processor has been checked.

#include "colour/CieConstants.h"
#include "engine/Avx2Lanes.h"
#include "engine/RowKernel.h"

#include <sleef.h>

namespace tintorra::rowKernel::avx2 {

namespace {

struct Lch {
    Lanes L;
    Lanes C;
    Lanes h;
};

struct Xyz {
    Lanes X;
    Lanes Y;
    Lanes Z;
};

// lchShiftedLightness with its powers, in passes over the run, each with at most one power so
// that the processor overlaps the powers of consecutive groups: the doubled brightness change,
// or the curve scaled by saturation, weight and gain; clamped to 0..100. The new lightness goes
// to newLs; `scratch` and `applied` hold the curve's output and where it applies between passes.
void shiftLightness(const PaintConstants& k, const SelectedColors& s, std::size_t count,
                    double* newLs, double* scratch, double* applied)
{
    const Lanes zero = _mm256_setzero_pd();
    const Lanes hundred = splat(100.0);
    if (k.keepsLightness) {
        for (std::size_t i = 0; i < count; i += kLanes) {
            _mm256_storeu_pd(newLs + i, clampTo(_mm256_loadu_pd(s.L + i), zero, hundred));
        }
        return;
    }
    for (std::size_t i = 0; i < count; i += kLanes) {
        const Lanes level = div(_mm256_loadu_pd(s.L + i), hundred);
        const Lanes base = k.targetBri > 0.0 ? fmaxOf(sub(splat(1.0), level), zero) : level;
        _mm256_storeu_pd(newLs + i, Sleef_powd4_u10avx2(base, splat(k.imageGamma)));
    }
    if (k.targetBri != 0.0) {
        for (std::size_t i = 0; i < count; i += kLanes) {
            const Lanes L = _mm256_loadu_pd(s.L + i);
            const Lanes t = mul(mul(splat(k.targetBri), _mm256_loadu_pd(s.saturation + i)),
                                _mm256_loadu_pd(s.weight + i));
            const Lanes first = _mm256_loadu_pd(newLs + i);
            _mm256_storeu_pd(
                newLs + i, clampTo(add(L, mul(mul(splat(2.0 * 100.0), first), t)), zero, hundred));
        }
        return;
    }
    // curveAt at x = first power x 10, where it lies inside (-1, 11).
    bool anyCurve = false;
    for (std::size_t i = 0; i < count; i += kLanes) {
        const Lanes x = mul(_mm256_loadu_pd(newLs + i), splat(10.0));
        const LaneMask applies = both(gt(x, splat(-1.0)), lt(x, splat(11.0)));
        const Lanes truncated = _mm256_round_pd(x, _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC);
        Lanes segment = choose(applies, truncated, zero);
        segment = choose(eq(segment, splat(10.0)), splat(9.0), segment);
        const __m128i index = toInt32(segment);
        const Lanes at = gather(k.curve, index);
        const Lanes next = gather(k.curve, _mm_add_epi32(index, _mm_set1_epi32(1)));
        _mm256_storeu_pd(scratch + i, add(at, mul(sub(next, at), sub(x, segment))));
        _mm256_storeu_pd(applied + i, applies);
        anyCurve = anyCurve || bits(applies) != 0;
    }
    if (anyCurve) {
        for (std::size_t i = 0; i < count; i += kLanes) {
            _mm256_storeu_pd(scratch + i, Sleef_powd4_u10avx2(_mm256_loadu_pd(scratch + i),
                                                              splat(1.0 / k.imageGamma)));
        }
    }
    for (std::size_t i = 0; i < count; i += kLanes) {
        const Lanes L = _mm256_loadu_pd(s.L + i);
        const Lanes change = mul(mul(mul(sub(mul(hundred, _mm256_loadu_pd(scratch + i)), L),
                                         _mm256_loadu_pd(s.saturation + i)),
                                     _mm256_loadu_pd(s.weight + i)),
                                 splat(k.curveGain));
        const Lanes changed = choose(isNan(change), L, add(L, change));
        const Lanes newL = choose(_mm256_loadu_pd(applied + i), changed, L);
        _mm256_storeu_pd(newLs + i, clampTo(newL, zero, hundred));
    }
}

// finishLchShift up to the blend: the chroma kept at its place between grey and the gamut
// boundary, then the saturation change.
Lch shiftedChromaAndHue(const PaintConstants& k, Lanes newLimit, Lanes oldLimit, Lanes C,
                        Lanes newL, Lanes saturation, Lanes weight)
{
    const Lanes zero = _mm256_setzero_pd();
    Lanes newHue = splat(k.targetHue);
    // The division only where some lane's limit shrinks.
    const LaneMask shrinks = gt(oldLimit, newLimit);
    Lanes newC = bits(shrinks) != 0 ? choose(shrinks, div(mul(C, newLimit), oldLimit), C) : C;
    if (k.targetSat > 0.0) {
        const Lanes room = choose(gt(newLimit, newC), sub(newLimit, newC), zero);
        const Lanes change = mul(mul(mul(mul(room, splat(k.targetSat)), weight), saturation),
                                 splat(k.saturationGain));
        newC = choose(isNan(change), newC, add(newC, change));
        newC = clampTo(newC, zero, newLimit);
    } else if (k.targetSat == -1.0) {
        newC = zero;
        newHue = zero;
    } else if (k.targetSat < 0.0) {
        newC = clampTo(add(newC, mul(mul(splat(k.targetSat), weight), newC)), zero, newLimit);
    }
    return {newL, newC, newHue};
}

// luminanceFromLightness.
Lanes luminanceOf(Lanes L)
{
    // Each side's division only where some lane takes it.
    const LaneMask light = gt(L, splat(8.0));
    const int lightLanes = bits(light);
    const Lanes f = lightLanes != 0 ? div(add(L, splat(16.0)), splat(116.0)) : L;
    const Lanes dark = lightLanes != 0xF ? div(L, splat(kCieKappa)) : L;
    return choose(light, mul(mul(f, f), f), dark);
}

// luvToXyz.
Xyz luvXyz(Lanes L, Lanes u, Lanes v)
{
    const Lanes zero = _mm256_setzero_pd();
    const LaneMask dark = le(L, zero);
    const Lanes uPrime = add(div(u, mul(splat(13.0), L)), splat(kLuvWhiteU));
    const Lanes vPrime = add(div(v, mul(splat(13.0), L)), splat(kLuvWhiteV));
    const Lanes Y = luminanceOf(L);
    const Lanes fourV = mul(splat(4.0), vPrime);
    const Lanes X = mul(div(mul(splat(9.0), uPrime), fourV), Y);
    const Lanes Z = mul(
        div(sub(sub(splat(12.0), mul(splat(3.0), uPrime)), mul(splat(20.0), vPrime)), fourV), Y);
    return {choose(either(dark, lt(X, zero)), zero, X), choose(dark, zero, Y),
            choose(either(dark, lt(Z, zero)), zero, Z)};
}

// labFInverse.
Lanes labFInverse(Lanes f)
{
    const Lanes cube = mul(mul(f, f), f);
    return choose(gt(cube, splat(kCieEpsilon)), cube,
                  div(sub(mul(splat(116.0), f), splat(16.0)), splat(kCieKappa)));
}

// labToXyz.
Xyz labXyz(Lanes L, Lanes a, Lanes b)
{
    const Lanes fy = div(add(L, splat(16.0)), splat(116.0));
    const Lanes fx = add(div(a, splat(500.0)), fy);
    const Lanes fz = sub(fy, div(b, splat(200.0)));
    return {mul(splat(kLabWhiteX), labFInverse(fx)), luminanceOf(L),
            mul(splat(kLabWhiteZ), labFInverse(fz))};
}

// xyzToRgb's clamp followed by unitSample: 0..1, NaN and both zeros to +0. maxpd hands back
// its second operand when either is NaN or both are equal.
Lanes unitOf(Lanes v)
{
    return _mm256_min_pd(_mm256_max_pd(v, _mm256_setzero_pd()), splat(1.0));
}

// Partially selected lanes blended from the unshifted colour by the scalar code.
void blendLanes(const PaintConstants& k, int lanes, const SelectedColors& s, std::size_t i,
                Lch& shifted, Lanes alpha)
{
    double L[kLanes];
    double C[kLanes];
    double h[kLanes];
    double a[kLanes];
    _mm256_storeu_pd(L, shifted.L);
    _mm256_storeu_pd(C, shifted.C);
    _mm256_storeu_pd(h, shifted.h);
    _mm256_storeu_pd(a, alpha);
    for (std::size_t lane = 0; lane < kLanes; ++lane) {
        if (((lanes >> lane) & 1) == 0) {
            continue;
        }
        const std::size_t at = i + lane;
        const double from[4] = {s.L[at], s.C[at], s.h[at], s.alpha[at]};
        double result[4] = {L[lane], C[lane], h[lane], a[lane]};
        k.blend(k.context, from, static_cast<int>(s.zone[at]), s.weight[at], result);
        L[lane] = result[0];
        C[lane] = result[1];
        h[lane] = result[2];
        a[lane] = result[3];
    }
    shifted = {_mm256_loadu_pd(L), _mm256_loadu_pd(C), _mm256_loadu_pd(h)};
    s.paintedAlpha[i] = a[0];
    s.paintedAlpha[i + 1] = a[1];
    s.paintedAlpha[i + 2] = a[2];
    s.paintedAlpha[i + 3] = a[3];
}

} // namespace

void paintShifted(const PaintConstants& constants, const SelectedColors& selected,
                  std::size_t count)
{
    // Local copies: a store through one of the arrays' pointers could otherwise change these
    // members as far as the compiler knows, and it would read them again for every group.
    const PaintConstants k = constants;
    const SelectedColors s = selected;
    // In passes over the whole run, each short enough that the processor overlaps the table
    // reads, divisions and powers of consecutive groups. The painted arrays hold the new L, C
    // and h until the last two passes turn them into XYZ and then RGB.
    double* const newLs = s.paintedR;
    double* const newCs = s.paintedG;
    double* const newHues = s.paintedB;
    shiftLightness(k, s, count, newLs, newCs, newHues);

    const Lanes one = splat(1.0);
    const bool gamut = k.chromas.pairs != nullptr;
    const FixedHue target = fixedHue(k.targetHue);
    // The old colours' limits first, a pass of table reads on their own.
    double* const oldLimits = s.paintedAlpha;
    for (std::size_t i = 0; i < count; i += kLanes) {
        const Lanes C = _mm256_loadu_pd(s.C + i);
        // The selection left 2 x wrappedDegrees(h) in halfDegrees: chromaForHue without its
        // divisions.
        const Lanes limit = gamut
                                ? chromaAtHalfDegrees(k.chromas, _mm256_loadu_pd(s.halfDegrees + i),
                                                      _mm256_loadu_pd(s.L + i))
                                : _mm256_setzero_pd();
        _mm256_storeu_pd(oldLimits + i, fmaxOf(C, limit));
    }
    // The new lightnesses' limits at the target hue, another pass of table reads.
    double* const newLimits = s.halfDegrees;
    for (std::size_t i = 0; i < count; i += kLanes) {
        _mm256_storeu_pd(newLimits + i,
                         gamut ? chromaForFixedHue(k.chromas, target, _mm256_loadu_pd(newLs + i))
                               : _mm256_setzero_pd());
    }
    for (std::size_t i = 0; i < count; i += kLanes) {
        const Lanes weight = _mm256_loadu_pd(s.weight + i);
        const Lanes alpha = _mm256_loadu_pd(s.alpha + i);
        Lch shifted =
            shiftedChromaAndHue(k, _mm256_loadu_pd(newLimits + i), _mm256_loadu_pd(oldLimits + i),
                                _mm256_loadu_pd(s.C + i), _mm256_loadu_pd(newLs + i),
                                _mm256_loadu_pd(s.saturation + i), weight);
        _mm256_storeu_pd(s.paintedAlpha + i, alpha);
        const int partial = bits(both(ne(weight, one), lanesBelow(count - i)));
        if (partial != 0) {
            blendLanes(k, partial, s, i, shifted, alpha);
        }
        _mm256_storeu_pd(newLs + i, shifted.L);
        _mm256_storeu_pd(newCs + i, shifted.C);
        _mm256_storeu_pd(newHues + i, shifted.h);
    }

    // Back to linear RGB as lchuvToRgb and lchabToRgb do. Fully selected colours all take the
    // target hue, whose sine and cosine are therefore taken once.
    const Lanes targetHue = splat(k.targetSat == -1.0 ? 0.0 : k.targetHue);
    const Sleef___m256d_2 targetSinCos = Sleef_sincosd4_u35avx2(targetHue);
    for (std::size_t i = 0; i < count; i += kLanes) {
        const Lanes L = _mm256_loadu_pd(newLs + i);
        const Lanes C = _mm256_loadu_pd(newCs + i);
        const Lanes hue = _mm256_loadu_pd(newHues + i);
        const Sleef___m256d_2 sc =
            bits(eq(hue, targetHue)) == 0xF ? targetSinCos : Sleef_sincosd4_u35avx2(hue);
        const Lanes a = mul(C, sc.y);
        const Lanes b = mul(C, sc.x);
        const Xyz xyz = k.lab ? labXyz(L, a, b) : luvXyz(L, a, b);
        _mm256_storeu_pd(s.paintedR + i, xyz.X);
        _mm256_storeu_pd(s.paintedG + i, xyz.Y);
        _mm256_storeu_pd(s.paintedB + i, xyz.Z);
    }
    for (std::size_t i = 0; i < count; i += kLanes) {
        const Xyz xyz{_mm256_loadu_pd(s.paintedR + i), _mm256_loadu_pd(s.paintedG + i),
                      _mm256_loadu_pd(s.paintedB + i)};
        const auto row = [&](int r) {
            return unitOf(
                add(add(mul(splat(k.MI[3 * r]), xyz.X), mul(splat(k.MI[3 * r + 1]), xyz.Y)),
                    mul(splat(k.MI[3 * r + 2]), xyz.Z)));
        };
        _mm256_storeu_pd(s.paintedR + i, row(0));
        _mm256_storeu_pd(s.paintedG + i, row(1));
        _mm256_storeu_pd(s.paintedB + i, row(2));
        _mm256_storeu_pd(s.paintedAlpha + i, unitOf(_mm256_loadu_pd(s.paintedAlpha + i)));
    }
}

} // namespace tintorra::rowKernel::avx2
