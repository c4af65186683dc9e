#pragma once

#include "cli/PhotoMetadata.h"
#include "colour/KVColorGamut.h"
#include "controls/KVHueShiftParameterSet.h"
#include "engine/ColorTable.h"
#include "engine/Engine.h"
#include "engine/HueShiftParameters.h"
#include "engine/HueSpectrum.h"
#include "image/KVBitmap.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

// The main job of the tool, shared by `shift`, `spectrum` and `demo`: an image read, its colour
// table, spectrum and gamut built once, then shifted (or masked) as often as asked.

namespace tintorra::cli {

// An image file as the document reads it: the source, and for a Tintorra document its masks and
// parameter string.
struct LoadedImage {
    std::string path;
    KVBitmapPtr source;
    KVBitmapPtr exclusionMask;
    KVBitmapPtr inclusionMask;
    std::optional<std::string> parameters;
    // The photograph's EXIF, XMP and IPTC, for the outputs.
    PhotoMetadata metadata;
};

// Reads an RGB image (or a Tintorra document's source); "-" reads standard input. Throws a
// processing CliFailure naming the file when it cannot be read, is not an image or is not RGB.
LoadedImage loadImageFile(const std::string& path);
LoadedImage loadImageData(std::span<const std::uint8_t> data, const std::string& name);

// A painted mask for an image of the given size, read from any image file: the file's encoded
// grey level (the mean of r, g, b) times its alpha, 255 = painted. Throws when the file cannot be
// read or its size differs.
KVBitmapPtr loadMaskFile(const std::string& path, std::int64_t width, std::int64_t height);

// What the engine needs of an image beyond the parameters; built once per image and mode.
class ShiftJob {
public:
    ShiftJob(Engine& engine, KVBitmapPtr source, const KVHueShiftParameterSet& parameters);

    // The colour table and hue spectrum (always: the selection statistics read the spectrum;
    // images of 16 bits are described by their high bytes). Throws when there is no memory.
    void buildColorTable();
    // The gamut of the image's colour space, for the LCh modes only.
    void buildGamut();

    void setMasks(KVBitmapPtr exclusion, KVBitmapPtr inclusion);

    // The engine record for a view.
    HueShiftParameters engineRecord(MaskView maskToShow) const;

    // Runs the engine into `destination` (a fresh copy when null) and returns the result; throws
    // when the engine refuses the image.
    KVBitmapPtr shift(const HueShiftParameters& record, const KVBitmapPtr& destination) const;

    // Distinct colours of the image, those the selection weighs above 0 and their pixels (the
    // painted masks aside). The table describes 16-bit images by their high bytes only, so for
    // them the counts come from the engine's own selection view of every pixel, when `exact` or
    // when the table finds no pixel (a shift pass: only for figures and the empty warning).
    struct SelectionCount {
        std::uint64_t distinctColors = 0;
        std::uint64_t colors = 0;
        std::uint64_t pixels = 0;
    };
    SelectionCount countSelection(const HueShiftParameters& record, bool exact) const;

    const KVBitmapPtr& source() const { return source_; }
    const KVHueShiftParameterSet& parameters() const { return parameters_; }
    const KVColorGamutPtr& gamut() const { return gamut_; }
    const LChSpectrum& spectrum() const { return spectrum_; }
    const LChColorTable& table() const { return *table_; }

private:
    SelectionCount countTableSelection(const HueShiftParameters& record) const;
    SelectionCount countSelectedSamples() const;

    Engine& engine_;
    KVBitmapPtr source_;
    KVHueShiftParameterSet parameters_;
    KVColorGamutPtr gamut_;
    ColorTablePtr table_;
    LChSpectrum spectrum_;
    KVBitmapPtr exclusionMask_;
    KVBitmapPtr inclusionMask_;
};

} // namespace tintorra::cli
