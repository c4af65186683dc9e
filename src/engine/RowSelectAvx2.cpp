// Compiled for AVX2 and FMA without contraction (see src/CMakeLists.txt); called only after the
// processor has been checked.

#include "colour/CieConstants.h"
#include "engine/Avx2Lanes.h"
#include "engine/RowKernel.h"

#include <sleef.h>

namespace tintorra::rowKernel::avx2 {

namespace {

constexpr double kTwoPi = 2.0 * kPi;
// SelectionZone's values.
constexpr double kOutside = 0.0;
constexpr double kInside = 1.0;
constexpr double kLowerFalloff = 2.0;
constexpr double kUpperFalloff = 3.0;

struct Lch {
    Lanes L;
    Lanes C;
    Lanes h;
};

struct Factor {
    Lanes factor;
    Lanes zone;
};

// The X, Y, Z rows of M applied to linear RGB, as rgbToXyz.
struct Xyz {
    Lanes X;
    Lanes Y;
    Lanes Z;
};

// Row i of M applied to linear RGB.
Lanes matrixRow(const double* M, int i, Lanes r, Lanes g, Lanes b)
{
    return add(add(mul(splat(M[3 * i]), r), mul(splat(M[3 * i + 1]), g)),
               mul(splat(M[3 * i + 2]), b));
}

Xyz xyzOf(const double* M, Lanes r, Lanes g, Lanes b)
{
    return {matrixRow(M, 0, r, g, b), matrixRow(M, 1, r, g, b), matrixRow(M, 2, r, g, b)};
}

LaneMask blackOf(const Xyz& v)
{
    const Lanes zero = _mm256_setzero_pd();
    return both(both(eq(v.X, zero), eq(v.Y, zero)), eq(v.Z, zero));
}

// xyzToLuv, black to (0, 0, 0); luvToLch's chroma and hue are taken in a pass of their own, from
// u and v.
struct Luv {
    Lanes L;
    Lanes u;
    Lanes v;
};

Luv luvOf(const Xyz& v, Lanes root)
{
    const Lanes zero = _mm256_setzero_pd();
    const LaneMask black = blackOf(v);
    const Lanes d = add(add(v.X, mul(splat(15.0), v.Y)), mul(splat(3.0), v.Z));
    const Lanes uPrime = div(mul(splat(4.0), v.X), d);
    const Lanes vPrime = div(mul(splat(9.0), v.Y), d);
    Lanes L = choose(gt(v.Y, splat(kCieEpsilon)), sub(mul(splat(116.0), root), splat(16.0)),
                     mul(splat(kCieKappa), v.Y));
    const Lanes scale = mul(splat(13.0), L);
    const Lanes u = choose(black, zero, mul(scale, sub(uPrime, splat(kLuvWhiteU))));
    const Lanes w = choose(black, zero, mul(scale, sub(vPrime, splat(kLuvWhiteV))));
    L = choose(black, zero, L);
    return {L, u, w};
}

// The Lab f of t given its cube root.
Lanes labF(Lanes t, Lanes root)
{
    return choose(gt(t, splat(kCieEpsilon)), root,
                  div(add(mul(splat(kCieKappa), t), splat(16.0)), splat(116.0)));
}

// The values whose cube roots xyzToLab takes.
struct LabRatios {
    Lanes x;
    Lanes y;
    Lanes z;
};

LabRatios labRatios(const Xyz& v)
{
    return {div(v.X, splat(kLabWhiteX)), v.Y, div(v.Z, splat(kLabWhiteZ))};
}

// xyzToLab and labToLchFast, black to (0, 0, 0) before the polar form, given the cube roots of
// the ratios.
Lch labLch(const Xyz& v, const LabRatios& roots)
{
    const Lanes zero = _mm256_setzero_pd();
    const LaneMask black = blackOf(v);
    const LabRatios t = labRatios(v);
    const Lanes fx = labF(t.x, roots.x);
    const Lanes fy = labF(t.y, roots.y);
    const Lanes fz = labF(t.z, roots.z);
    const Lanes L = choose(black, zero, sub(mul(splat(116.0), fy), splat(16.0)));
    const Lanes a = choose(black, zero, mul(splat(500.0), sub(fx, fy)));
    const Lanes b = choose(black, zero, mul(splat(200.0), sub(fy, fz)));
    return {L, _mm256_sqrt_pd(add(mul(a, a), mul(b, b))), fastAtan2(b, a)};
}

// selectionDetail::rangeFactor.
Factor rangeFactor(Lanes x, double lowerFalloff, double lower, double upper, double upperFalloff)
{
    const Lanes lf = splat(lowerFalloff);
    const Lanes l = splat(lower);
    const Lanes u = splat(upper);
    const Lanes uf = splat(upperFalloff);
    const LaneMask inside = both(le(l, x), le(x, u));
    // Often every lane lies inside: lightness and saturation ranges are mostly wide.
    if (bits(inside) == 0xF) {
        return {splat(1.0), splat(kInside)};
    }
    const LaneMask lowerZone = both(lt(lf, x), lt(x, l));
    const LaneMask upperZone = both(lt(u, x), lt(x, uf));
    const Lanes zero = _mm256_setzero_pd();
    // The divisions only where a lane lies in a fall-off.
    const Lanes lowerValue = bits(lowerZone) != 0 ? div(sub(x, lf), sub(l, lf)) : zero;
    const Lanes upperValue = bits(upperZone) != 0 ? div(sub(uf, x), sub(uf, u)) : zero;
    return {choose(inside, splat(1.0),
                   choose(lowerZone, lowerValue, choose(upperZone, upperValue, zero))),
            choose(inside, splat(kInside),
                   choose(lowerZone, splat(kLowerFalloff),
                          choose(upperZone, splat(kUpperFalloff), splat(kOutside))))};
}

// selectionDetail::bringHueIntoChain: up to four periods here, further ones by the scalar code.
Lanes bringIntoChain(const SelectConstants& k, Lanes hue, LaneMask active)
{
    const Lanes lowerFalloff = splat(k.hueLowerFalloff);
    const Lanes lower = splat(k.hueLower);
    const Lanes upper = splat(k.hueUpper);
    const Lanes upperFalloff = splat(k.hueUpperFalloff);
    const Lanes period = splat(kTwoPi);
    const auto below = [&](Lanes h) { return both(le(h, lowerFalloff), lt(h, lower)); };
    const auto above = [&](Lanes h) { return both(ge(h, upperFalloff), gt(h, upper)); };
    LaneMask raise = both(below(hue), active);
    LaneMask drop = butNot(both(above(hue), active), raise);
    constexpr int kInlineSteps = 4;
    for (int step = 0; step < kInlineSteps && bits(either(raise, drop)) != 0; ++step) {
        hue = choose(raise, add(hue, period), hue);
        raise = both(raise, below(hue));
        hue = choose(drop, sub(hue, period), hue);
        drop = both(drop, above(hue));
    }
    const int raising = bits(raise);
    const int dropping = bits(drop);
    if ((raising | dropping) == 0) {
        return hue;
    }
    double lanes[kLanes];
    _mm256_storeu_pd(lanes, hue);
    for (std::size_t lane = 0; lane < kLanes; ++lane) {
        if (((raising | dropping) >> lane) & 1) {
            lanes[lane] = k.bringHueIntoChain(k.context, lanes[lane], (raising >> lane) & 1);
        }
    }
    return _mm256_loadu_pd(lanes);
}

// Asks for the cache lines of the gamut entries around each lane's hue and lightness (where
// chromaForHue will read, give or take a line: a fetch only).
void prefetchChromas(const double* pairs, Lanes halfDegrees, Lanes L)
{
    const Lanes zero = _mm256_setzero_pd();
    // Clamped into the table, NaN to 0: maxpd hands back its second operand where either is NaN.
    const auto clamped = [&](Lanes v, double high) {
        return _mm256_min_pd(_mm256_max_pd(v, zero), splat(high));
    };
    const Lanes row = clamped(floorOf(halfDegrees), 719.0);
    const Lanes column = clamped(floorOf(mul(splat(2.0), L)), 199.0);
    const Lanes index = add(mul(row, splat(kChromaColumns)), column);
    alignas(16) std::int32_t at[kLanes];
    _mm_store_si128(reinterpret_cast<__m128i*>(at), toInt32(index));
    for (const std::int32_t i : at) {
        _mm_prefetch(reinterpret_cast<const char*>(pairs + 2 * static_cast<std::ptrdiff_t>(i)),
                     _MM_HINT_T0);
    }
}

} // namespace

std::size_t selectCandidates(const SelectConstants& constants, const Candidates& candidates,
                             std::size_t count, double* weights, const SelectedColors& colors)
{
    // Local copies: a store through one of the arrays' pointers could otherwise change these
    // members as far as the compiler knows, and it would read them again for every group.
    const SelectConstants k = constants;
    const Candidates in = candidates;
    const SelectedColors out = colors;
    // In passes over the run, each short enough for the processor to overlap consecutive
    // groups. LCh goes to out.L, out.C and out.h at the candidates' own places (cube roots, and
    // u and v for the arctangent pass, in out.h, out.saturation and out.zone), and the last pass
    // packs the selected ones towards the front, never past the group it reads.
    // The cube roots in passes of their own (into out.h, out.saturation and out.zone); the
    // next pass works out XYZ again, the same way.
    const auto xyzAt = [&](std::size_t j) {
        return xyzOf(k.M, _mm256_loadu_pd(in.r + j), _mm256_loadu_pd(in.g + j),
                     _mm256_loadu_pd(in.b + j));
    };
    if (k.lab) {
        for (std::size_t j = 0; j < count; j += kLanes) {
            const LabRatios t = labRatios(xyzAt(j));
            _mm256_storeu_pd(out.h + j, cubeRoot(t.x));
            _mm256_storeu_pd(out.saturation + j, cubeRoot(t.y));
            _mm256_storeu_pd(out.zone + j, cubeRoot(t.z));
        }
        for (std::size_t j = 0; j < count; j += kLanes) {
            const Lch lch =
                labLch(xyzAt(j), {_mm256_loadu_pd(out.h + j), _mm256_loadu_pd(out.saturation + j),
                                  _mm256_loadu_pd(out.zone + j)});
            _mm256_storeu_pd(out.L + j, lch.L);
            _mm256_storeu_pd(out.C + j, lch.C);
            _mm256_storeu_pd(out.h + j, lch.h);
        }
    } else {
        // The root only where some lane is above the dark linear segment that ignores it. Y waits
        // in out.C for the next pass.
        for (std::size_t j = 0; j < count; j += kLanes) {
            const Lanes Y = xyzAt(j).Y;
            _mm256_storeu_pd(out.C + j, Y);
            _mm256_storeu_pd(out.h + j, bits(gt(Y, splat(kCieEpsilon))) != 0 ? cubeRoot(Y) : Y);
        }
        for (std::size_t j = 0; j < count; j += kLanes) {
            const Lanes r = _mm256_loadu_pd(in.r + j);
            const Lanes g = _mm256_loadu_pd(in.g + j);
            const Lanes b = _mm256_loadu_pd(in.b + j);
            const Xyz xyz{matrixRow(k.M, 0, r, g, b), _mm256_loadu_pd(out.C + j),
                          matrixRow(k.M, 2, r, g, b)};
            const Luv luv = luvOf(xyz, _mm256_loadu_pd(out.h + j));
            _mm256_storeu_pd(out.L + j, luv.L);
            _mm256_storeu_pd(out.saturation + j, luv.u);
            _mm256_storeu_pd(out.zone + j, luv.v);
        }
        // The square root here, where it overlaps the arctangent, rather than at the end of the
        // divisions' chain above.
        for (std::size_t j = 0; j < count; j += kLanes) {
            const Lanes u = _mm256_loadu_pd(out.saturation + j);
            const Lanes v = _mm256_loadu_pd(out.zone + j);
            _mm256_storeu_pd(out.C + j, _mm256_sqrt_pd(add(mul(u, u), mul(v, v))));
            _mm256_storeu_pd(out.h + j, Sleef_atan2d4_u35avx2(v, u));
        }
    }

    return selectLchCandidates(k, in, count, weights, out);
}

std::size_t selectLchCandidates(const SelectConstants& constants, const Candidates& candidates,
                                std::size_t count, double* weights, const SelectedColors& colors)
{
    // Local copies: a store through one of the arrays' pointers could otherwise change these
    // members as far as the compiler knows, and it would read them again for every group.
    const SelectConstants k = constants;
    const Candidates in = candidates;
    const SelectedColors out = colors;
    const Lanes zero = _mm256_setzero_pd();
    // The hue in half degrees (which the shift's gamut lookup needs again) and the relative
    // saturation, a pass of table reads, into out.halfDegrees and out.saturation.
    for (std::size_t j = 0; j < count; j += kLanes) {
        const Lanes C = _mm256_loadu_pd(out.C + j);
        const Lanes halfDegrees = mul(splat(2.0), wrappedDegrees(_mm256_loadu_pd(out.h + j)));
        const Lanes maxChroma =
            k.maxChromas != nullptr ? maxChromaAtHalfDegrees(k.maxChromas, halfDegrees) : zero;
        _mm256_storeu_pd(out.halfDegrees + j, halfDegrees);
        _mm256_storeu_pd(out.saturation + j, div(C, choose(gt(C, maxChroma), C, maxChroma)));
    }

    std::size_t selected = 0;
    for (std::size_t j = 0; j < count; j += kLanes) {
        const Lch lch{_mm256_loadu_pd(out.L + j), _mm256_loadu_pd(out.C + j),
                      _mm256_loadu_pd(out.h + j)};
        const Lanes alpha = _mm256_loadu_pd(in.alpha + j);

        // lchSelection, every test of every lane; the first failing one decides as the scalar
        // early returns do.
        LaneMask ok = both(ne(alpha, zero), lanesBelow(count - j));
        const Lanes hue = bringIntoChain(k, lch.h, ok);
        const Factor hueFactor =
            rangeFactor(hue, k.hueLowerFalloff, k.hueLower, k.hueUpper, k.hueUpperFalloff);
        ok = butNot(ok, eq(hueFactor.zone, zero));
        const Factor lightFactor = rangeFactor(lch.L, k.lightLowerFalloff, k.lightLower,
                                               k.lightUpper, k.lightUpperFalloff);
        ok = butNot(ok, eq(lightFactor.zone, zero));
        ok = butNot(ok, lt(lch.C, splat(0.01)));
        const Lanes halfDegrees = _mm256_loadu_pd(out.halfDegrees + j);
        const Lanes s = _mm256_loadu_pd(out.saturation + j);
        const Factor satFactor =
            rangeFactor(s, k.satLowerFalloff, k.satLower, k.satUpper, k.satUpperFalloff);
        ok = butNot(ok, eq(satFactor.zone, zero));
        const Lanes weight =
            choose(ok, mul(mul(hueFactor.factor, satFactor.factor), lightFactor.factor), zero);
        _mm256_storeu_pd(weights + j, weight);

        const int lanes = bits(gt(weight, zero));
        if (lanes == 0) {
            continue;
        }
        if (k.chromaPairs != nullptr) {
            prefetchChromas(k.chromaPairs, halfDegrees, lch.L);
        }
        const __m128i candidates =
            _mm_add_epi32(_mm_set1_epi32(static_cast<int>(j)), _mm_set_epi32(3, 2, 1, 0));
        packStore(out.candidate + selected, candidates, lanes);
        packStore(out.x + selected, _mm_loadu_si128(reinterpret_cast<const __m128i*>(in.x + j)),
                  lanes);
        packStore(out.weight + selected, weight, lanes);
        packStore(out.zone + selected, hueFactor.zone, lanes);
        // While every candidate so far is selected, these are already in their places.
        if (selected != j || lanes != 0xF) {
            packStore(out.saturation + selected, s, lanes);
            packStore(out.L + selected, lch.L, lanes);
            packStore(out.C + selected, lch.C, lanes);
            packStore(out.h + selected, lch.h, lanes);
            packStore(out.halfDegrees + selected, halfDegrees, lanes);
        }
        packStore(out.alpha + selected, alpha, lanes);
        if (k.keepUnshifted) {
            packStore(out.r + selected, _mm256_loadu_pd(in.r + j), lanes);
            packStore(out.g + selected, _mm256_loadu_pd(in.g + j), lanes);
            packStore(out.b + selected, _mm256_loadu_pd(in.b + j), lanes);
        }
        selected += static_cast<std::size_t>(__builtin_popcount(lanes));
    }
    // Harmless, fully selected colours behind the last one for the stages that take four at a
    // time.
    for (std::size_t i = selected; i < selected + kLanes; ++i) {
        out.candidate[i] = 0;
        out.x[i] = 0;
        out.weight[i] = 1.0;
        out.zone[i] = kInside;
        out.saturation[i] = 0.5;
        out.L[i] = 50.0;
        out.C[i] = 0.0;
        out.h[i] = 0.0;
        out.halfDegrees[i] = 0.0;
        out.alpha[i] = 1.0;
        out.r[i] = 0.5;
        out.g[i] = 0.5;
        out.b[i] = 0.5;
    }
    return selected;
}

} // namespace tintorra::rowKernel::avx2
