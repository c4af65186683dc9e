#pragma once

// Four-lane helpers for the files compiled for AVX2 (and only for them). Everything here has
// internal linkage, so that no copy compiled with AVX2 instructions can be merged with code of
// ordinary files. Each helper computes, lane by lane, exactly what the scalar function it is
// named after computes: the same operations in the same order, without fused multiply-adds.

#include "engine/RowKernel.h"

#include <cstdint>
#include <immintrin.h>

namespace tintorra::rowKernel::avx2 {
namespace {

using Lanes = __m256d;
// All bits set in a lane where a comparison holds.
using LaneMask = __m256d;

constexpr std::size_t kLanes = 4;
constexpr double kPi = 3.141592653589793;

inline Lanes splat(double v)
{
    return _mm256_set1_pd(v);
}

inline Lanes add(Lanes a, Lanes b)
{
    return _mm256_add_pd(a, b);
}

inline Lanes sub(Lanes a, Lanes b)
{
    return _mm256_sub_pd(a, b);
}

inline Lanes mul(Lanes a, Lanes b)
{
    return _mm256_mul_pd(a, b);
}

inline Lanes div(Lanes a, Lanes b)
{
    return _mm256_div_pd(a, b);
}

inline LaneMask lt(Lanes a, Lanes b)
{
    return _mm256_cmp_pd(a, b, _CMP_LT_OQ);
}

inline LaneMask le(Lanes a, Lanes b)
{
    return _mm256_cmp_pd(a, b, _CMP_LE_OQ);
}

inline LaneMask gt(Lanes a, Lanes b)
{
    return _mm256_cmp_pd(a, b, _CMP_GT_OQ);
}

inline LaneMask ge(Lanes a, Lanes b)
{
    return _mm256_cmp_pd(a, b, _CMP_GE_OQ);
}

inline LaneMask eq(Lanes a, Lanes b)
{
    return _mm256_cmp_pd(a, b, _CMP_EQ_OQ);
}

// True where a != b, NaN included, as the scalar operator says.
inline LaneMask ne(Lanes a, Lanes b)
{
    return _mm256_cmp_pd(a, b, _CMP_NEQ_UQ);
}

inline LaneMask isNan(Lanes a)
{
    return _mm256_cmp_pd(a, a, _CMP_UNORD_Q);
}

inline LaneMask isFinite(Lanes a)
{
    const Lanes magnitude = _mm256_andnot_pd(splat(-0.0), a);
    return _mm256_cmp_pd(magnitude, splat(__builtin_inf()), _CMP_LT_OQ);
}

inline LaneMask both(LaneMask a, LaneMask b)
{
    return _mm256_and_pd(a, b);
}

inline LaneMask either(LaneMask a, LaneMask b)
{
    return _mm256_or_pd(a, b);
}

// a and not b.
inline LaneMask butNot(LaneMask a, LaneMask b)
{
    return _mm256_andnot_pd(b, a);
}

inline LaneMask noLanes()
{
    return _mm256_setzero_pd();
}

inline LaneMask allLanes()
{
    return _mm256_castsi256_pd(_mm256_set1_epi64x(-1));
}

inline LaneMask complement(LaneMask m)
{
    return _mm256_xor_pd(m, allLanes());
}

// -a: the sign flipped, as the scalar unary minus does (0 - a would differ for zeros).
inline Lanes negate(Lanes a)
{
    return _mm256_xor_pd(a, _mm256_set1_pd(-0.0));
}

inline int bits(LaneMask m)
{
    return _mm256_movemask_pd(m);
}

// condition ? ifTrue : ifFalse, lane by lane. Written as the instruction itself: the compiler
// reads the intrinsic as a test of each lane's sign, and where a mask combines comparisons it
// adds a comparison to make that sign, though every mask here is all ones or all zeros.
inline Lanes choose(LaneMask condition, Lanes ifTrue, Lanes ifFalse)
{
    Lanes result;
    asm("vblendvpd %3, %2, %1, %0" : "=x"(result) : "x"(ifFalse), "x"(ifTrue), "x"(condition));
    return result;
}

inline Lanes floorOf(Lanes a)
{
    return _mm256_round_pd(a, _MM_FROUND_TO_NEG_INF | _MM_FROUND_NO_EXC);
}

inline Lanes ceilOf(Lanes a)
{
    return _mm256_round_pd(a, _MM_FROUND_TO_POS_INF | _MM_FROUND_NO_EXC);
}

// value < low ? low : (value > high ? high : value) for low <= high: NaN stays NaN, as does the
// sign of a zero between zeros. maxpd and minpd hand back their second operand when either is
// NaN or both are equal.
inline Lanes clampTo(Lanes value, Lanes low, Lanes high)
{
    return _mm256_min_pd(high, _mm256_max_pd(low, value));
}

// std::fmax: the other operand where one is NaN.
inline Lanes fmaxOf(Lanes a, Lanes b)
{
    // maxpd hands back its second operand when either is NaN.
    return choose(isNan(b), a, _mm256_max_pd(a, b));
}

// Whole-number lanes (exact, within int32) as 32-bit integers.
inline __m128i toInt32(Lanes wholeNumbers)
{
    return _mm256_cvttpd_epi32(wholeNumbers);
}

// A gather. The masked form, with every lane enabled, starts from zeros rather than from an
// undefined register, which the compiler cannot see through.
inline Lanes gather(const double* base, __m128i index)
{
    return _mm256_mask_i32gather_pd(_mm256_setzero_pd(), base, index, allLanes(), 8);
}

// table[at[0]], .. table[at[3]]: loads of their own, which processors issue faster than a
// gather.
template <typename Index>
inline Lanes valuesAt(const double* table, const Index* at)
{
    const __m128d low = _mm_loadh_pd(_mm_load_sd(table + at[0]), table + at[1]);
    const __m128d high = _mm_loadh_pd(_mm_load_sd(table + at[2]), table + at[3]);
    return _mm256_set_m128d(high, low);
}

// Lane masks as numbers 0..15 (bit i for lane i), and where each lane of a pack comes from.
struct PackTables {
    // For doubles seen as pairs of 32-bit words.
    int doubleWords[16][8];
    // For 32-bit lanes.
    int words[16][8];
};

constexpr PackTables makePackTables()
{
    PackTables t{};
    for (int mask = 0; mask < 16; ++mask) {
        int k = 0;
        for (int lane = 0; lane < 4; ++lane) {
            if ((mask >> lane) & 1) {
                t.doubleWords[mask][2 * k] = 2 * lane;
                t.doubleWords[mask][2 * k + 1] = 2 * lane + 1;
                t.words[mask][k] = lane;
                ++k;
            }
        }
    }
    return t;
}

constexpr PackTables kPackTables = makePackTables();

// Stores the lanes of `mask`, in order, at `out`; writes four lanes, so `out` needs room for
// them.
inline void packStore(double* out, Lanes v, int mask)
{
    if (mask == 0xF) {
        _mm256_storeu_pd(out, v);
        return;
    }
    const __m256i from =
        _mm256_loadu_si256(reinterpret_cast<const __m256i*>(kPackTables.doubleWords[mask]));
    _mm256_storeu_pd(
        out, _mm256_castsi256_pd(_mm256_permutevar8x32_epi32(_mm256_castpd_si256(v), from)));
}

inline void packStore(std::uint32_t* out, __m128i v, int mask)
{
    if (mask == 0xF) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out), v);
        return;
    }
    const __m256i from =
        _mm256_loadu_si256(reinterpret_cast<const __m256i*>(kPackTables.words[mask]));
    const __m256i packed = _mm256_permutevar8x32_epi32(_mm256_zextsi128_si256(v), from);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm256_castsi256_si128(packed));
}

// Lanes 0..3 below `count`.
inline LaneMask lanesBelow(std::size_t count)
{
    return lt(_mm256_set_pd(3.0, 2.0, 1.0, 0.0), splat(static_cast<double>(count)));
}

// The cube root, within about one unit in the last place; zeros, infinities and NaN as they are.
// x = m 2^(3q + r) with m in [1, 2): a quadratic guesses 1 / cbrt(m 2^r), three of Newton's
// steps (without division) refine it to w, and one step on y = m 2^r w^2 itself, taking 1 / y^2
// as w^2, rounds off the last bits; then y 2^q.
inline Lanes cubeRoot(Lanes x)
{
    const Lanes one = splat(1.0);
    const Lanes signBit = splat(-0.0);
    const Lanes magnitude = _mm256_andnot_pd(signBit, x);
    // Denormals scaled into the normal range first, 2^54 being 2^(3 x 18).
    const LaneMask denormal = lt(magnitude, splat(0x1p-1022));
    const Lanes scaled = choose(denormal, mul(magnitude, splat(0x1p54)), magnitude);
    const __m256i bits = _mm256_castpd_si256(scaled);
    // The exponent through the bits of 2^52 + its biased field.
    const Lanes twoTo52 = splat(0x1p52);
    const Lanes field = sub(_mm256_castsi256_pd(_mm256_or_si256(_mm256_srli_epi64(bits, 52),
                                                                _mm256_castpd_si256(twoTo52))),
                            twoTo52);
    const Lanes exponent = sub(field, choose(denormal, splat(1023.0 + 54.0), splat(1023.0)));
    const Lanes m = _mm256_castsi256_pd(
        _mm256_or_si256(_mm256_and_si256(bits, _mm256_set1_epi64x(0x000FFFFFFFFFFFFFLL)),
                        _mm256_castpd_si256(one)));
    // exponent = 3q + r; the nudge keeps a product just below a whole q from flooring below it.
    const Lanes q = floorOf(add(mul(exponent, splat(1.0 / 3.0)), splat(1e-9)));
    const Lanes r = sub(exponent, mul(q, splat(3.0)));
    const LaneMask rIsOne = eq(r, one);
    const LaneMask rIsTwo = eq(r, splat(2.0));
    const Lanes mr = mul(m, choose(rIsTwo, splat(4.0), choose(rIsOne, splat(2.0), one)));
    const Lanes rootOfTwoToMinusR =
        choose(rIsTwo, splat(0.6299605249474366), choose(rIsOne, splat(0.7937005259840998), one));
    // 1 / cbrt(m) to 3e-3 on [1, 2), through its values at 1, 1.5 and 2.
    Lanes w = mul(
        _mm256_fmadd_pd(_mm256_fmadd_pd(splat(0.09307919302300394), m, splat(-0.485537053084912)),
                        m, splat(1.3924578600619082)),
        rootOfTwoToMinusR);
    // Each step takes the relative error e to about 2 e^2: 3e-3, 2e-5, 7e-10, 1e-18.
    for (int step = 0; step < 3; ++step) {
        const Lanes residual = _mm256_fnmadd_pd(mr, mul(mul(w, w), w), one);
        w = _mm256_fmadd_pd(mul(w, splat(1.0 / 3.0)), residual, w);
    }
    const Lanes w2 = mul(w, w);
    Lanes y = mul(mr, w2);
    const Lanes excess = _mm256_fmsub_pd(mul(y, y), y, mr);
    y = _mm256_fnmadd_pd(excess, mul(w2, splat(1.0 / 3.0)), y);
    const __m256i twoToQ = _mm256_slli_epi64(
        _mm256_add_epi64(_mm256_cvtepi32_epi64(toInt32(q)), _mm256_set1_epi64x(1023)), 52);
    y = _mm256_or_pd(mul(y, _mm256_castsi256_pd(twoToQ)), _mm256_and_pd(x, signBit));
    const LaneMask asItIs =
        either(either(eq(magnitude, _mm256_setzero_pd()), eq(magnitude, splat(__builtin_inf()))),
               isNan(x));
    return choose(asItIs, x, y);
}

// Radians to degrees wrapped into [0, 360): wrapDegrees(degreesFromRadians(hue)).
inline Lanes wrappedDegrees(Lanes hue)
{
    const Lanes zero = _mm256_setzero_pd();
    const Lanes degrees = div(mul(hue, splat(180.0)), splat(kPi));
    const Lanes period = splat(360.0);
    if (bits(lt(_mm256_andnot_pd(splat(-0.0), degrees), splat(270.0))) == 0xF) {
        // Within three quarters of a period of 0, as arctangents are, floor(d / 360) is -1 where
        // d / 360 is below 0, which is where d is below -180 x the smallest denormal (closer to
        // 0 the quotient rounds to -0, and wrapDegrees gives 0); and d - (-1 x 360) is d + 360.
        // Elsewhere the floor is +0 and leaves d.
        const LaneMask belowZero = lt(degrees, splat(-180.0 * __DBL_DENORM_MIN__));
        const Lanes wrapped =
            choose(belowZero, add(degrees, period), choose(gt(degrees, zero), degrees, zero));
        return choose(ge(wrapped, period), zero, wrapped);
    }
    const Lanes wrapped = sub(degrees, mul(floorOf(div(degrees, period)), period));
    return choose(either(ge(wrapped, period), lt(wrapped, zero)), zero, wrapped);
}

// KVColorGamut::chromaForHue in two halves: where a hue falls between the table's rows, and
// where a lightness falls between its columns; lanes that give 0 have their indices made
// harmless before anything is read.
struct HuePlace {
    Lanes fraction;
    Lanes row0;
    Lanes row1;
    LaneMask none;
};

inline HuePlace huePlaceAtHalfDegrees(Lanes x)
{
    constexpr double kHueCount = 720.0;
    const Lanes zero = _mm256_setzero_pd();
    const LaneMask none = complement(isFinite(x));
    const Lanes floorX = floorOf(x);
    Lanes row0 = choose(none, zero, floorX);
    Lanes row1 = choose(none, zero, ceilOf(x));
    row0 = choose(eq(row0, splat(kHueCount)), zero, row0);
    row1 = choose(eq(row1, splat(kHueCount)), zero, row1);
    return {sub(x, floorX), row0, row1, none};
}

inline HuePlace huePlace(Lanes hue)
{
    return huePlaceAtHalfDegrees(mul(splat(2.0), wrappedDegrees(hue)));
}

struct ColumnPlace {
    Lanes fraction;
    Lanes column0;
    Lanes column1;
    LaneMask none;
};

inline ColumnPlace columnPlace(Lanes lightness)
{
    constexpr double kLastColumn = 200.0;
    const Lanes zero = _mm256_setzero_pd();
    const Lanes lastColumn = splat(kLastColumn);
    const Lanes y = mul(splat(2.0), lightness);
    const Lanes ceilY = ceilOf(y);
    const Lanes floorY = clampTo(floorOf(y), zero, lastColumn);
    const Lanes column1 = choose(lt(lastColumn, ceilY), lastColumn, ceilY);
    // Black and white have no chroma.
    const LaneMask none = either(either(isNan(y), lt(ceilY, zero)),
                                 either(eq(column1, zero), eq(floorY, lastColumn)));
    return {sub(y, floorY), choose(none, zero, floorY), choose(none, zero, column1), none};
}

// The interpolation of chromaForHue from the four entries around the colour.
inline Lanes interpolatedChroma(const HuePlace& hue, const ColumnPlace& column, Lanes a, Lanes b,
                                Lanes c, Lanes d)
{
    const Lanes one = splat(1.0);
    const Lanes fx = hue.fraction;
    const Lanes fy = column.fraction;
    const Lanes gx = sub(one, fx);
    const Lanes gy = sub(one, fy);
    const Lanes mixed = add(add(add(mul(mul(gx, gy), a), mul(mul(fx, gy), b)), mul(mul(gx, fy), c)),
                            mul(mul(fx, fy), d));
    const LaneMask sameRows = eq(hue.row0, hue.row1);
    const LaneMask sameColumns = eq(column.column0, column.column1);
    Lanes value = mixed;
    // The single row or column only where a lane falls on one.
    if (bits(either(sameRows, sameColumns)) != 0) {
        const Lanes sameRow = add(mul(gy, a), mul(fy, c));
        const Lanes sameColumn = add(mul(gx, a), mul(fx, b));
        value = choose(sameRows, sameRow, choose(sameColumns, sameColumn, mixed));
    }
    return choose(either(hue.none, column.none), _mm256_setzero_pd(), value);
}

constexpr double kChromaColumns = 201.0;

// Four rows of four doubles (one row per lane) as four columns: column k holds each lane's k-th.
struct Columns {
    Lanes c0;
    Lanes c1;
    Lanes c2;
    Lanes c3;
};

inline Columns columnsOf(Lanes row0, Lanes row1, Lanes row2, Lanes row3)
{
    const Lanes t0 = _mm256_unpacklo_pd(row0, row1);
    const Lanes t1 = _mm256_unpackhi_pd(row0, row1);
    const Lanes t2 = _mm256_unpacklo_pd(row2, row3);
    const Lanes t3 = _mm256_unpackhi_pd(row2, row3);
    return {_mm256_permute2f128_pd(t0, t2, 0x20), _mm256_permute2f128_pd(t1, t3, 0x20),
            _mm256_permute2f128_pd(t0, t2, 0x31), _mm256_permute2f128_pd(t1, t3, 0x31)};
}

// The four entries around each lane's colour from the paired table: T(i0, j0), T(i0 + 1, j0),
// T(i0, j0 + 1), T(i0 + 1, j0 + 1) for the lanes' pair indices i0 x 201 + j0, one load per lane.
struct Corners {
    Lanes a;
    Lanes b;
    Lanes c;
    Lanes d;
};

inline Corners cornersAt(const double* pairs, __m128i pairIndex)
{
    alignas(16) std::int32_t at[kLanes];
    _mm_store_si128(reinterpret_cast<__m128i*>(at), pairIndex);
    const auto entries = [&](std::size_t lane) {
        return _mm256_loadu_pd(pairs + 2 * static_cast<std::ptrdiff_t>(at[lane]));
    };
    const Columns columns = columnsOf(entries(0), entries(1), entries(2), entries(3));
    return {columns.c0, columns.c1, columns.c2, columns.c3};
}

// KVColorGamut::chromaForHue over the paired table, the hue given as 2 x wrappedDegrees(hue).
// Where the two rows are the same (an exact half degree) or the two columns are, the entries of
// the row or column after are read but not used.
inline Lanes chromaAtHalfDegrees(const ChromaTable& table, Lanes halfDegrees, Lanes lightness)
{
    const HuePlace place = huePlaceAtHalfDegrees(halfDegrees);
    const ColumnPlace column = columnPlace(lightness);
    const Lanes row = choose(column.none, _mm256_setzero_pd(), place.row0);
    const Corners k =
        cornersAt(table.pairs, toInt32(add(mul(row, splat(kChromaColumns)), column.column0)));
    return interpolatedChroma(place, column, k.a, k.b, k.c, k.d);
}

inline Lanes chromaForHue(const ChromaTable& table, Lanes hue, Lanes lightness)
{
    return chromaAtHalfDegrees(table, mul(splat(2.0), wrappedDegrees(hue)), lightness);
}

// chromaForHue for one hue the same in every lane (the target hue), whose place is found once.
struct FixedHue {
    HuePlace place;
    Lanes firstPair;
};

inline FixedHue fixedHue(double hue)
{
    const HuePlace place = huePlace(splat(hue));
    return {place, mul(place.row0, splat(kChromaColumns))};
}

inline Lanes chromaForFixedHue(const ChromaTable& table, const FixedHue& hue, Lanes lightness)
{
    const ColumnPlace column = columnPlace(lightness);
    const Corners k = cornersAt(table.pairs, toInt32(add(hue.firstPair, column.column0)));
    return interpolatedChroma(hue.place, column, k.a, k.b, k.c, k.d);
}

// KVColorGamut::maxChromaForHue(hue).c1 from 2 x wrappedDegrees(hue), given the records' chromas
// every fourth double.
inline Lanes maxChromaAtHalfDegrees(const double* maxChromas, Lanes halfDegrees)
{
    const Lanes zero = _mm256_setzero_pd();
    Lanes index = floorOf(add(halfDegrees, splat(0.5)));
    // 2 d is finite exactly when d is.
    index = choose(isFinite(halfDegrees), index, zero);
    index = choose(eq(index, splat(720.0)), zero, index);
    alignas(16) std::int32_t at[kLanes];
    _mm_store_si128(reinterpret_cast<__m128i*>(at), _mm_slli_epi32(toInt32(index), 2));
    return valuesAt(maxChromas, at);
}

// fastAtan2(y, x).
inline Lanes fastAtan2(Lanes y, Lanes x)
{
    const Lanes zero = _mm256_setzero_pd();
    const Lanes negativeY = lt(y, zero);
    const Lanes ay = add(choose(negativeY, negate(y), y), splat(1e-10));
    const LaneMask right = ge(x, zero);
    const Lanes r = choose(right, div(sub(x, ay), add(x, ay)), div(add(x, ay), sub(ay, x)));
    const Lanes quarter = choose(right, splat(0.25 * kPi), splat(0.75 * kPi));
    const Lanes cubic = mul(mul(mul(splat(0.1963), r), r), r);
    const Lanes angle = add(sub(cubic, mul(splat(0.9817), r)), quarter);
    return choose(negativeY, negate(angle), angle);
}

} // namespace
} // namespace tintorra::rowKernel::avx2
