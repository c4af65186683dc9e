// Compiled for AVX2 and FMA without contraction (see src/CMakeLists.txt); called only after the
// processor has been checked.

#include "engine/Avx2Lanes.h"
#include "engine/RowKernel.h"

#include <cstring>

namespace tintorra::row_kernel::avx2 {

namespace {

constexpr double kMaximum = 65535.0;
// A guess this far from a rounding boundary is the stored sample: the approximate power below
// is within about 1e-9 of the library's, which moves the scaled value by less than 1e-4. Being
// a guess, it may fuse its multiplications and additions.
constexpr double kMargin = 2e-3;
// The three colour channels of four pixels go through the power together, step by step, so
// that the processor can overlap their chains of multiplications.
constexpr int kChannels = 3;

// 2^n for whole n that give a normal double.
Lanes powerOfTwo(Lanes n)
{
    const __m256i exponent =
        _mm256_add_epi64(_mm256_cvtepi32_epi64(toInt32(n)), _mm256_set1_epi64x(1023));
    return _mm256_castsi256_pd(_mm256_slli_epi64(exponent, 52));
}

// log2 of positive normal doubles, to about 1e-9.
void log2Of(Lanes* v)
{
    const Lanes twoTo52 = splat(4503599627370496.0);
    const __m256i mantissaBits = _mm256_set1_epi64x(0x000FFFFFFFFFFFFFLL);
    const Lanes one = splat(1.0);
    Lanes e[kChannels];
    Lanes s[kChannels];
    Lanes s2[kChannels];
    for (int c = 0; c < kChannels; ++c) {
        const __m256i bitsOf = _mm256_castpd_si256(v[c]);
        // The biased exponent, through the bits of 2^52 + e.
        const __m256i field = _mm256_srli_epi64(bitsOf, 52);
        e[c] = sub(
            sub(_mm256_castsi256_pd(_mm256_or_si256(field, _mm256_castpd_si256(twoTo52))), twoTo52),
            splat(1023.0));
        Lanes m = _mm256_castsi256_pd(
            _mm256_or_si256(_mm256_and_si256(bitsOf, mantissaBits), _mm256_castpd_si256(one)));
        // m in [sqrt(1/2), sqrt(2)): the series below converges fastest around 1.
        const LaneMask high = gt(m, splat(1.4142135623730951));
        m = choose(high, mul(m, splat(0.5)), m);
        e[c] = choose(high, add(e[c], one), e[c]);
        // ln m = 2 atanh(s) with s = (m - 1) / (m + 1), |s| < 0.172.
        s[c] = div(sub(m, one), add(m, one));
        s2[c] = mul(s[c], s[c]);
    }
    // Plain arrays rather than braced lists: nothing from a library header may be instantiated
    // in this file.
    constexpr double kOddReciprocals[] = {1.0 / 9.0, 1.0 / 7.0, 1.0 / 5.0, 1.0 / 3.0, 1.0};
    Lanes series[kChannels];
    for (int c = 0; c < kChannels; ++c) {
        series[c] = splat(1.0 / 11.0);
    }
    for (const double k : kOddReciprocals) {
        for (int c = 0; c < kChannels; ++c) {
            series[c] = _mm256_fmadd_pd(series[c], s2[c], splat(k));
        }
    }
    for (int c = 0; c < kChannels; ++c) {
        const Lanes lnM = mul(mul(splat(2.0), s[c]), series[c]);
        v[c] = _mm256_fmadd_pd(lnM, splat(1.4426950408889634), e[c]);
    }
}

// 2^t for t from about -60 to 0, to about 3e-10.
void exp2Of(Lanes* t)
{
    Lanes n[kChannels];
    Lanes z[kChannels];
    Lanes series[kChannels];
    for (int c = 0; c < kChannels; ++c) {
        n[c] = _mm256_round_pd(t[c], _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC);
        z[c] = mul(sub(t[c], n[c]), splat(0.6931471805599453));
        series[c] = splat(1.0 / 40320.0);
    }
    // e^z for |z| <= 0.35, Taylor to z^8.
    constexpr double kInverseFactorials[] = {1.0 / 5040.0, 1.0 / 720.0, 1.0 / 120.0, 1.0 / 24.0,
                                             1.0 / 6.0,    0.5,         1.0,         1.0};
    for (const double k : kInverseFactorials) {
        for (int c = 0; c < kChannels; ++c) {
            series[c] = _mm256_fmadd_pd(series[c], z[c], splat(k));
        }
    }
    for (int c = 0; c < kChannels; ++c) {
        t[c] = mul(series[c], powerOfTwo(n[c]));
    }
}

// The sample by the thresholds alone, from a guess near it.
std::uint32_t sampleByThresholds(double linear, double guess, const double* thresholds)
{
    double start = __builtin_floor(guess);
    start = start > 0.0 ? (start < kMaximum ? start : kMaximum) : 0.0;
    auto k = static_cast<std::uint32_t>(start);
    while (linear < thresholds[k]) {
        --k;
    }
    while (linear >= thresholds[k + 1]) {
        ++k;
    }
    return k;
}

// The lanes the guess cannot settle, by the thresholds.
__attribute__((noinline)) __m128i settleByThresholds(__m128i samples, int unsure, Lanes linear,
                                                     Lanes scaled, const double* thresholds)
{
    alignas(16) std::int32_t lanes[kLanes];
    double values[kLanes];
    double guesses[kLanes];
    _mm_store_si128(reinterpret_cast<__m128i*>(lanes), samples);
    _mm256_storeu_pd(values, linear);
    _mm256_storeu_pd(guesses, scaled);
    for (std::size_t lane = 0; lane < kLanes; ++lane) {
        if ((unsure >> lane) & 1) {
            lanes[lane] = static_cast<std::int32_t>(
                sampleByThresholds(values[lane], guesses[lane], thresholds));
        }
    }
    return _mm_load_si128(reinterpret_cast<const __m128i*>(lanes));
}

// SampleEncodeTable's samples of three channels: trunc(v^gamma x 65535 + 0.5) as the pixel
// writers compute it with the library's power; 0 for NaN and anything not above 0, 65535 from 1
// up.
void encode(const Lanes* linear, double imageGamma, const double* thresholds, __m128i* samples)
{
    const Lanes zero = _mm256_setzero_pd();
    const Lanes one = splat(1.0);
    LaneMask guessed[kChannels];
    LaneMask top[kChannels];
    Lanes power[kChannels];
    for (int c = 0; c < kChannels; ++c) {
        top[c] = ge(linear[c], one);
        // Below the first threshold every value is stored as 0.
        guessed[c] = butNot(ge(linear[c], splat(thresholds[1])), top[c]);
        power[c] = choose(guessed[c], linear[c], splat(0.5));
    }
    if (imageGamma != 1.0) {
        log2Of(power);
        for (int c = 0; c < kChannels; ++c) {
            power[c] = mul(splat(imageGamma), power[c]);
        }
        exp2Of(power);
    }
    for (int c = 0; c < kChannels; ++c) {
        const Lanes scaled = add(mul(power[c], splat(kMaximum)), splat(0.5));
        const Lanes whole = floorOf(scaled);
        const Lanes fraction = sub(scaled, whole);
        const LaneMask sure =
            both(gt(fraction, splat(kMargin)), lt(fraction, splat(1.0 - kMargin)));
        Lanes sample = choose(guessed[c], whole, zero);
        sample = choose(top[c], splat(kMaximum), sample);
        samples[c] = toInt32(sample);
        const int unsure = bits(butNot(guessed[c], sure));
        if (unsure != 0) {
            samples[c] = settleByThresholds(samples[c], unsure, linear[c], scaled, thresholds);
        }
    }
}

void storeWord(std::uint8_t* address, std::int32_t value)
{
    const auto word = static_cast<std::uint16_t>(value);
    std::memcpy(address, &word, sizeof word);
}

} // namespace

void encodeSamples(const double* linear, std::size_t count, double imageGamma,
                   const double* thresholds, std::uint32_t* samples)
{
    const Lanes zero = _mm256_setzero_pd();
    for (std::size_t i = 0; i < count; i += kLanes) {
        double lanes[kLanes] = {0.0, 0.0, 0.0, 0.0};
        for (std::size_t lane = 0; lane < kLanes && i + lane < count; ++lane) {
            lanes[lane] = linear[i + lane];
        }
        const Lanes in[kChannels] = {_mm256_loadu_pd(lanes), zero, zero};
        __m128i encoded[kChannels];
        encode(in, imageGamma, thresholds, encoded);
        alignas(16) std::int32_t out[kLanes];
        _mm_store_si128(reinterpret_cast<__m128i*>(out), encoded[0]);
        for (std::size_t lane = 0; lane < kLanes && i + lane < count; ++lane) {
            samples[i + lane] = static_cast<std::uint32_t>(out[lane]);
        }
    }
}

void writePainted(const WriteConstants& k, const SelectedColors& s, std::size_t count,
                  std::uint8_t* row, std::int64_t y)
{
    const SampleLayout& layout = k.layout;
    const Lanes zero = _mm256_setzero_pd();
    const Lanes one = splat(1.0);
    // mixColors with the painted coverage, in place: the painted colour at t = 1, the unshifted
    // one at t = 0. Without coverage t is 1 everywhere and nothing changes.
    if (k.coverage != nullptr) {
        for (std::size_t i = 0; i < count; i += kLanes) {
            const Lanes t = div(_mm256_set_pd(k.coverage[s.x[i + 3]], k.coverage[s.x[i + 2]],
                                              k.coverage[s.x[i + 1]], k.coverage[s.x[i]]),
                                splat(255.0));
            const LaneMask full = eq(t, one);
            const LaneMask untouched = eq(t, zero);
            const Lanes keep = sub(one, t);
            const auto mix = [&](const double* from, double* to) {
                const Lanes a = _mm256_loadu_pd(from + i);
                const Lanes b = _mm256_loadu_pd(to + i);
                _mm256_storeu_pd(
                    to + i, choose(full, b, choose(untouched, a, add(mul(a, keep), mul(b, t)))));
            };
            mix(s.r, s.paintedR);
            mix(s.g, s.paintedG);
            mix(s.b, s.paintedB);
            mix(s.alpha, s.paintedAlpha);
        }
    }

    // The samples, in a pass of their own so that the processor overlaps the powers of
    // consecutive groups.
    for (std::size_t i = 0; i < count; i += kLanes) {
        const Lanes channels[kChannels] = {_mm256_loadu_pd(s.paintedR + i),
                                           _mm256_loadu_pd(s.paintedG + i),
                                           _mm256_loadu_pd(s.paintedB + i)};
        __m128i encoded[kChannels];
        encode(channels, k.imageGamma, k.thresholds, encoded);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(s.samples[0] + i), encoded[0]);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(s.samples[1] + i), encoded[1]);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(s.samples[2] + i), encoded[2]);
        const Lanes alpha = _mm256_loadu_pd(s.paintedAlpha + i);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(s.samples[3] + i),
                         toInt32(floorOf(add(mul(alpha, splat(kMaximum)), splat(0.5)))));
    }

    const bool premultiply = layout.hasAlpha && layout.premultiplied;
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint32_t x = s.x[i];
        // A pixel painted with coverage 0 keeps its samples.
        if (k.coverage != nullptr && k.coverage[x] == 0) {
            continue;
        }
        if (premultiply && s.paintedAlpha[i] != 1.0) {
            const double colour[4] = {s.paintedR[i], s.paintedG[i], s.paintedB[i],
                                      s.paintedAlpha[i]};
            k.writePixel(k.context, x, y, colour);
            continue;
        }
        std::uint8_t* const pixel = row + static_cast<std::int64_t>(x) * layout.bytesPerPixel;
        storeWord(pixel + layout.redOffset, static_cast<std::int32_t>(s.samples[0][i]));
        storeWord(pixel + layout.greenOffset, static_cast<std::int32_t>(s.samples[1][i]));
        storeWord(pixel + layout.blueOffset, static_cast<std::int32_t>(s.samples[2][i]));
        if (layout.hasAlpha) {
            storeWord(pixel + layout.alphaOffset, static_cast<std::int32_t>(s.samples[3][i]));
        }
    }
}

} // namespace tintorra::row_kernel::avx2
