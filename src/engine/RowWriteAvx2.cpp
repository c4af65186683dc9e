// Compiled for AVX2 and FMA without contraction (see src/CMakeLists.txt); called only after the
// processor has been checked.

#include "engine/Avx2Lanes.h"
#include "engine/RowKernel.h"

#include <cstring>

namespace tintorra::rowKernel::avx2 {

namespace {

constexpr double kMaximum = 65535.0;
// The three colour channels of four pixels are encoded together, so that the processor can
// overlap their table reads.
constexpr int kChannels = 3;

// SampleGuessCells::kMargin: a guess this far from a rounding boundary gives the stored sample,
// the cells' guesses being within SampleGuessCells::kLargestError of the value whose whole part
// is stored.
constexpr double kMargin = 5e-5;

// The guess cells' coefficients for each lane's key, c0 .. c3.
Columns cellCurves(const double* cells, __m256i index)
{
    const __m128i low = _mm256_castsi256_si128(index);
    const __m128i high = _mm256_extracti128_si256(index, 1);
    const auto row = [&](std::int64_t at) { return _mm256_loadu_pd(cells + 4 * at); };
    return columnsOf(row(_mm_cvtsi128_si64(low)), row(_mm_extract_epi64(low, 1)),
                     row(_mm_cvtsi128_si64(high)), row(_mm_extract_epi64(high, 1)));
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
__attribute__((noinline)) Lanes settleByThresholds(Lanes samples, int unsure, Lanes linear,
                                                   Lanes guess, const double* thresholds)
{
    double lanes[kLanes];
    double values[kLanes];
    double guesses[kLanes];
    _mm256_storeu_pd(lanes, samples);
    _mm256_storeu_pd(values, linear);
    _mm256_storeu_pd(guesses, guess);
    for (std::size_t lane = 0; lane < kLanes; ++lane) {
        if ((unsure >> lane) & 1) {
            lanes[lane] = sampleByThresholds(values[lane], guesses[lane], thresholds);
        }
    }
    return _mm256_loadu_pd(lanes);
}

// The samples of the `guessed` lanes, those of values from thresholds[1] up to 1, by the cells;
// the other lanes must hold such values too. Inlined, so that the table's members stay in
// registers across the three channels.
__attribute__((always_inline)) inline Lanes sampleByCells(const Encoding& e, Lanes linear,
                                                          LaneMask guessed)
{
    const __m128i shift = _mm_cvtsi32_si128(static_cast<int>(e.shift));
    const __m256i key = _mm256_srl_epi64(_mm256_castpd_si256(linear), shift);
    const Lanes x = sub(linear, _mm256_castsi256_pd(_mm256_sll_epi64(key, shift)));
    const Columns cell = cellCurves(
        e.cells, _mm256_sub_epi64(key, _mm256_set1_epi64x(static_cast<long long>(e.firstKey))));
    // Being a guess, it may fuse its multiplications and additions.
    const Lanes guess = _mm256_fmadd_pd(
        _mm256_fmadd_pd(_mm256_fmadd_pd(cell.c3, x, cell.c2), x, cell.c1), x, cell.c0);
    const Lanes whole = floorOf(guess);
    const Lanes fraction = sub(guess, whole);
    const LaneMask sure = both(gt(fraction, splat(kMargin)), lt(fraction, splat(1.0 - kMargin)));
    const int unsure = bits(butNot(guessed, sure));
    return unsure == 0 ? whole : settleByThresholds(whole, unsure, linear, guess, e.thresholds);
}

// The lanes of a table without cells, one by one.
__attribute__((noinline)) __m128i sampleOneByOne(const Encoding& e, Lanes linear)
{
    double values[kLanes];
    alignas(16) std::int32_t lanes[kLanes];
    _mm256_storeu_pd(values, linear);
    for (std::size_t lane = 0; lane < kLanes; ++lane) {
        lanes[lane] = static_cast<std::int32_t>(e.encode(e.context, values[lane]));
    }
    return _mm_load_si128(reinterpret_cast<const __m128i*>(lanes));
}

// SampleEncodeTable's samples of three channels: 0 for NaN and anything below the smallest value
// of sample 1, 65535 from 1 up.
__attribute__((always_inline)) inline void encode(const Encoding& e, const Lanes* linear,
                                                  __m128i* samples)
{
    if (e.cells == nullptr) {
        for (int c = 0; c < kChannels; ++c) {
            samples[c] = sampleOneByOne(e, linear[c]);
        }
        return;
    }
    const Lanes one = splat(1.0);
    const Lanes first = splat(e.thresholds[1]);
    for (int c = 0; c < kChannels; ++c) {
        const LaneMask top = ge(linear[c], one);
        const LaneMask guessed = butNot(ge(linear[c], first), top);
        // Other lanes read the first cell and are overwritten.
        const Lanes guess = sampleByCells(e, choose(guessed, linear[c], first), guessed);
        samples[c] = toInt32(choose(top, splat(kMaximum), both(guessed, guess)));
    }
}

void storeWord(std::uint8_t* address, std::int32_t value)
{
    const auto word = static_cast<std::uint16_t>(value);
    std::memcpy(address, &word, sizeof word);
}

__m128i loadWords(const std::uint32_t* words)
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(words));
}

// The samples of the four selected colours from i, neighbours in the row, stored at `pixels`.
void storeFour(const PixelShuffles& shuffles, const SelectedColors& s, std::size_t i,
               std::uint8_t* pixels, std::int64_t bytesPerPixel)
{
    const __m128i redGreen =
        _mm_packus_epi32(loadWords(s.samples[0] + i), loadWords(s.samples[1] + i));
    const __m128i blueAlpha =
        _mm_packus_epi32(loadWords(s.samples[2] + i), loadWords(s.samples[3] + i));
    const auto half = [&](int h) {
        const auto mask = [&](int source) {
            return _mm_loadu_si128(
                reinterpret_cast<const __m128i*>(shuffles.bytes + 32 * h + 16 * source));
        };
        return _mm_or_si128(_mm_shuffle_epi8(redGreen, mask(0)),
                            _mm_shuffle_epi8(blueAlpha, mask(1)));
    };
    _mm_storeu_si128(reinterpret_cast<__m128i*>(pixels), half(0));
    if (bytesPerPixel == 8) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(pixels + 16), half(1));
    } else {
        _mm_storel_epi64(reinterpret_cast<__m128i*>(pixels + 16), half(1));
    }
}

} // namespace

void encodeSamples(const Encoding& encoding, const double* linear, std::size_t count,
                   std::uint32_t* samples)
{
    const Lanes zero = _mm256_setzero_pd();
    for (std::size_t i = 0; i < count; i += kLanes) {
        double lanes[kLanes] = {0.0, 0.0, 0.0, 0.0};
        for (std::size_t lane = 0; lane < kLanes && i + lane < count; ++lane) {
            lanes[lane] = linear[i + lane];
        }
        const Lanes in[kChannels] = {_mm256_loadu_pd(lanes), zero, zero};
        __m128i encoded[kChannels];
        encode(encoding, in, encoded);
        alignas(16) std::int32_t out[kLanes];
        _mm_store_si128(reinterpret_cast<__m128i*>(out), encoded[0]);
        for (std::size_t lane = 0; lane < kLanes && i + lane < count; ++lane) {
            samples[i + lane] = static_cast<std::uint32_t>(out[lane]);
        }
    }
}

void writePainted(const WriteConstants& constants, const SelectedColors& selected,
                  std::size_t count, std::uint8_t* row, std::int64_t y)
{
    // Local copies: a store through one of the arrays' pointers could otherwise change these
    // members as far as the compiler knows, and it would read them again for every group.
    const WriteConstants k = constants;
    const SelectedColors s = selected;
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
        encode(k.encoding, channels, encoded);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(s.samples[0] + i), encoded[0]);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(s.samples[1] + i), encoded[1]);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(s.samples[2] + i), encoded[2]);
        const Lanes alpha = _mm256_loadu_pd(s.paintedAlpha + i);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(s.samples[3] + i),
                         toInt32(floorOf(add(mul(alpha, splat(kMaximum)), splat(0.5)))));
    }

    const bool premultiply = layout.hasAlpha && layout.premultiplied;
    // Four neighbours at once where the samples fill the pixels and nothing needs a pixel of
    // its own.
    const bool inFours = k.shuffles != nullptr && k.coverage == nullptr;
    for (std::size_t i = 0; i < count;) {
        if (inFours && i + kLanes <= count && s.x[i + 3] - s.x[i] == 3 &&
            (!premultiply || bits(eq(_mm256_loadu_pd(s.paintedAlpha + i), one)) == 0xF)) {
            storeFour(*k.shuffles, s, i,
                      row + static_cast<std::int64_t>(s.x[i]) * layout.bytesPerPixel,
                      layout.bytesPerPixel);
            i += kLanes;
            continue;
        }
        const std::uint32_t x = s.x[i];
        // A pixel painted with coverage 0 keeps its samples.
        if (k.coverage != nullptr && k.coverage[x] == 0) {
            ++i;
            continue;
        }
        if (premultiply && s.paintedAlpha[i] != 1.0) {
            const double colour[4] = {s.paintedR[i], s.paintedG[i], s.paintedB[i],
                                      s.paintedAlpha[i]};
            k.writePixel(k.context, x, y, colour);
            ++i;
            continue;
        }
        std::uint8_t* const pixel = row + static_cast<std::int64_t>(x) * layout.bytesPerPixel;
        storeWord(pixel + layout.redOffset, static_cast<std::int32_t>(s.samples[0][i]));
        storeWord(pixel + layout.greenOffset, static_cast<std::int32_t>(s.samples[1][i]));
        storeWord(pixel + layout.blueOffset, static_cast<std::int32_t>(s.samples[2][i]));
        if (layout.hasAlpha) {
            storeWord(pixel + layout.alphaOffset, static_cast<std::int32_t>(s.samples[3][i]));
        }
        ++i;
    }
}

} // namespace tintorra::rowKernel::avx2
