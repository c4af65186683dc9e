#include "HueShiftTestSupport.h"
#include "engine/Engine.h"
#include "engine/HueShiftWorkers.h"
#include "engine/ShiftOutcome.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <vector>

namespace tintorra {
namespace {

constexpr std::int64_t kWide = 40;
constexpr std::int64_t kHigh = 30;

struct PictureLayout {
    bool alpha = false;
    bool premultiplied = false;
    // Rows padded by three pixels.
    bool padded = false;
};

KVBitmapPtr blankPicture(PictureLayout layout)
{
    KVBitmapLayout l;
    l.pixelsWide = kWide;
    l.pixelsHigh = kHigh;
    l.bitsPerSample = 8;
    l.samplesPerPixel = layout.alpha ? 4 : 3;
    l.hasAlpha = layout.alpha;
    l.bitmapFormat = layout.premultiplied ? 0u : kBitmapFormatAlphaNonpremultiplied;
    l.bytesPerRow = layout.padded ? (kWide + 3) * l.samplesPerPixel : 0;
    return KVBitmap::create(l);
}

// A few dozen colours, each on pixels all over the picture, so that entries have many pixels;
// with alpha, some share their RGB and differ in alpha.
KVBitmapPtr manyColoursPicture(PictureLayout layout)
{
    const KVBitmapPtr picture = blankPicture(layout);
    for (std::int64_t y = 0; y < kHigh; ++y) {
        for (std::int64_t x = 0; x < kWide; ++x) {
            const int k = static_cast<int>((x * 7 + y * 13) % 61);
            const int a = (x + y) % 3 == 0 ? 128 : 255;
            // Premultiplied samples never exceed their alpha.
            const auto stored = [&](int c) {
                return static_cast<std::uint8_t>(layout.premultiplied ? c * a / 255 : c);
            };
            test::setChars(picture, x, y,
                           {stored(k * 4), stored(250 - k * 3), stored((k * 37) % 256),
                            static_cast<std::uint8_t>(a)});
        }
    }
    return picture;
}

// Painted over the picture's left part (or, repainted, its right part), partly (so that colours
// blend with the source) and wholly.
KVBitmapPtr exclusionMask(bool repainted = false)
{
    const KVBitmapPtr mask = KVBitmap::deviceWhite8Rep(kWide, kHigh);
    for (std::int64_t y = 0; y < kHigh; ++y) {
        for (std::int64_t x = 0; x < kWide / 2; ++x) {
            const std::int64_t column = repainted ? kWide - 1 - x : x;
            mask->bitmapData()[y * mask->bytesPerRow() + column] = x < kWide / 4 ? 255 : 100;
        }
    }
    return mask;
}

using Change = std::function<void(HueShiftParameters&)>;

void selectHues(HueShiftParameters& p, double lower, double upper)
{
    p.hueLowerFalloff = lower - 0.05;
    p.hueLower = lower;
    p.hueUpper = upper;
    p.hueUpperFalloff = upper + 0.05;
}

// A slider session: new targets, selections that grow and shrink (entries to give back), a grey
// mask shown and left, a highlight, a selection of nothing, and the paint brush at work.
const std::vector<Change>& session()
{
    static const std::vector<Change> changes{
        [](HueShiftParameters& p) { selectHues(p, 0.1, 0.4), p.targetHue = 0.6; },
        [](HueShiftParameters& p) { p.targetHue = 0.8; },
        [](HueShiftParameters& p) { selectHues(p, 0.0, 0.7); },
        [](HueShiftParameters& p) { selectHues(p, 0.3, 0.35); },
        [](HueShiftParameters& p) { p.maskToShow = MaskView::blackMask; },
        [](HueShiftParameters& p) {
            p.maskToShow = MaskView::shiftedImage, selectHues(p, 0.2, 0.5);
        },
        [](HueShiftParameters& p) { p.maskToShow = MaskView::selectionHighlight; },
        [](HueShiftParameters& p) {
            p.maskToShow = MaskView::shiftedImage, p.satLower = p.satLowerFalloff = 1.0;
        },
        [](HueShiftParameters& p) { p.satLower = p.satLowerFalloff = 0.0, p.targetSat = 0.5; },
        [](HueShiftParameters& p) { p.exclusionMask = exclusionMask(true); },
        [](HueShiftParameters& p) { p.targetHue = 0.1; },
        [](HueShiftParameters& p) { p.exclusionMask = nullptr; },
    };
    return changes;
}

struct IncrementalCase {
    const char* name;
    PictureLayout layout;
    bool excluded;
};

void PrintTo(const IncrementalCase& c, std::ostream* os)
{
    *os << c.name;
}

class IncrementalShifts : public testing::TestWithParam<IncrementalCase> {};

// Two bitmaps written in turn, each with the footprint of what it holds, give at every step the
// picture a full shift gives. The engine writes large selections and grey masks through its map
// of pixels to colours; the full shifts come from an engine that writes colour by colour.
TEST_P(IncrementalShifts, EqualFullShiftsAtEveryStep)
{
    test::captureDiagnostics();
    // Blocks of a few rows and waves of a few hundred pixels, as a large picture has them.
    EngineOptions options;
    options.threads = 2;
    options.tableWrites = {kWide * 4 * 3, 300};
    options.keepsEntryMaps = true;
    Engine engine(options);
    options.keepsEntryMaps = false;
    Engine colourByColour(options);
    const PictureLayout layout = GetParam().layout;
    const KVBitmapPtr source = manyColoursPicture(layout);
    HueShiftParameters p = test::selectEverything(ColorSpaceModel::LChuv);
    if (GetParam().excluded) {
        p.exclusionMask = exclusionMask();
    }
    const ColorTablePtr table =
        engine.buildColorTable(source, p.imageGamma, p.colorSpaceModel).take();
    // Blank to begin with: a footprint used where none applies would leave that showing.
    KVBitmapPtr buffers[2] = {blankPicture(layout), blankPicture(layout)};
    ShiftFootprintPtr footprints[2];
    // Selections that stay as they were are written by the plan of the previous time.
    int plansReused = 0;
    for (std::size_t step = 0; step < session().size(); ++step) {
        session()[step](p);
        const std::size_t b = step % 2;
        TrackedShift tracked =
            engine.shiftTracked({source, buffers[b], p, table, footprints[b]}).take();
        ASSERT_EQ(tracked.image, buffers[b]);
        EXPECT_EQ(tracked.footprint != nullptr, !showsGreyMask(p.maskToShow)) << step;
        if (tracked.footprint != nullptr && footprints[b] != nullptr &&
            tracked.footprint->plan == footprints[b]->plan) {
            ++plansReused;
        }
        footprints[b] = tracked.footprint;
        // Into a blank bitmap of its own: whatever it is not given from the source shows.
        const KVBitmapPtr full =
            colourByColour.shift({source, blankPicture(layout), p, table}).take();
        EXPECT_TRUE(test::sameSamples(tracked.image, full)) << "step " << step;
        EXPECT_TRUE(test::sameSamples(engine.shift({source, nullptr, p, table}).take(), full))
            << "step " << step;
    }
    EXPECT_GT(plansReused, 0);
    test::capturedDiagnostics();
}

INSTANTIATE_TEST_SUITE_P(Pictures, IncrementalShifts,
                         testing::Values(IncrementalCase{"opaque", {}, false},
                                         IncrementalCase{"alpha", {true}, false},
                                         IncrementalCase{"premultiplied", {true, true}, false},
                                         IncrementalCase{"paddedRows", {false, false, true}, false},
                                         IncrementalCase{"opaqueExcluded", {}, true},
                                         IncrementalCase{"alphaExcluded", {true}, true}));

// A footprint that describes another destination, source or table is not used.
TEST(IncrementalShifts, FootprintsOfOtherPicturesOrTablesAreIgnored)
{
    test::captureDiagnostics();
    Engine engine({2});
    const KVBitmapPtr source = manyColoursPicture({});
    // Grey all over: nothing selected, so a footprint used with it leaves grey pixels showing.
    const KVBitmapPtr grey = test::makeRgbBitmap(kWide, kHigh, 8, false);
    std::memset(grey->bitmapData(), 100, grey->sampleBytes());
    HueShiftParameters p = test::selectEverything(ColorSpaceModel::LChuv);
    selectHues(p, 0.1, 0.4);
    const auto tableOf = [&](const KVBitmapPtr& picture) {
        return engine.buildColorTable(picture, p.imageGamma, p.colorSpaceModel).take();
    };
    const ColorTablePtr table = tableOf(source);
    const KVBitmapPtr written = test::makeRgbBitmap(kWide, kHigh, 8, false);
    const KVBitmapPtr blank = test::makeRgbBitmap(kWide, kHigh, 8, false);
    ShiftFootprint holdsGrey =
        *engine.shiftTracked({grey, written, p, tableOf(grey), nullptr}).take().footprint;
    const KVBitmapPtr full = engine.shift({source, nullptr, p, table}).take();

    struct Mismatch {
        const char* name;
        KVBitmapPtr source;      // that the footprint names
        KVBitmapPtr destination; // that the request gives
        ColorTablePtr table;     // that the request gives
    };
    for (const Mismatch& m :
         {Mismatch{"source", grey, written, table}, Mismatch{"destination", source, blank, table},
          Mismatch{"table", source, written, tableOf(source)}}) {
        ShiftFootprint claim = holdsGrey;
        claim.source = m.source;
        claim.colorTable = table;
        const TrackedShift tracked =
            engine
                .shiftTracked({source, m.destination, p, m.table,
                               std::make_shared<const ShiftFootprint>(claim)})
                .take();
        EXPECT_TRUE(test::sameSamples(tracked.image, full)) << m.name;
        std::memset(written->bitmapData(), 100, written->sampleBytes());
    }
    test::capturedDiagnostics();
}

} // namespace
} // namespace tintorra
