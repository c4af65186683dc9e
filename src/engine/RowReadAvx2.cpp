// Compiled for AVX2 and FMA without contraction (see src/CMakeLists.txt); called only after the
// processor has been checked.

#include "engine/Avx2Lanes.h"
#include "engine/RowKernel.h"

#include <cstring>

namespace tintorra::rowKernel::avx2 {

namespace {

std::uint32_t loadWord(const std::uint8_t* address)
{
    std::uint16_t value;
    std::memcpy(&value, address, sizeof value);
    return value;
}

// The pixels of the stretch that the box test cannot rule out, as columns from `first`; returns
// their count. A box is a run of 256 samples per channel, named by the samples' high byte; the
// bounds of both forms are added in one pair of single-precision lanes.
std::size_t openPixels(const ReadConstants& k, const std::uint8_t* pixels, std::size_t wide,
                       std::uint32_t* open)
{
    const SampleLayout& layout = k.layout;
    const float* const bounds = k.boxBounds;
    const __m128 floor = _mm_setr_ps(-k.boxFloors[0], -k.boxFloors[1], 0.0f, 0.0f);
    // The high byte of a little-endian 16-bit sample.
    const std::uint64_t red = layout.redOffset + 1;
    const std::uint64_t green = layout.greenOffset + 1;
    const std::uint64_t blue = layout.blueOffset + 1;
    // The stored samples of a premultiplied pixel that is not opaque are not its colour's: such
    // pixels always go the exact way.
    const bool premultiplied = layout.hasAlpha && layout.premultiplied;
    const auto pairOf = [&](unsigned channel, unsigned high) {
        return _mm_castpd_ps(
            _mm_load_sd(reinterpret_cast<const double*>(bounds + 2 * (256 * channel + high))));
    };
    std::size_t count = 0;
    const std::uint8_t* pixel = pixels;
    for (std::size_t x = 0; x < wide; ++x, pixel += layout.bytesPerPixel) {
        const __m128 sum = _mm_add_ps(_mm_add_ps(pairOf(0, pixel[red]), pairOf(1, pixel[green])),
                                      pairOf(2, pixel[blue]));
        const int below = _mm_movemask_ps(_mm_cmplt_ps(sum, floor)) & 3;
        // Off when both forms are below their floors, or either.
        bool off = k.bothForms ? below == 3 : below != 0;
        if (premultiplied) {
            off = off & (loadWord(pixel + layout.alphaOffset) == 65535);
        }
        open[count] = static_cast<std::uint32_t>(x);
        count += off ? 0 : 1;
    }
    return count;
}

// The samples of the four neighbouring pixels from `pixels`, at words[i..i + 3].
void unpackFour(const PixelUnshuffles& unshuffles, bool hasAlpha, const std::uint8_t* pixels,
                const RowWords& words, std::size_t i)
{
    const __m128i first = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pixels));
    const __m128i last =
        _mm_loadu_si128(reinterpret_cast<const __m128i*>(pixels + unshuffles.lastOffset));
    const auto channel = [&](int c, std::uint32_t* out) {
        const auto mask = [&](int half) {
            return _mm_loadu_si128(
                reinterpret_cast<const __m128i*>(unshuffles.bytes + 32 * c + 16 * half));
        };
        _mm_storeu_si128(
            reinterpret_cast<__m128i*>(out + i),
            _mm_or_si128(_mm_shuffle_epi8(first, mask(0)), _mm_shuffle_epi8(last, mask(1))));
    };
    channel(0, words.red);
    channel(1, words.green);
    channel(2, words.blue);
    if (hasAlpha) {
        channel(3, words.alpha);
    } else {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(words.alpha + i), _mm_set1_epi32(65535));
    }
}

// The samples of the open pixels, one array per channel, so that four load at once whatever the
// layout; the lanes past the last read sample 0.
void unpackOpenPixels(const ReadConstants& k, const std::uint8_t* pixels, const std::uint32_t* open,
                      std::size_t count, const RowWords& words)
{
    const SampleLayout& layout = k.layout;
    for (std::size_t i = 0; i < count;) {
        const std::uint8_t* const pixel = pixels + open[i] * layout.bytesPerPixel;
        if (k.unshuffles != nullptr && i + kLanes <= count && open[i + 3] - open[i] == 3) {
            unpackFour(*k.unshuffles, layout.hasAlpha, pixel, words, i);
            i += kLanes;
            continue;
        }
        words.red[i] = loadWord(pixel + layout.redOffset);
        words.green[i] = loadWord(pixel + layout.greenOffset);
        words.blue[i] = loadWord(pixel + layout.blueOffset);
        words.alpha[i] = layout.hasAlpha ? loadWord(pixel + layout.alphaOffset) : 65535;
        ++i;
    }
    for (std::size_t i = count; i < count + kLanes; ++i) {
        words.open[i] = 0;
        words.red[i] = 0;
        words.green[i] = 0;
        words.blue[i] = 0;
        words.alpha[i] = 65535;
    }
}

__m128i loadLanes(const std::uint32_t* words)
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(words));
}

// LuvHueFilter::mayBeSelected.
LaneMask mayBeSelected(const ReadConstants& k, Lanes r, Lanes g, Lanes b)
{
    const Lanes u = add(add(mul(splat(k.filterU[0]), r), mul(splat(k.filterU[1]), g)),
                        mul(splat(k.filterU[2]), b));
    const Lanes v = add(add(mul(splat(k.filterV[0]), r), mul(splat(k.filterV[1]), g)),
                        mul(splat(k.filterV[2]), b));
    const Lanes norm = add(mul(u, u), mul(v, v));
    const LaneMask nearGrey = lt(norm, splat(1e-24));
    const Lanes along = add(mul(u, splat(k.centreCos)), mul(v, splat(k.centreSin)));
    const LaneMask ahead = ge(along, _mm256_setzero_pd());
    const Lanes alongSquared = mul(along, along);
    const Lanes bound = mul(splat(k.cosSquared), norm);
    const LaneMask onArc = k.cosHalfWidth >= 0.0 ? both(ahead, ge(alongSquared, bound))
                                                 : either(ahead, le(alongSquared, bound));
    return either(nearGrey, onArc);
}

void append(const Candidates& out, std::size_t at, std::uint32_t x, const double* rgba)
{
    out.x[at] = x;
    out.r[at] = rgba[0];
    out.g[at] = rgba[1];
    out.b[at] = rgba[2];
    out.alpha[at] = rgba[3];
}

// The candidates among the four open pixels from open[i], appended at out[count...].
std::size_t readGroup(const ReadConstants& k, const RowWords& words, std::size_t i,
                      std::size_t openCount, std::size_t first, std::int64_t y,
                      const Candidates& out, std::size_t count)
{
    const SampleLayout& layout = k.layout;
    const Lanes zero = _mm256_setzero_pd();
    const Lanes opaque = splat(65535.0);
    const LaneMask inRun = lanesBelow(openCount - i);
    const Lanes r = valuesAt(k.decode, words.red + i);
    const Lanes g = valuesAt(k.decode, words.green + i);
    const Lanes b = valuesAt(k.decode, words.blue + i);
    const Lanes stored = _mm256_cvtepi32_pd(loadLanes(words.alpha + i));
    // Without alpha every sample is opaque and 65535 / 65535 is 1: no division.
    const Lanes alpha = layout.hasAlpha ? div(stored, opaque) : splat(1.0);
    // A premultiplied sample that is not opaque is divided before the power: no lookup.
    const LaneMask byPixel =
        layout.hasAlpha && layout.premultiplied ? both(ne(stored, opaque), inRun) : noLanes();
    LaneMask candidate = both(ne(alpha, zero), inRun);
    if (k.luvFilter) {
        candidate = both(candidate, mayBeSelected(k, r, g, b));
    }
    const __m128i xs =
        _mm_add_epi32(_mm_set1_epi32(static_cast<int>(first)), loadLanes(words.open + i));
    const int pixelLanes = bits(byPixel);
    const int candidateLanes = bits(candidate);
    if (pixelLanes == 0) {
        if (candidateLanes != 0) {
            packStore(out.x + count, xs, candidateLanes);
            packStore(out.r + count, r, candidateLanes);
            packStore(out.g + count, g, candidateLanes);
            packStore(out.b + count, b, candidateLanes);
            packStore(out.alpha + count, alpha, candidateLanes);
            count += static_cast<std::size_t>(__builtin_popcount(candidateLanes));
        }
        return count;
    }
    double lanes[4][kLanes];
    _mm256_storeu_pd(lanes[0], r);
    _mm256_storeu_pd(lanes[1], g);
    _mm256_storeu_pd(lanes[2], b);
    _mm256_storeu_pd(lanes[3], alpha);
    for (std::size_t lane = 0; lane < kLanes && i + lane < openCount; ++lane) {
        const auto x = static_cast<std::uint32_t>(first + words.open[i + lane]);
        double rgba[4];
        if ((pixelLanes >> lane) & 1) {
            if (k.readPixel(k.context, x, y, rgba)) {
                append(out, count++, x, rgba);
            }
        } else if ((candidateLanes >> lane) & 1) {
            const double fromLanes[4] = {lanes[0][lane], lanes[1][lane], lanes[2][lane],
                                         lanes[3][lane]};
            append(out, count++, x, fromLanes);
        }
    }
    return count;
}

} // namespace

std::size_t readCandidates(const ReadConstants& k, const std::uint8_t* row, std::size_t first,
                           std::size_t wide, std::int64_t y, const RowWords& words,
                           const Candidates& out)
{
    const SampleLayout& layout = k.layout;
    const std::uint8_t* const pixels =
        row + static_cast<std::int64_t>(first) * layout.bytesPerPixel;
    std::size_t openCount = wide;
    if (k.boxTest) {
        openCount = openPixels(k, pixels, wide, words.open);
    } else {
        for (std::size_t x = 0; x < wide; ++x) {
            words.open[x] = static_cast<std::uint32_t>(x);
        }
    }
    unpackOpenPixels(k, pixels, words.open, openCount, words);
    std::size_t count = 0;
    for (std::size_t i = 0; i < openCount; i += kLanes) {
        count = readGroup(k, words, i, openCount, first, y, out, count);
    }
    // Harmless values behind the last candidate for the stages that take four at a time.
    for (std::size_t j = count; j < count + kLanes; ++j) {
        const double grey[4] = {0.5, 0.5, 0.5, 1.0};
        append(out, j, 0, grey);
    }
    return count;
}

} // namespace tintorra::rowKernel::avx2
