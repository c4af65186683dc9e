#include "engine/VectorisedRows.h"

#include "colour/ColorBlending.h"
#include "engine/BatchMath.h"
#include "engine/ChromaTableCache.h"
#include "engine/SelectionMasks.h"
#include "engine/SelectionWeights.h"
#include "engine/ShiftColor.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tintorra {

namespace {

// Pixels per stretch: the working arrays of a stretch take about 40 kB, mostly in the first-level
// cache while a stage passes over them.
constexpr std::size_t kStretch = 256;
// Room behind every array for the last group of four.
constexpr std::size_t kSlack = 4;
constexpr std::size_t kArrayLength = kStretch + kSlack;

row_kernel::SampleLayout layoutOf(const PixelManipulationOffsets& offsets)
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

std::uint8_t* rowOf(const PixelManipulationOffsets& offsets, std::int64_t y)
{
    return offsets.bitmapData + y * offsets.bytesPerRow;
}

} // namespace

bool VectorisedRows::available(const HueShiftRun& run)
{
    return batch::vectorised() && run.source->bitsPerSample == 16 &&
           run.destination->bitsPerSample == 16 && run.wordDecode != nullptr &&
           run.wordEncode != nullptr;
}

VectorisedRows::VectorisedRows(const HueShiftRun& run, const HueShiftParameters& p,
                               const OutcomeContext& context)
    : run_(run), p_(p)
{
    const std::int64_t mode = p.colorSpaceModel;
    const std::int32_t mask = p.maskToShow;
    wholeRows_ = isLchColorMode(mode) && !showsGreyMask(mask) && mask != kShowSelectionHighlight &&
                 mask != kShowHoverHighlight;

    words_.assign(5 * kArrayLength, 0);
    rowWords_ = {words_.data(), words_.data() + kArrayLength, words_.data() + 2 * kArrayLength,
                 words_.data() + 3 * kArrayLength, words_.data() + 4 * kArrayLength};
    indices_.assign(7 * kArrayLength, 0);
    constexpr std::size_t kDoubleArrays = 4 + 1 + 15;
    doubles_.assign(kDoubleArrays * kArrayLength, 0.0);
    double* next = doubles_.data();
    const auto take = [&] {
        double* array = next;
        next += kArrayLength;
        return array;
    };
    candidates_ = {indices_.data(), take(), take(), take(), take()};
    weights_ = take();
    std::uint32_t* const selectedIndices = indices_.data() + kArrayLength;
    selected_.candidate = selectedIndices;
    selected_.x = selectedIndices + kArrayLength;
    for (std::size_t c = 0; c < 4; ++c) {
        selected_.samples[c] = selectedIndices + (2 + c) * kArrayLength;
    }
    selected_.weight = take();
    selected_.zone = take();
    selected_.saturation = take();
    selected_.L = take();
    selected_.C = take();
    selected_.h = take();
    selected_.alpha = take();
    selected_.halfDegrees = take();
    selected_.r = take();
    selected_.g = take();
    selected_.b = take();
    selected_.paintedR = take();
    selected_.paintedG = take();
    selected_.paintedB = take();
    selected_.paintedAlpha = take();

    const WordDecodeTable& decode = *run.wordDecode;
    read_.layout = layoutOf(*run.source);
    read_.decode = decode.data();
    const LuvHueFilter::Coefficients& filter = run.luvHueFilter.coefficients();
    read_.luvFilter = mode == kColorModeLChuv && !filter.everything;
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
    read_.readPixel = &VectorisedRows::readPixel;
    read_.context = this;
    if (!wholeRows_) {
        return;
    }

    const KVColorGamut* const gamut = context.gamut;
    select_.lab = mode == kColorModeLChab;
    select_.keepUnshifted = run.coverage->present();
    std::copy(context.M.begin(), context.M.end(), select_.M);
    select_.hueLowerFalloff = p.hueLowerFalloff;
    select_.hueLower = p.hueLower;
    select_.hueUpper = p.hueUpper;
    select_.hueUpperFalloff = p.hueUpperFalloff;
    select_.lightLowerFalloff = p.lightLowerFalloff;
    select_.lightLower = p.lightLower;
    select_.lightUpper = p.lightUpper;
    select_.lightUpperFalloff = p.lightUpperFalloff;
    select_.satLowerFalloff = p.satLowerFalloff;
    select_.satLower = p.satLower;
    select_.satUpper = p.satUpper;
    select_.satUpperFalloff = p.satUpperFalloff;
    select_.maxChromas = gamut != nullptr ? &gamut->tableMaxChroma(0).c1 : nullptr;
    select_.bringHueIntoChain = &VectorisedRows::bringHueIntoChain;
    select_.context = this;

    paint_.lab = select_.lab;
    std::copy(context.MI.begin(), context.MI.end(), paint_.MI);
    paint_.imageGamma = p.imageGamma;
    paint_.targetHue = p.targetHue;
    paint_.targetSat = p.targetSat;
    paint_.saturationGain = p.saturationGain;
    paint_.targetBri = p.targetBri;
    paint_.curveGain = p.curveGain;
    std::copy(p.targetBriTenVals.begin(), p.targetBriTenVals.end(), paint_.curve);
    chromaTable_ = pairedChromaTable(p.gamut);
    paint_.chromas = {chromaTable_ != nullptr ? chromaTable_->data() : nullptr};
    select_.chromaPairs = paint_.chromas.pairs;
    paint_.blend = &VectorisedRows::blend;
    paint_.context = this;

    write_.layout = layoutOf(*run.destination);
    write_.imageGamma = run.destination->imageGamma;
    write_.thresholds = run.wordEncode->thresholds();
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
        const std::size_t candidates =
            row_kernel::avx2::readCandidates(read_, from, first, count, y, rowWords_, candidates_);
        const std::size_t selected = row_kernel::avx2::selectCandidates(
            select_, candidates_, candidates, weights_, selected_);
        row_kernel::avx2::paintShifted(paint_, selected_, selected);
        row_kernel::avx2::writePainted(write_, selected_, selected, to, y);
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
        const std::size_t candidates =
            row_kernel::avx2::readCandidates(read_, from, first, count, y, rowWords_, candidates_);
        for (std::size_t j = 0; j < candidates; ++j) {
            linear[total] = {candidates_.r[j], candidates_.g[j], candidates_.b[j],
                             candidates_.alpha[j]};
            x[total++] = candidates_.x[j];
        }
    }
    return total;
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
    return c.alpha != 0.0 && (rows.p_.colorSpaceModel != kColorModeLChuv ||
                              rows.run_.luvHueFilter.mayBeSelected(c.c0, c.c1, c.c2));
}

double VectorisedRows::bringHueIntoChain(const void* self, double hue, bool raise)
{
    const auto& rows = *static_cast<const VectorisedRows*>(self);
    return selection_detail::bringHueIntoChainSlowly(hue, rows.p_, kTwoPi, raise);
}

void VectorisedRows::blend(const void* self, const double* from, int zone, double weight,
                           double* shifted)
{
    const HueShiftParameters& p = static_cast<const VectorisedRows*>(self)->p_;
    const double newHue = shifted[2];
    const ColorComponents start{
        from[0], from[1],
        shift_detail::blendStartHue(from[2], newHue, static_cast<SelectionZone>(zone), p), from[3]};
    const ColorComponents result = blendColorsLch(
        shift_detail::blendMode(p), start, {shifted[0], shifted[1], newHue, shifted[3]}, weight);
    shifted[0] = result.c0;
    shifted[1] = result.c1;
    shifted[2] = result.c2;
    shifted[3] = result.alpha;
}

void VectorisedRows::writePixel(const void* self, std::int64_t x, std::int64_t y,
                                const double* rgba)
{
    const auto& rows = *static_cast<const VectorisedRows*>(self);
    writeLinearFloats(x, y, *rows.run_.destination, {rgba[0], rgba[1], rgba[2], rgba[3]});
}

} // namespace tintorra
