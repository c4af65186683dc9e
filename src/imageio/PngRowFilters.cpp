#include "imageio/PngRowFilters.h"

#include <cstdlib>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace tintorra {

namespace {

std::uint8_t paethPredictor(int left, int above, int aboveLeft)
{
    const int toLeft = std::abs(above - aboveLeft);
    const int toAbove = std::abs(left - aboveLeft);
    const int toAboveLeft = std::abs(left + above - 2 * aboveLeft);
    if (toLeft <= toAbove && toLeft <= toAboveLeft)
        return static_cast<std::uint8_t>(left);
    return static_cast<std::uint8_t>(toAbove <= toAboveLeft ? above : aboveLeft);
}

void unfilterSub(const std::uint8_t* __restrict filtered, std::size_t rowBytes, unsigned bpp,
                 std::uint8_t* __restrict out)
{
    std::size_t i = 0;
    for (; i < bpp && i < rowBytes; ++i)
        out[i] = filtered[i];
    for (; i < rowBytes; ++i)
        out[i] = static_cast<std::uint8_t>(filtered[i] + out[i - bpp]);
}

void unfilterUp(const std::uint8_t* __restrict filtered, const std::uint8_t* __restrict previous,
                std::size_t rowBytes, std::uint8_t* __restrict out)
{
    for (std::size_t i = 0; i < rowBytes; ++i)
        out[i] = static_cast<std::uint8_t>(filtered[i] + previous[i]);
}

void unfilterAverageFirstRow(const std::uint8_t* __restrict filtered, std::size_t rowBytes,
                             unsigned bpp, std::uint8_t* __restrict out)
{
    std::size_t i = 0;
    for (; i < bpp && i < rowBytes; ++i)
        out[i] = filtered[i];
    for (; i < rowBytes; ++i)
        out[i] = static_cast<std::uint8_t>(filtered[i] + (out[i - bpp] >> 1));
}

void unfilterAverageScalar(const std::uint8_t* __restrict filtered,
                           const std::uint8_t* __restrict previous, std::size_t rowBytes,
                           unsigned bpp, std::uint8_t* __restrict out)
{
    std::size_t i = 0;
    for (; i < bpp && i < rowBytes; ++i)
        out[i] = static_cast<std::uint8_t>(filtered[i] + (previous[i] >> 1));
    for (; i < rowBytes; ++i)
        out[i] = static_cast<std::uint8_t>(filtered[i] + ((out[i - bpp] + previous[i]) >> 1));
}

void unfilterPaethScalar(const std::uint8_t* __restrict filtered,
                         const std::uint8_t* __restrict previous, std::size_t rowBytes,
                         unsigned bpp, std::uint8_t* __restrict out)
{
    std::size_t i = 0;
    for (; i < bpp && i < rowBytes; ++i)
        out[i] = static_cast<std::uint8_t>(filtered[i] + previous[i]);
    for (; i < rowBytes; ++i)
        out[i] = static_cast<std::uint8_t>(
            filtered[i] + paethPredictor(out[i - bpp], previous[i], previous[i - bpp]));
}

#if defined(__SSE2__)

// Average and Paeth chain every pixel to its left neighbour, so they run a pixel at a time with
// the pixel's bytes side by side in 16-bit lanes (wide enough for the sums and differences).

__m128i absolute16(__m128i v)
{
    return _mm_max_epi16(v, _mm_sub_epi16(_mm_setzero_si128(), v));
}

// A pixel's bytes widened to 16-bit lanes. The wide forms move four or eight bytes, more than a
// pixel of three or six: the extra lanes carry the next pixel's bytes along harmlessly, and a
// wide store is overwritten by the next pixel's. Moving exactly the pixel's bytes instead goes
// through memory the processor cannot forward, several times slower, so only a row's last
// pixels do that.
template <unsigned Bpp>
struct PixelLanes {
    static constexpr std::size_t kWideBytes = Bpp <= 4 ? 4 : 8;

    static __m128i loadWide(const std::uint8_t* p)
    {
        if constexpr (kWideBytes == 4) {
            std::uint32_t bits;
            std::memcpy(&bits, p, sizeof bits);
            return widen(_mm_cvtsi32_si128(static_cast<int>(bits)));
        } else {
            std::uint64_t bits;
            std::memcpy(&bits, p, sizeof bits);
            return widen(_mm_cvtsi64_si128(static_cast<long long>(bits)));
        }
    }

    // Lanes must hold values below 256.
    static void storeWide(std::uint8_t* p, __m128i lanes)
    {
        const __m128i bytes = _mm_packus_epi16(lanes, lanes);
        if constexpr (kWideBytes == 4) {
            const auto bits = static_cast<std::uint32_t>(_mm_cvtsi128_si32(bytes));
            std::memcpy(p, &bits, sizeof bits);
        } else {
            const auto bits = static_cast<std::uint64_t>(_mm_cvtsi128_si64(bytes));
            std::memcpy(p, &bits, sizeof bits);
        }
    }

    static __m128i loadExact(const std::uint8_t* p)
    {
        std::uint64_t bits = 0;
        std::memcpy(&bits, p, Bpp);
        return widen(_mm_cvtsi64_si128(static_cast<long long>(bits)));
    }

    static void storeExact(std::uint8_t* p, __m128i lanes)
    {
        const auto bits =
            static_cast<std::uint64_t>(_mm_cvtsi128_si64(_mm_packus_epi16(lanes, lanes)));
        std::memcpy(p, &bits, Bpp);
    }

    static __m128i widen(__m128i bytes) { return _mm_unpacklo_epi8(bytes, _mm_setzero_si128()); }
};

struct AverageStep {
    __m128i left = _mm_setzero_si128();

    __m128i operator()(__m128i filtered, __m128i above)
    {
        const __m128i mean = _mm_srli_epi16(_mm_add_epi16(left, above), 1);
        left = _mm_and_si128(_mm_add_epi16(filtered, mean), _mm_set1_epi16(0xff));
        return left;
    }
};

struct PaethStep {
    __m128i left = _mm_setzero_si128();
    __m128i aboveLeft = _mm_setzero_si128();

    __m128i operator()(__m128i filtered, __m128i above)
    {
        // The distances of left + above - aboveLeft to left, above and aboveLeft; only the
        // last two depend on the pixel just decoded.
        const __m128i aboveStep = _mm_sub_epi16(above, aboveLeft);
        const __m128i leftStep = _mm_sub_epi16(left, aboveLeft);
        const __m128i toLeft = absolute16(aboveStep);
        const __m128i toAbove = absolute16(leftStep);
        const __m128i toAboveLeft = absolute16(_mm_add_epi16(leftStep, aboveStep));
        const __m128i nearest = _mm_min_epi16(toLeft, _mm_min_epi16(toAbove, toAboveLeft));
        // Ties go to left, then above, then above-left.
        const __m128i takeLeft = _mm_cmpeq_epi16(nearest, toLeft);
        const __m128i takeAbove = _mm_cmpeq_epi16(nearest, toAbove);
        __m128i predicted =
            _mm_or_si128(_mm_and_si128(takeAbove, above), _mm_andnot_si128(takeAbove, aboveLeft));
        predicted =
            _mm_or_si128(_mm_and_si128(takeLeft, left), _mm_andnot_si128(takeLeft, predicted));
        left = _mm_and_si128(_mm_add_epi16(filtered, predicted), _mm_set1_epi16(0xff));
        aboveLeft = above;
        return left;
    }
};

// Runs `step` over the row's pixels, left to right.
template <unsigned Bpp, typename Step>
void unfilterPixels(const std::uint8_t* filtered, const std::uint8_t* previous,
                    std::size_t rowBytes, std::uint8_t* out, Step step)
{
    using Lanes = PixelLanes<Bpp>;
    std::size_t i = 0;
    for (; i + Lanes::kWideBytes <= rowBytes; i += Bpp)
        Lanes::storeWide(out + i,
                         step(Lanes::loadWide(filtered + i), Lanes::loadWide(previous + i)));
    for (; i < rowBytes; i += Bpp)
        Lanes::storeExact(out + i,
                          step(Lanes::loadExact(filtered + i), Lanes::loadExact(previous + i)));
}

// The `Count` bytes at p in the lowest bytes of a register, the others zero.
template <std::size_t Count>
__m128i loadBytes(const std::uint8_t* p)
{
    std::uint32_t bits = 0;
    std::memcpy(&bits, p, Count);
    return _mm_cvtsi32_si128(static_cast<int>(bits));
}

// One step of unfilterPaethPair at byte x of the rows; `FirstBytes` is what the first row has
// room for there (4, or the pixel's size at its end). The second row, a pixel behind, always has
// room for four.
template <unsigned Bpp, std::size_t FirstBytes>
void paethPairStep(PaethStep& step, const std::uint8_t* filteredFirst,
                   const std::uint8_t* filteredSecond, const std::uint8_t* previous, std::size_t x,
                   std::uint8_t* outFirst, std::uint8_t* outSecond)
{
    const __m128i filtered = PixelLanes<Bpp>::widen(_mm_unpacklo_epi32(
        loadBytes<FirstBytes>(filteredFirst + x), loadBytes<4>(filteredSecond + x - Bpp)));
    const __m128i above =
        _mm_unpacklo_epi64(PixelLanes<Bpp>::widen(loadBytes<FirstBytes>(previous + x)), step.left);
    const __m128i result = step(filtered, above);
    const auto bits =
        static_cast<std::uint64_t>(_mm_cvtsi128_si64(_mm_packus_epi16(result, result)));
    std::memcpy(outFirst + x, &bits, FirstBytes);
    const auto second = static_cast<std::uint32_t>(bits >> 32);
    std::memcpy(outSecond + x - Bpp, &second, 4);
}

// Paeth on two rows at once, for pixels of 3 or 4 bytes: the lower four lanes decode pixel i of
// the first row, the upper four pixel i - 1 of the second, whose neighbours above are the first
// row's pixels just decoded. The two rows' dependency chains then run side by side.
template <unsigned Bpp>
void unfilterPaethPair(const std::uint8_t* filteredFirst, const std::uint8_t* filteredSecond,
                       const std::uint8_t* previous, std::size_t rowBytes, std::uint8_t* outFirst,
                       std::uint8_t* outSecond)
{
    static_assert(Bpp == 3 || Bpp == 4);
    PaethStep step;
    // The first row's first pixel; the upper lanes decode the zero pixel left of the second row.
    PixelLanes<Bpp>::storeExact(outFirst,
                                step(PixelLanes<Bpp>::widen(loadBytes<Bpp>(filteredFirst)),
                                     PixelLanes<Bpp>::widen(loadBytes<Bpp>(previous))));
    std::size_t x = Bpp;
    for (; x + 4 <= rowBytes; x += Bpp)
        paethPairStep<Bpp, 4>(step, filteredFirst, filteredSecond, previous, x, outFirst,
                              outSecond);
    for (; x < rowBytes; x += Bpp)
        paethPairStep<Bpp, Bpp>(step, filteredFirst, filteredSecond, previous, x, outFirst,
                                outSecond);
    // The second row's last pixel.
    for (std::size_t i = rowBytes - Bpp; i < rowBytes; ++i) {
        const int left = i >= Bpp ? outSecond[i - Bpp] : 0;
        const int aboveLeft = i >= Bpp ? outFirst[i - Bpp] : 0;
        outSecond[i] = static_cast<std::uint8_t>(filteredSecond[i] +
                                                 paethPredictor(left, outFirst[i], aboveLeft));
    }
}

#endif

void unfilterAverage(const std::uint8_t* filtered, const std::uint8_t* previous,
                     std::size_t rowBytes, unsigned bpp, std::uint8_t* out)
{
#if defined(__SSE2__)
    switch (bpp) {
    case 3:
        return unfilterPixels<3>(filtered, previous, rowBytes, out, AverageStep{});
    case 4:
        return unfilterPixels<4>(filtered, previous, rowBytes, out, AverageStep{});
    case 6:
        return unfilterPixels<6>(filtered, previous, rowBytes, out, AverageStep{});
    case 8:
        return unfilterPixels<8>(filtered, previous, rowBytes, out, AverageStep{});
    default:
        break;
    }
#endif
    unfilterAverageScalar(filtered, previous, rowBytes, bpp, out);
}

void unfilterPaeth(const std::uint8_t* filtered, const std::uint8_t* previous, std::size_t rowBytes,
                   unsigned bpp, std::uint8_t* out)
{
#if defined(__SSE2__)
    switch (bpp) {
    case 3:
        return unfilterPixels<3>(filtered, previous, rowBytes, out, PaethStep{});
    case 4:
        return unfilterPixels<4>(filtered, previous, rowBytes, out, PaethStep{});
    case 6:
        return unfilterPixels<6>(filtered, previous, rowBytes, out, PaethStep{});
    case 8:
        return unfilterPixels<8>(filtered, previous, rowBytes, out, PaethStep{});
    default:
        break;
    }
#endif
    unfilterPaethScalar(filtered, previous, rowBytes, bpp, out);
}

} // namespace

void averageFilterRow(const std::uint8_t* row, const std::uint8_t* previous, std::size_t rowBytes,
                      unsigned bytesPerPixel, std::uint8_t* out)
{
    std::size_t i = 0;
    for (; i < bytesPerPixel && i < rowBytes; ++i)
        out[i] = static_cast<std::uint8_t>(row[i] - (previous ? previous[i] >> 1 : 0));
#if defined(__SSE2__)
    // Every input is already known, so sixteen bytes go at once; floor((a + b) / 2) is the
    // rounded-up mean less the bit that rounding added.
    const __m128i one = _mm_set1_epi8(1);
    for (; i + 16 <= rowBytes; i += 16) {
        const __m128i left =
            _mm_loadu_si128(reinterpret_cast<const __m128i*>(row + i - bytesPerPixel));
        const __m128i above = previous
                                  ? _mm_loadu_si128(reinterpret_cast<const __m128i*>(previous + i))
                                  : _mm_setzero_si128();
        const __m128i mean =
            _mm_sub_epi8(_mm_avg_epu8(left, above), _mm_and_si128(_mm_xor_si128(left, above), one));
        const __m128i value = _mm_loadu_si128(reinterpret_cast<const __m128i*>(row + i));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i), _mm_sub_epi8(value, mean));
    }
#endif
    for (; i < rowBytes; ++i) {
        const int above = previous ? previous[i] : 0;
        out[i] = static_cast<std::uint8_t>(row[i] - ((row[i - bytesPerPixel] + above) >> 1));
    }
}

bool unfilterRow(std::uint8_t type, const std::uint8_t* filtered, const std::uint8_t* previous,
                 std::size_t rowBytes, unsigned bytesPerPixel, std::uint8_t* out)
{
    switch (static_cast<PngRowFilter>(type)) {
    case PngRowFilter::none:
        std::memcpy(out, filtered, rowBytes);
        return true;
    case PngRowFilter::sub:
        unfilterSub(filtered, rowBytes, bytesPerPixel, out);
        return true;
    case PngRowFilter::up:
        if (previous)
            unfilterUp(filtered, previous, rowBytes, out);
        else
            std::memcpy(out, filtered, rowBytes);
        return true;
    case PngRowFilter::average:
        if (previous)
            unfilterAverage(filtered, previous, rowBytes, bytesPerPixel, out);
        else
            unfilterAverageFirstRow(filtered, rowBytes, bytesPerPixel, out);
        return true;
    case PngRowFilter::paeth:
        // Above a row of zeros, Paeth always predicts the left neighbour.
        if (previous)
            unfilterPaeth(filtered, previous, rowBytes, bytesPerPixel, out);
        else
            unfilterSub(filtered, rowBytes, bytesPerPixel, out);
        return true;
    }
    return false;
}

bool unfilterRowPair(const std::uint8_t* types, const std::uint8_t* filteredFirst,
                     const std::uint8_t* filteredSecond, const std::uint8_t* previous,
                     std::size_t rowBytes, unsigned bytesPerPixel, std::uint8_t* outFirst,
                     std::uint8_t* outSecond)
{
#if defined(__SSE2__)
    const bool bothPaeth = types[0] == static_cast<std::uint8_t>(PngRowFilter::paeth) &&
                           types[1] == static_cast<std::uint8_t>(PngRowFilter::paeth);
    if (bothPaeth && previous && rowBytes >= bytesPerPixel) {
        if (bytesPerPixel == 3) {
            unfilterPaethPair<3>(filteredFirst, filteredSecond, previous, rowBytes, outFirst,
                                 outSecond);
            return true;
        }
        if (bytesPerPixel == 4) {
            unfilterPaethPair<4>(filteredFirst, filteredSecond, previous, rowBytes, outFirst,
                                 outSecond);
            return true;
        }
    }
#endif
    return unfilterRow(types[0], filteredFirst, previous, rowBytes, bytesPerPixel, outFirst) &&
           unfilterRow(types[1], filteredSecond, outFirst, rowBytes, bytesPerPixel, outSecond);
}

} // namespace tintorra
