#include "engine/HueShiftWorkers.h"
#include "engine/SelectionMasks.h"
#include "engine/ShiftOutcome.h"

#include <cstdio>

namespace tintorra {

namespace {

// An entry's stored colour in the form the weights are computed on.
ShiftOutcome entryOutcome(const color_table_lch_entry_info& entry, bool lch, std::int64_t mode,
                          const OutcomeContext& context)
{
    if (lch) {
        return lchOutcome({entry.lightness, entry.chroma, entry.hue, entry.alpha}, context);
    }
    // The table keeps HCL's own saturation; HSB and HSL test their S.
    const double saturation = mode == kColorModeHCL ? entry.saturation : entry.chroma;
    return cylinderOutcome({entry.hue, entry.chroma, entry.lightness, entry.alpha, saturation},
                           context);
}

// The four stored bytes of a linear colour: encoded with the destination's gamma, premultiplied
// where the destination stores it so, rounded half up.
PixelChars encodedColor(ColorComponents c, const PixelManipulationOffsets& destination)
{
    if (destination.imageGamma != 1.0) {
        c.c0 = std::pow(c.c0, destination.imageGamma);
        c.c1 = std::pow(c.c1, destination.imageGamma);
        c.c2 = std::pow(c.c2, destination.imageGamma);
    }
    if (destination.hasAlpha && destination.premultiplied) {
        c.c0 *= c.alpha;
        c.c1 *= c.alpha;
        c.c2 *= c.alpha;
    }
    using pixel_detail::encodeChar;
    return {encodeChar(c.c0), encodeChar(c.c1), encodeChar(c.c2), encodeChar(c.alpha)};
}

class LocationWriter {
public:
    LocationWriter(const HueShiftRun& run)
        : destination_(*run.destination), coverage_(*run.coverage),
          lastPixel_(static_cast<std::uint64_t>(
              (destination_.pixelsHigh - 1) * destination_.bytesPerRow +
              (destination_.pixelsWide - 1) * destination_.bytesPerPixel))
    {}

    // A location outside the image (a table that belongs to another image) is never written.
    bool inside(std::uint32_t location) const { return location <= lastPixel_; }

    std::uint8_t* pixel(std::uint32_t location) const { return destination_.bitmapData + location; }

    // The painted coverage of the pixel at a location, 255 when nothing is painted.
    unsigned coverage(std::uint32_t location) const
    {
        if (!coverage_.present()) {
            return 255;
        }
        const auto row = static_cast<std::int64_t>(location / destination_.bytesPerRow);
        const auto column = static_cast<std::int64_t>(location % destination_.bytesPerRow) /
                            destination_.bytesPerPixel;
        return coverage_.at(column, row);
    }

    void writeColor(std::uint32_t location, const PixelChars& color) const
    {
        std::uint8_t* const p = pixel(location);
        const unsigned m = coverage(location);
        if (m == 0) {
            return;
        }
        if (m == 255) {
            p[destination_.redOffset] = color.r;
            p[destination_.greenOffset] = color.g;
            p[destination_.blueOffset] = color.b;
        } else {
            p[destination_.redOffset] = mixByCoverage(p[destination_.redOffset], color.r, m);
            p[destination_.greenOffset] = mixByCoverage(p[destination_.greenOffset], color.g, m);
            p[destination_.blueOffset] = mixByCoverage(p[destination_.blueOffset], color.b, m);
        }
        if (destination_.hasAlpha) {
            p[destination_.alphaOffset] = color.a;
        }
    }

    void writeMask(std::uint32_t location, unsigned sample, bool white,
                   bool limitedByCoverage) const
    {
        std::uint8_t* const p = pixel(location);
        if (limitedByCoverage) {
            sample = sample * coverage(location) / 255;
        }
        std::uint8_t value;
        if (destination_.premultiplied) {
            const unsigned alpha = p[destination_.alphaOffset];
            value = white ? premultipliedWhiteMaskSample(sample, alpha)
                          : premultipliedBlackMaskSample(sample, alpha);
        } else {
            value = static_cast<std::uint8_t>(white ? 255 - sample : sample);
        }
        p[destination_.redOffset] = value;
        p[destination_.greenOffset] = value;
        p[destination_.blueOffset] = value;
    }

private:
    const PixelManipulationOffsets& destination_;
    const PaintCoverage& coverage_;
    std::uint64_t lastPixel_;
};

} // namespace

void colorTableWorker(const HueShiftTask& task)
{
    printWorkerTrace(task.index);
    const HueShiftRun& run = *task.run;
    const HueShiftParameters& p = task.parameters;
    const ColorTableRef& table = p.colorTable;
    const OutcomeContext context{&p, p.gamut.get(), run.M, run.MI,
                                 PartialHighlight::halveLightness};
    const bool lch = isLchColorMode(p.colorSpaceModel);
    const bool greyMask = showsGreyMask(p.maskToShow);
    const bool white = p.maskToShow == kShowWhiteMask;
    const bool limitedByCoverage = p.paintMaskLimitsMasks != 0 && run.coverage->present();
    const LocationWriter writer(run);

    const std::uint64_t end = task.firstItem + task.itemCount;
    for (std::uint64_t i = task.firstItem; i < end; ++i) {
        const color_table_lch_entry_info& entry = table.colors[i];
        if (static_cast<std::uint64_t>(entry.firstLocation) + entry.locationCount >
            table.locationCount) {
            continue;
        }
        const ShiftOutcome outcome = entryOutcome(entry, lch, p.colorSpaceModel, context);
        const std::uint32_t* const locations = table.locations + entry.firstLocation;
        if (greyMask) {
            const unsigned sample = maskSample(outcome.weight > 0.0 ? outcome.weight : 0.0);
            for (std::uint32_t k = 0; k < entry.locationCount; ++k) {
                if (writer.inside(locations[k])) {
                    writer.writeMask(locations[k], sample, white, limitedByCoverage);
                }
            }
            continue;
        }
        if (!(outcome.weight > 0.0)) {
            continue;
        }
        const PixelChars color = encodedColor(outcome.rgb, *run.destination);
        for (std::uint32_t k = 0; k < entry.locationCount; ++k) {
            if (writer.inside(locations[k])) {
                writer.writeColor(locations[k], color);
            }
        }
    }
}

void printWorkerTrace(unsigned long index)
{
    std::printf("thread: %lu\n", index);
}

} // namespace tintorra
