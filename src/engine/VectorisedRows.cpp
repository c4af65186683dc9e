#include "engine/VectorisedRows.h"

#include "engine/BatchMath.h"
#include "engine/SelectionMasks.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>

namespace tintorra {

namespace {

// Pixels per stretch: the working arrays of a stretch take about 40 kB, mostly in the first-level
// cache while a stage passes over them.
constexpr std::size_t kStretch = 256;

rowKernel::SampleLayout layoutOf(const PixelManipulationOffsets& offsets)
{
    return {offsets.bytesPerPixel, offsets.redOffset, offsets.greenOffset,  offsets.blueOffset,
            offsets.alphaOffset,   offsets.hasAlpha,  offsets.premultiplied};
}

// The smallest float not below v (v finite and within float range).
float roundedUp(double v)
{
    const auto f = static_cast<float>(v);
    return static_cast<double>(f) < v ? std::nextafter(f, std::numeric_limits<float>::infinity())
                                      : f;
}

// Byte j of four neighbouring pixels: its pixel, its channel (red, green, blue, alpha) and whether
// it is the sample's high byte.
struct SampleByte {
    int pixel;
    int channel;
    int high;
};

// Every byte of four neighbouring pixels, for a layout whose three or four 16-bit samples fill
// its pixels (in any order); none for other layouts.
std::optional<std::vector<SampleByte>> bytesOfFourPixels(const rowKernel::SampleLayout& layout)
{
    const int channels = layout.hasAlpha ? 4 : 3;
    if (layout.bytesPerPixel != 2 * channels) {
        return std::nullopt;
    }
    const std::uint64_t offsets[4] = {layout.redOffset, layout.greenOffset, layout.blueOffset,
                                      layout.alphaOffset};
    std::array<int, 8> channelAt;
    channelAt.fill(-1);
    for (int c = 0; c < channels; ++c) {
        const std::uint64_t at = offsets[c];
        if (at % 2 != 0 || at >= static_cast<std::uint64_t>(layout.bytesPerPixel) ||
            channelAt[at] != -1) {
            return std::nullopt;
        }
        channelAt[at] = c;
    }
    const auto perPixel = static_cast<int>(layout.bytesPerPixel);
    std::vector<SampleByte> bytes;
    for (int j = 0; j < 4 * perPixel; ++j) {
        const int byte = j % perPixel;
        bytes.push_back({j / perPixel, channelAt[byte & ~1], byte & 1});
    }
    return bytes;
}

// Four pixels' samples from the words (r0..r3, g0..g3) and (b0..b3, a0..a3).
std::optional<rowKernel::PixelShuffles> pixelShuffles(const rowKernel::SampleLayout& layout)
{
    const auto bytes = bytesOfFourPixels(layout);
    if (!bytes) {
        return std::nullopt;
    }
    rowKernel::PixelShuffles shuffles{};
    std::fill(std::begin(shuffles.bytes), std::end(shuffles.bytes), std::uint8_t{0x80});
    for (std::size_t j = 0; j < bytes->size(); ++j) {
        const SampleByte& b = (*bytes)[j];
        const int word = 4 * (b.channel % 2) + b.pixel;
        shuffles.bytes[32 * (j / 16) + 16 * (b.channel / 2) + j % 16] =
            static_cast<std::uint8_t>(2 * word + b.high);
    }
    return shuffles;
}

// Each channel's samples of four pixels as 32-bit words, from the pixels' first 16 bytes and
// their last 16.
std::optional<rowKernel::PixelUnshuffles> pixelUnshuffles(const rowKernel::SampleLayout& layout)
{
    const auto bytes = bytesOfFourPixels(layout);
    if (!bytes) {
        return std::nullopt;
    }
    rowKernel::PixelUnshuffles unshuffles{};
    std::fill(std::begin(unshuffles.bytes), std::end(unshuffles.bytes), std::uint8_t{0x80});
    unshuffles.lastOffset = static_cast<std::int64_t>(bytes->size()) - 16;
    for (std::size_t j = 0; j < bytes->size(); ++j) {
        const SampleByte& b = (*bytes)[j];
        const bool first = j < 16;
        unshuffles.bytes[32 * b.channel + (first ? 0 : 16) + 4 * b.pixel + b.high] =
            static_cast<std::uint8_t>(first ? j
                                            : j - static_cast<std::size_t>(unshuffles.lastOffset));
    }
    return unshuffles;
}

std::uint8_t* rowOf(const PixelManipulationOffsets& offsets, std::int64_t y)
{
    return offsets.bitmapData + y * offsets.bytesPerRow;
}

} // namespace

bool VectorisedRows::available(const HueShiftRun& run)
{
    return run.vectorised && batch::vectorised() && run.source->bitsPerSample == 16 &&
           run.destination->bitsPerSample == 16 && run.wordDecode != nullptr &&
           run.wordEncode != nullptr;
}

VectorisedRows::VectorisedRows(const HueShiftRun& run, const HueShiftParameters& p,
                               const OutcomeContext& context)
    : run_(run), p_(p), arrays_(kStretch),
      shift_(p, context, run.pairedChroma, run.coverage->present())
{
    const ColorSpaceModel mode = p.colorSpaceModel;
    const MaskView mask = p.maskToShow;
    wholeRows_ = isLchColorMode(mode) && !showsGreyMask(mask) &&
                 mask != MaskView::selectionHighlight && mask != MaskView::hoverHighlight;

    const WordDecodeTable& decode = *run.wordDecode;
    read_.layout = layoutOf(*run.source);
    read_.decode = decode.data();
    const LuvHueFilter::Coefficients& filter = run.luvHueFilter.coefficients();
    read_.luvFilter = mode == ColorSpaceModel::LChuv && !filter.everything;
    std::copy(std::begin(filter.u), std::end(filter.u), read_.filterU);
    std::copy(std::begin(filter.v), std::end(filter.v), read_.filterV);
    read_.centreCos = filter.centreCos;
    read_.centreSin = filter.centreSin;
    read_.cosHalfWidth = filter.cosHalfWidth;
    read_.cosSquared = filter.cosSquared;
    const LuvHueFilter::BoxTest& box = run.luvHueFilter.boxTest();
    read_.boxTest = read_.luvFilter && box.active;
    read_.bothForms = box.bothForms;
    if (read_.boxTest) {
        // The decoding rises with the sample, so a run's ends bound w x linear over it; each
        // bound is rounded up to single precision.
        boxBounds_.resize(2 * 3 * 256);
        const double* const forms[2] = {box.w1, box.w2};
        for (int f = 0; f < 2; ++f) {
            double magnitude = 0.0;
            for (int c = 0; c < 3; ++c) {
                const double w = forms[f][c];
                magnitude += std::fabs(w);
                for (unsigned high = 0; high < 256; ++high) {
                    const auto end =
                        static_cast<std::uint16_t>(w >= 0.0 ? 256 * high + 255 : 256 * high);
                    boxBounds_[2 * (256 * c + high) + f] = roundedUp(w * decode[end]);
                }
            }
            // Two single-precision additions of values below the magnitude in size err by at
            // most 2^-23 of it: the floor grows by that.
            read_.boxFloors[f] =
                roundedUp(LuvHueFilter::kBoxFloor + std::ldexp(magnitude, -23) * 1.01);
        }
        read_.boxBounds = boxBounds_.data();
    }
    if (const auto unshuffles = pixelUnshuffles(read_.layout)) {
        unshuffles_ = *unshuffles;
        read_.unshuffles = &unshuffles_;
    }
    read_.readPixel = &VectorisedRows::readPixel;
    read_.context = this;
    if (!wholeRows_) {
        return;
    }

    write_.layout = layoutOf(*run.destination);
    write_.encoding = encodingOf(*run.wordEncode);
    if (const auto shuffles = pixelShuffles(write_.layout)) {
        shuffles_ = *shuffles;
        write_.shuffles = &shuffles_;
    }
    write_.writePixel = &VectorisedRows::writePixel;
    write_.context = this;
}

void VectorisedRows::shiftRow(std::int64_t y)
{
    const PixelManipulationOffsets& source = *run_.source;
    const PaintCoverage& coverage = *run_.coverage;
    const std::uint8_t* const from = rowOf(source, y);
    std::uint8_t* const to = rowOf(*run_.destination, y);
    write_.coverage =
        coverage.present() ? coverage.bytes.data() + y * coverage.bytesPerRow : nullptr;
    const auto wide = static_cast<std::size_t>(source.pixelsWide);
    for (std::size_t first = 0; first < wide; first += kStretch) {
        const std::size_t count = std::min(kStretch, wide - first);
        const std::size_t candidates = rowKernel::avx2::readCandidates(
            read_, from, first, count, y, arrays_.words(), arrays_.candidates());
        const std::size_t selected =
            rowKernel::avx2::selectCandidates(shift_.select(), arrays_.candidates(), candidates,
                                              arrays_.weights(), arrays_.selected());
        rowKernel::avx2::paintShifted(shift_.paint(), arrays_.selected(), selected);
        // Whatever is not written keeps the source's samples, copied while they are still in
        // the cache from the reading. A stretch whose every pixel is selected is written whole
        // where the samples fill the pixels and no coverage keeps any pixel as it was.
        const bool writtenWhole =
            selected == count && write_.shuffles != nullptr && write_.coverage == nullptr;
        if (!run_.destinationHoldsSource && !writtenWhole) {
            const auto at = static_cast<std::int64_t>(first) * source.bytesPerPixel;
            std::memcpy(to + at, from + at, count * static_cast<std::size_t>(source.bytesPerPixel));
        }
        rowKernel::avx2::writePainted(write_, arrays_.selected(), selected, to, y);
    }
}

std::size_t VectorisedRows::readRow(std::int64_t y, ColorComponents* linear, std::uint32_t* x)
{
    const PixelManipulationOffsets& source = *run_.source;
    const std::uint8_t* const from = rowOf(source, y);
    const auto wide = static_cast<std::size_t>(source.pixelsWide);
    std::size_t total = 0;
    for (std::size_t first = 0; first < wide; first += kStretch) {
        const std::size_t count = std::min(kStretch, wide - first);
        const rowKernel::Candidates& read = arrays_.candidates();
        const std::size_t candidates =
            rowKernel::avx2::readCandidates(read_, from, first, count, y, arrays_.words(), read);
        for (std::size_t j = 0; j < candidates; ++j) {
            linear[total] = {read.r[j], read.g[j], read.b[j], read.alpha[j]};
            x[total++] = read.x[j];
        }
    }
    return total;
}

rowKernel::Encoding VectorisedRows::encodingOf(const SampleEncodeTable& table)
{
    const SampleGuessCells cells = table.guessCells();
    return {table.thresholds(),
            cells.cells,
            cells.firstKey,
            cells.shift,
            &VectorisedRows::encodeSample,
            &table};
}

std::uint32_t VectorisedRows::encodeSample(const void* table, double linear)
{
    return (*static_cast<const SampleEncodeTable*>(table))(linear);
}

bool VectorisedRows::readPixel(const void* self, std::int64_t x, std::int64_t y, double* rgba)
{
    const auto& rows = *static_cast<const VectorisedRows*>(self);
    ColorComponents c;
    readLinearFloats(x, y, *rows.run_.source, c);
    rgba[0] = c.c0;
    rgba[1] = c.c1;
    rgba[2] = c.c2;
    rgba[3] = c.alpha;
    return c.alpha != 0.0 && (rows.p_.colorSpaceModel != ColorSpaceModel::LChuv ||
                              rows.run_.luvHueFilter.mayBeSelected(c.c0, c.c1, c.c2));
}

void VectorisedRows::writePixel(const void* self, std::int64_t x, std::int64_t y,
                                const double* rgba)
{
    const auto& rows = *static_cast<const VectorisedRows*>(self);
    writeLinearFloats(x, y, *rows.run_.destination, {rgba[0], rgba[1], rgba[2], rgba[3]});
}

} // namespace tintorra
