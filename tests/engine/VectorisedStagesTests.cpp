#include "HueShiftTestSupport.h"
#include "VectorisedRecords.h"
#include "colour/ColorMatrices.h"
#include "engine/BatchMath.h"
#include "engine/HueShiftWorkers.h"
#include "engine/PairedChromaTable.h"
#include "engine/SelectionWeights.h"
#include "engine/ShiftBatch.h"
#include "engine/VectorisedRows.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <memory>
#include <random>
#include <vector>

namespace tintorra {
namespace {

// The row worker's four-lane stages one by one against the scalar functions they stand for,
// value by value and bit for bit, so that a difference in the last bit of any double shows
// (whole pictures show it only where it crosses a rounding boundary of a sample).

std::uint64_t bitsOf(double v)
{
    return std::bit_cast<std::uint64_t>(v);
}

// A run set up as the engine's entry sets it up, for a 16-bit source.
struct PreparedRun {
    KVBitmapPtr source;
    PixelManipulationOffsets offsets;
    PaintCoverage coverage;
    HueShiftParameters p;
    HueShiftRun run;
    OutcomeContext context;

    PreparedRun(const KVBitmapPtr& bitmap, HueShiftParameters record)
        : source(bitmap), p(std::move(record))
    {
        initializePixelManipulationOffsets(offsets, source, p.imageGamma);
        normalizeHueShiftParameters(p);
        run.source = &offsets;
        run.destination = &offsets;
        run.coverage = &coverage;
        if (p.gamut != nullptr) {
            p.gamut->copy_RGB_to_XYZ_matrix(run.M);
            p.gamut->copy_XYZ_to_RGB_matrix(run.MI);
        } else {
            matrixFromColorSpace(run.M, &source->colorSpace());
            inverseMatrixFromColorSpace(run.MI, &source->colorSpace());
        }
        run.selectableHues = selectableHueArc(p);
        run.luvHueFilter = LuvHueFilter(run.selectableHues, run.M);
        run.wordDecode = std::make_shared<const WordDecodeTable>(offsets.imageGamma);
        run.wordEncode = std::make_shared<const SampleEncodeTable>(offsets.imageGamma, 65535u);
        if (p.gamut != nullptr) {
            run.pairedChroma = makePairedChromaTable(*p.gamut);
        }
        context = {&p, p.gamut.get(), run.M, run.MI, PartialHighlight::reduceChroma};
    }
};

std::unique_ptr<PreparedRun> prepare(const KVBitmapPtr& bitmap, const HueShiftParameters& p)
{
    return std::make_unique<PreparedRun>(bitmap, p);
}

// Linear colours over the whole cube and its edges: black, greys, white, the primaries, values
// a hair inside 0 and 1, with opaque, half-transparent and nearly transparent alphas.
std::vector<ColorComponents> linearColours()
{
    std::vector<ColorComponents> colours = {
        {0.0, 0.0, 0.0, 1.0},   {0.5, 0.5, 0.5, 1.0},      {1.0, 1.0, 1.0, 1.0},
        {1.0, 0.0, 0.0, 1.0},   {0.0, 1.0, 0.0, 1.0},      {0.0, 0.0, 1.0, 1.0},
        {1e-9, 0.0, 0.0, 1.0},  {1.0, 1.0, 0.999, 1.0},    {0.2, 0.2, 0.2, 0.5},
        {0.3, 0.1, 0.05, 1e-6}, {0.004, 0.003, 0.001, 1.0}};
    std::mt19937_64 random(7);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    const double alphas[] = {1.0, 1.0, 1.0, 0.5, 0.25};
    for (int i = 0; i < 3000; ++i) {
        const double a = alphas[i % 5];
        // Every third colour dark, where the cube roots and powers take their other branch.
        const double scale = i % 3 == 0 ? 0.02 : 1.0;
        colours.push_back({scale * unit(random), scale * unit(random), scale * unit(random), a});
    }
    return colours;
}

// The records the whole chain of stages serves: the LCh modes showing the shifted image.
std::vector<test::RecordCase> shiftCases()
{
    std::vector<test::RecordCase> cases;
    for (const test::RecordCase& c : test::kRecordCases) {
        HueShiftParameters p = test::selectEverything(c.model);
        c.adjust(p);
        if (isLchColorMode(c.model) && p.maskToShow == MaskView::shiftedImage) {
            cases.push_back(c);
        }
    }
    return cases;
}

class VectorisedStages : public testing::TestWithParam<test::RecordCase> {
protected:
    void SetUp() override
    {
        if (!batch::vectorised()) {
            GTEST_SKIP() << "no AVX2: the scalar steps are the only ones";
        }
    }
};

TEST_P(VectorisedStages, SelectAndPaintAsTheScalarFunctions)
{
    HueShiftParameters record = test::selectEverything(GetParam().model);
    GetParam().adjust(record);
    const auto prepared = prepare(test::makeRgbBitmap(8, 1, 16, false), record);
    const HueShiftParameters& p = prepared->p;
    const VectorisedRows rows(prepared->run, p, prepared->context);

    const std::vector<ColorComponents> colours = linearColours();
    const std::size_t n = colours.size();
    const StretchArrays arrays(n);
    for (std::size_t j = 0; j < n; ++j) {
        arrays.candidates().x[j] = static_cast<std::uint32_t>(j);
        arrays.candidates().r[j] = colours[j].c0;
        arrays.candidates().g[j] = colours[j].c1;
        arrays.candidates().b[j] = colours[j].c2;
        arrays.candidates().alpha[j] = colours[j].alpha;
    }
    rowKernel::SelectConstants constants = rows.selectConstants();
    constants.keepUnshifted = true;
    const std::size_t selected = rowKernel::avx2::selectCandidates(
        constants, arrays.candidates(), n, arrays.weights(), arrays.selected());
    rowKernel::avx2::paintShifted(rows.paintConstants(), arrays.selected(), selected);

    ShiftBatch batch;
    batch.reserve(n);
    lchOfLinearColors(colours.data(), n, p.colorSpaceModel, prepared->run.M, batch);
    std::size_t expected = 0;
    for (std::size_t j = 0; j < n; ++j) {
        const Selection selection = lchSelection(batch.lch[j], p, prepared->context.gamut);
        ASSERT_EQ(bitsOf(arrays.weights()[j]), bitsOf(selection.weight)) << j;
        if (selection.weight > 0.0) {
            ASSERT_LT(expected, selected);
            EXPECT_EQ(arrays.selected().candidate[expected], j);
            EXPECT_EQ(bitsOf(arrays.selected().L[expected]), bitsOf(batch.lch[j].c0)) << j;
            EXPECT_EQ(bitsOf(arrays.selected().C[expected]), bitsOf(batch.lch[j].c1)) << j;
            EXPECT_EQ(bitsOf(arrays.selected().h[expected]), bitsOf(batch.lch[j].c2)) << j;
            EXPECT_EQ(arrays.selected().zone[expected], static_cast<double>(selection.hueZone));
            EXPECT_EQ(bitsOf(arrays.selected().saturation[expected]), bitsOf(selection.saturation));
            EXPECT_EQ(bitsOf(arrays.selected().r[expected]), bitsOf(colours[j].c0));
            EXPECT_EQ(bitsOf(arrays.selected().alpha[expected]), bitsOf(colours[j].alpha));
            batch.selected[expected] = static_cast<std::uint32_t>(j);
            batch.selection[expected] = selection;
            ++expected;
        }
    }
    ASSERT_EQ(selected, expected);
    // Something to compare.
    EXPECT_GT(selected, n / 20);

    paintSelectedLch(batch, selected, prepared->context);
    for (std::size_t k = 0; k < selected; ++k) {
        const ColorComponents& rgb = batch.rgb[k];
        EXPECT_EQ(bitsOf(arrays.selected().paintedR[k]), bitsOf(rgb.c0)) << k;
        EXPECT_EQ(bitsOf(arrays.selected().paintedG[k]), bitsOf(rgb.c1)) << k;
        EXPECT_EQ(bitsOf(arrays.selected().paintedB[k]), bitsOf(rgb.c2)) << k;
        EXPECT_EQ(bitsOf(arrays.selected().paintedAlpha[k]), bitsOf(rgb.alpha)) << k;
    }
}

INSTANTIATE_TEST_SUITE_P(Records, VectorisedStages, testing::ValuesIn(shiftCases()),
                         test::recordCaseName);

// A 16-bit picture whose colours sweep every hue at many saturations and lightnesses, with
// noise, greys and, where there is alpha, partial and full transparency.
KVBitmapPtr sweepPicture(bool hasAlpha, bool premultiplied)
{
    constexpr std::int64_t kWide = 523;
    constexpr std::int64_t kHigh = 9;
    const KVBitmapPtr bitmap = test::makeRgbBitmap(kWide, kHigh, 16, hasAlpha, premultiplied);
    std::uint32_t lcg = 99;
    for (std::int64_t y = 0; y < kHigh; ++y) {
        for (std::int64_t x = 0; x < kWide; ++x) {
            lcg = lcg * 1664525u + 1013904223u;
            const double noise = ((lcg >> 8) % 2001) / 1e6;
            const ColorComponents c = hsbToRgb(
                {x / double(kWide), y == 0 ? 0.0 : 0.02 + 0.12 * y, 0.1 + 0.8 * noise * 400, 1.0});
            const double a = hasAlpha && x % 5 == 2 ? 0.4 : (hasAlpha && x % 11 == 7 ? 0.0 : 1.0);
            const auto word = [&](double v) {
                const double stored = premultiplied ? v * a : v;
                return static_cast<std::uint16_t>(std::min(stored, 1.0) * 65535.0 + 0.5);
            };
            test::setWords(bitmap, x, y,
                           {word(c.c0), word(c.c1), word(c.c2),
                            static_cast<std::uint16_t>(a * 65535.0 + 0.5)});
        }
    }
    return bitmap;
}

// Hue ranges of every kind: narrow, across 0, wider than half a turn, a single hue, the whole
// circle.
const double kRanges[][4] = {
    {0.10, 0.12, 0.15, 0.2}, {0.94, 0.97, 0.03, 0.06}, {0.3, 0.3, 0.7, 0.7},
    {0.5, 0.55, 0.56, 0.9},  {0.1, 0.2, 0.9, 0.95},    {0.62, 0.625, 0.625, 0.63},
    {0.0, 0.0, 1.0, 1.0},
};

TEST(VectorisedReading, FindsTheScalarCandidatesWithTheirColours)
{
    if (!batch::vectorised()) {
        GTEST_SKIP() << "no AVX2: the scalar steps are the only ones";
    }
    for (const ColorSpaceModel model :
         {ColorSpaceModel::LChuv, ColorSpaceModel::LChab, ColorSpaceModel::HSB}) {
        for (const auto& range : kRanges) {
            for (const bool premultiplied : {false, true}) {
                HueShiftParameters record = test::selectEverything(model);
                record.hueLowerFalloff = range[0];
                record.hueLower = range[1];
                record.hueUpper = range[2];
                record.hueUpperFalloff = range[3];
                const auto prepared = prepare(sweepPicture(true, premultiplied), record);
                VectorisedRows rows(prepared->run, prepared->p, prepared->context);
                const PixelManipulationOffsets& offsets = prepared->offsets;
                std::vector<ColorComponents> linear(offsets.pixelsWide);
                std::vector<std::uint32_t> x(offsets.pixelsWide);
                std::size_t total = 0;
                for (std::int64_t y = 0; y < offsets.pixelsHigh; ++y) {
                    const std::size_t count = rows.readRow(y, linear.data(), x.data());
                    total += count;
                    std::size_t j = 0;
                    for (std::int64_t column = 0; column < offsets.pixelsWide; ++column) {
                        ColorComponents c;
                        readLinearFloats(column, y, offsets, c);
                        const bool candidate =
                            c.alpha != 0.0 &&
                            (model != ColorSpaceModel::LChuv ||
                             prepared->run.luvHueFilter.mayBeSelected(c.c0, c.c1, c.c2));
                        if (!candidate) {
                            continue;
                        }
                        ASSERT_LT(j, count) << column;
                        ASSERT_EQ(x[j], column);
                        EXPECT_EQ(bitsOf(linear[j].c0), bitsOf(c.c0));
                        EXPECT_EQ(bitsOf(linear[j].c1), bitsOf(c.c1));
                        EXPECT_EQ(bitsOf(linear[j].c2), bitsOf(c.c2));
                        EXPECT_EQ(bitsOf(linear[j].alpha), bitsOf(c.alpha));
                        ++j;
                    }
                    ASSERT_EQ(j, count)
                        << colorSpaceModelNumber(model) << " " << range[0] << " " << y;
                }
                EXPECT_GT(total, 0u);
            }
        }
    }
}

// Every sample's smallest value, the doubles on either side of it, values between, and what
// lies outside 0..1, against the encoding table.
TEST(VectorisedEncoding, StoresTheTablesSamples)
{
    if (!batch::vectorised()) {
        GTEST_SKIP() << "no AVX2: the scalar steps are the only ones";
    }
    for (const double gamma : {1.0 / 2.2, 1.0, 1.0 / 3.0, 0.8, 2.2, 5.0, 0.02}) {
        const auto table = std::make_shared<const SampleEncodeTable>(gamma, 65535u);
        const double* thresholds = table->thresholds();
        std::vector<double> values = {0.0,
                                      -0.0,
                                      -1.0,
                                      std::numeric_limits<double>::quiet_NaN(),
                                      1.0,
                                      1.5,
                                      std::numeric_limits<double>::infinity(),
                                      std::numeric_limits<double>::denorm_min(),
                                      0.5 * thresholds[1],
                                      std::nextafter(1.0, 0.0)};
        for (unsigned k = 1; k <= 65535; ++k) {
            values.push_back(thresholds[k]);
            values.push_back(std::nextafter(thresholds[k], 0.0));
            values.push_back(std::nextafter(thresholds[k], 2.0));
            values.push_back(0.5 * (thresholds[k] + thresholds[k + 1 <= 65535 ? k + 1 : k]));
        }
        std::vector<std::uint32_t> samples(values.size());
        rowKernel::avx2::encodeSamples(VectorisedRows::encodingOf(*table), values.data(),
                                       values.size(), samples.data());
        for (std::size_t i = 0; i < values.size(); ++i) {
            ASSERT_EQ(samples[i], (*table)(values[i])) << gamma << " " << values[i];
        }
    }
}

// Hues all round and beyond, lightnesses 0..100 and beyond, and the values in between the
// table's entries, against the gamut's own lookups.
TEST(VectorisedGamutLookups, GiveTheGamutsChromas)
{
    if (!batch::vectorised()) {
        GTEST_SKIP() << "no AVX2: the scalar steps are the only ones";
    }
    const double kNaN = std::numeric_limits<double>::quiet_NaN();
    const double kInfinity = std::numeric_limits<double>::infinity();
    for (const ColorSpaceModel model : {ColorSpaceModel::LChuv, ColorSpaceModel::LChab}) {
        const KVColorGamutPtr gamut = test::sRGBGamut(model);
        const auto paired = makePairedChromaTable(*gamut);
        std::vector<double> hues = {0.0,
                                    -0.0,
                                    kPi,
                                    -kPi,
                                    kTwoPi,
                                    7.0 * kPi,
                                    -100.0,
                                    1e9,
                                    kNaN,
                                    kInfinity,
                                    radiansFromDegrees(359.9),
                                    radiansFromDegrees(-0.25),
                                    radiansFromDegrees(359.75),
                                    radiansFromDegrees(0.5)};
        std::vector<double> lightnesses = {0.0,   0.25, 0.5,  50.0,  99.9, 99.75,     100.0,
                                           100.2, -0.3, -7.0, 250.0, kNaN, kInfinity, -kInfinity};
        std::mt19937_64 random(3);
        std::uniform_real_distribution<double> turn(-kTwoPi, 2.0 * kTwoPi);
        std::uniform_real_distribution<double> light(-2.0, 102.0);
        for (int i = 0; i < 4000; ++i) {
            hues.push_back(turn(random));
            lightnesses.push_back(light(random));
        }
        // Hues next to 0, where degrees round towards a zero of either sign, and next to the
        // ends of the four-lane wrapping's shortcut.
        const double kDenormal = std::numeric_limits<double>::denorm_min();
        for (const double hue : {-kDenormal, kDenormal, -1e-320, -100.0 * kDenormal, -1e-300,
                                 -1e-20, radiansFromDegrees(269.9), radiansFromDegrees(-269.9),
                                 radiansFromDegrees(270.0), radiansFromDegrees(-270.1)}) {
            hues.push_back(hue);
            lightnesses.push_back(50.0);
        }
        // Every hue with every lightness of the short lists, then the random pairs.
        std::vector<double> h;
        std::vector<double> l;
        for (std::size_t i = 0; i < 14; ++i) {
            for (std::size_t j = 0; j < 14; ++j) {
                h.push_back(hues[i]);
                l.push_back(lightnesses[j]);
            }
        }
        h.insert(h.end(), hues.begin() + 14, hues.end());
        l.insert(l.end(), lightnesses.begin() + 14, lightnesses.end());

        std::vector<double> chromas(h.size());
        std::vector<double> maxChromas(h.size());
        rowKernel::avx2::chromasForHues({paired->data()}, h.data(), l.data(), h.size(),
                                        chromas.data());
        rowKernel::avx2::maxChromasForHues(&gamut->tableMaxChroma(0).c1, h.data(), h.size(),
                                           maxChromas.data());
        for (std::size_t i = 0; i < h.size(); ++i) {
            ASSERT_EQ(bitsOf(chromas[i]), bitsOf(gamut->chromaForHue(h[i], l[i])))
                << colorSpaceModelNumber(model) << " " << h[i] << " " << l[i];
            ASSERT_EQ(bitsOf(maxChromas[i]), bitsOf(gamut->maxChromaForHue(h[i]).c1))
                << colorSpaceModelNumber(model) << " " << h[i];
        }
    }
}

} // namespace
} // namespace tintorra
