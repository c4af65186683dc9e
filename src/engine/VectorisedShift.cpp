#include "engine/VectorisedShift.h"

#include "colour/ColorBlending.h"
#include "colour/KVColorGamut.h"
#include "engine/SelectionWeights.h"
#include "engine/ShiftColor.h"

#include <algorithm>

namespace tintorra {

namespace {

// Room behind every array for the last group of four.
constexpr std::size_t kSlack = 4;

} // namespace

VectorisedShift::VectorisedShift(const HueShiftParameters& p, const OutcomeContext& context,
                                 std::shared_ptr<const std::vector<double>> pairedChroma,
                                 bool keepUnshifted)
{
    const KVColorGamut* const gamut = context.gamut;
    select_.lab = p.colorSpaceModel == ColorSpaceModel::LChab;
    select_.keepUnshifted = keepUnshifted;
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
    select_.bringHueIntoChain = &VectorisedShift::bringHueIntoChain;
    select_.context = &p;

    paint_.lab = select_.lab;
    std::copy(context.MI.begin(), context.MI.end(), paint_.MI);
    paint_.imageGamma = p.imageGamma;
    paint_.targetHue = p.targetHue;
    paint_.targetSat = p.targetSat;
    paint_.saturationGain = p.saturationGain;
    paint_.targetBri = p.targetBri;
    paint_.curveGain = p.curveGain;
    std::copy(p.targetBriTenVals.begin(), p.targetBriTenVals.end(), paint_.curve);
    paint_.keepsLightness = keepsLightness(p);
    chromaTable_ = std::move(pairedChroma);
    paint_.chromas = {chromaTable_ != nullptr ? chromaTable_->data() : nullptr};
    select_.chromaPairs = paint_.chromas.pairs;
    paint_.blend = &VectorisedShift::blend;
    paint_.context = &p;
}

double VectorisedShift::bringHueIntoChain(const void* record, double hue, bool raise)
{
    const auto& p = *static_cast<const HueShiftParameters*>(record);
    return selectionDetail::bringHueIntoChainSlowly(hue, p, kTwoPi, raise);
}

void VectorisedShift::blend(const void* record, const double* from, int zone, double weight,
                            double* shifted)
{
    const auto& p = *static_cast<const HueShiftParameters*>(record);
    const double newHue = shifted[2];
    const ColorComponents start{
        from[0], from[1],
        shiftDetail::blendStartHue(from[2], newHue, static_cast<SelectionZone>(zone), p), from[3]};
    const ColorComponents result = blendColorsLch(
        shiftDetail::blendMode(p), start, {shifted[0], shifted[1], newHue, shifted[3]}, weight);
    shifted[0] = result.c0;
    shifted[1] = result.c1;
    shifted[2] = result.c2;
    shifted[3] = result.alpha;
}

StretchArrays::StretchArrays(std::size_t stretch)
{
    const std::size_t length = stretch + kSlack;
    wordStore_.assign(5 * length, 0);
    std::uint32_t* const w = wordStore_.data();
    words_ = {w, w + length, w + 2 * length, w + 3 * length, w + 4 * length};

    indexStore_.assign(7 * length, 0);
    std::uint32_t* const indices = indexStore_.data();
    constexpr std::size_t kDoubleArrays = 4 + 1 + 15;
    doubleStore_.assign(kDoubleArrays * length, 0.0);
    double* next = doubleStore_.data();
    const auto take = [&] {
        double* array = next;
        next += length;
        return array;
    };
    candidates_ = {indices, take(), take(), take(), take()};
    weights_ = take();
    selected_.candidate = indices + length;
    selected_.x = indices + 2 * length;
    for (std::size_t c = 0; c < 4; ++c) {
        selected_.samples[c] = indices + (3 + c) * length;
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
}

} // namespace tintorra
