#include "cli/ImageJob.h"

#include "cli/CliFailure.h"
#include "cli/StandardStreams.h"
#include "editor/HueShiftParametersBuilder.h"
#include "engine/HueShift.h"
#include "engine/SelectionWeights.h"
#include "image/PixelAccess.h"
#include "imageio/DocumentFile.h"
#include "imageio/ImageErrors.h"
#include "imageio/ImageFile.h"

#include <algorithm>

namespace tintorra::cli {

LoadedImage loadImageData(std::span<const std::uint8_t> data, const std::string& name)
{
    KVError error;
    // By content: a TIFF goes the document's way, so that Tintorra documents give their source.
    const auto source = ImageSource::open(data);
    if (!source) {
        failProcessing(withHint(name + ": " + source.error().message, ""));
    }
    const bool tiff = source.value().format() == ImageFormat::tiff;
    std::optional<DocumentImageReps> reps;
    {
        // The document layer logs undecodable data on standard error; the tool says it itself.
        reps = readFromData(data, tiff ? kTypeTIFF : kTypeImage, &error);
    }
    if (!reps || reps->imageReps.empty() || !reps->imageReps.front()) {
        if (!error.localizedDescription.empty()) {
            failProcessing(withHint(name + ": " + error.localizedDescription,
                                    error.localizedRecoverySuggestion));
        }
        // The decoder's own reason (damaged, too large, ...) fits better than a guess.
        const auto decoded = decodeImage(data);
        failProcessing(withHint(
            name + ": " +
                (decoded ? std::string("the image could not be read") : decoded.error().message),
            ""));
    }
    LoadedImage image;
    image.path = name;
    image.source = reps->imageReps[0];
    if (reps->imageReps.size() > 1) {
        image.exclusionMask = reps->imageReps[1];
    }
    if (reps->imageReps.size() > 2) {
        image.inclusionMask = reps->imageReps[2];
    }
    image.parameters = reps->artistTag;
    image.metadata = PhotoMetadata::read(data);
    return image;
}

LoadedImage loadImageFile(const std::string& path)
{
    const std::vector<std::uint8_t> data = readInputBytes(path);
    return loadImageData(data, isStandardStream(path) ? "standard input" : path);
}

KVBitmapPtr loadMaskFile(const std::string& path, std::int64_t width, std::int64_t height)
{
    const auto data = readWholeFile(path);
    if (!data) {
        failProcessing(path + ": " + data.error().message);
    }
    const auto decoded = decodeImage(data.value());
    if (!decoded) {
        failProcessing(path + ": " + decoded.error().message);
    }
    const KVBitmapPtr& file = decoded.value();
    if (file->pixelsWide() != width || file->pixelsHigh() != height) {
        failProcessing(path + ": the mask is " + std::to_string(file->pixelsWide()) + " x " +
                       std::to_string(file->pixelsHigh()) + " pixels but the image is " +
                       std::to_string(width) + " x " + std::to_string(height) +
                       "; give a mask of the image's size");
    }
    KVBitmapPtr mask = KVBitmap::deviceWhite8Rep(width, height);
    const auto in = pixelManipulationOffsetsWithImageGamma(file, 1.0);
    if (!mask || !in.supported) {
        failProcessing(path + ": the mask's pixel layout is not supported; save it as 8-bit grey "
                              "or RGB");
    }
    for (std::int64_t y = 0; y < height; ++y) {
        std::uint8_t* row = mask->bitmapData() + y * mask->bytesPerRow();
        for (std::int64_t x = 0; x < width; ++x) {
            ColorComponents c{};
            readGammaFloats(x, y, in, c);
            const double grey = (c.c0 + c.c1 + c.c2) / 3.0;
            // Premultiplied files already carry alpha in their samples.
            const double coverage = in.premultiplied ? grey : grey * c.alpha;
            row[x] = static_cast<std::uint8_t>(coverage * 255.0 + 0.5);
        }
    }
    return mask;
}

ShiftJob::ShiftJob(Engine& engine, KVBitmapPtr source, const KVHueShiftParameterSet& parameters)
    : engine_(engine), source_(std::move(source)), parameters_(parameters)
{}

void ShiftJob::buildColorTable()
{
    const double imageGamma = 1.0 / parameters_.displayGamma();
    auto table = engine_.buildColorTable(source_, imageGamma, parameters_.colorSpaceModel());
    if (!table) {
        failProcessing(table.error().message);
    }
    table_ = table.take();
    spectrum_ = createLChSpectrumFromLChColorTable(*table_);
}

void ShiftJob::buildGamut()
{
    if (isLchColorMode(parameters_.colorSpaceModel())) {
        auto gamut = engine_.buildGamut(source_->colorSpace(), parameters_.colorSpaceModel());
        if (!gamut) {
            failProcessing(gamut.error().message);
        }
        gamut_ = gamut.take();
    }
}

void ShiftJob::setMasks(KVBitmapPtr exclusion, KVBitmapPtr inclusion)
{
    exclusionMask_ = std::move(exclusion);
    inclusionMask_ = std::move(inclusion);
}

HueShiftParameters ShiftJob::engineRecord(MaskView maskToShow) const
{
    KVHueShiftParameterSet set = parameters_;
    set.setMaskToShow(maskToShow);
    HueShiftContext context;
    context.gamut = gamut_;
    context.colorTable = table_.get();
    context.spectrum = &spectrum_;
    context.exclusionMask = exclusionMask_;
    context.inclusionMask = inclusionMask_;
    return hueShiftParameters(set, context);
}

KVBitmapPtr ShiftJob::shift(const HueShiftParameters& record, const KVBitmapPtr& destination) const
{
    auto result = engine_.shift({source_, destination, record, table_});
    if (!result) {
        failProcessing(result.error().message);
    }
    return result.take();
}

ShiftJob::SelectionCount ShiftJob::countSelection(const HueShiftParameters& record,
                                                  bool exact) const
{
    const SelectionCount table = countTableSelection(record);
    if (source_->bitsPerSample() == 16 && !source_->isPlanar() && (exact || table.pixels == 0)) {
        return countSelectedSamples();
    }
    return table;
}

ShiftJob::SelectionCount ShiftJob::countSelectedSamples() const
{
    // The black-mask view is white where the engine selects a pixel; the painted masks are left
    // out, as the table count leaves them out.
    KVHueShiftParameterSet set = parameters_;
    set.setMaskToShow(MaskView::blackMask);
    HueShiftContext context;
    context.gamut = gamut_;
    context.colorTable = table_.get();
    context.spectrum = &spectrum_;
    const KVBitmapPtr mask = shift(hueShiftParameters(set, context), nullptr);
    const std::int64_t samples = source_->samplesPerPixel();
    std::vector<std::uint64_t> all;
    std::vector<std::uint64_t> selected;
    all.reserve(static_cast<std::size_t>(source_->pixelsWide() * source_->pixelsHigh()));
    for (std::int64_t y = 0; y < source_->pixelsHigh(); ++y) {
        const auto* in = reinterpret_cast<const std::uint16_t*>(source_->bitmapData() +
                                                                y * source_->bytesPerRow());
        const auto* out =
            reinterpret_cast<const std::uint16_t*>(mask->bitmapData() + y * mask->bytesPerRow());
        for (std::int64_t x = 0; x < source_->pixelsWide(); ++x) {
            std::uint64_t colour = 0;
            for (std::int64_t c = 0; c < std::min<std::int64_t>(samples, 4); ++c) {
                colour |= std::uint64_t{in[x * samples + c]} << (16 * c);
            }
            all.push_back(colour);
            if (out[x * samples] > 0) {
                selected.push_back(colour);
            }
        }
    }
    const auto distinct = [](std::vector<std::uint64_t>& colours) {
        std::sort(colours.begin(), colours.end());
        return static_cast<std::uint64_t>(std::unique(colours.begin(), colours.end()) -
                                          colours.begin());
    };
    SelectionCount count;
    count.pixels = selected.size();
    count.distinctColors = distinct(all);
    count.colors = distinct(selected);
    return count;
}

ShiftJob::SelectionCount ShiftJob::countTableSelection(const HueShiftParameters& record) const
{
    HueShiftParameters p = record;
    normalizeHueShiftParameters(p);
    SelectionCount count;
    count.distinctColors = table_->count;
    const bool lch = isLchColorMode(p.colorSpaceModel);
    for (std::uint64_t i = 0; i < table_->count; ++i) {
        const color_table_lch_entry_info& e = table_->colors[i];
        double weight = 0.0;
        if (lch) {
            ColorComponents colour{e.lightness, e.chroma, e.hue, e.alpha};
            weight = selectionWeight(colour, p, false);
        } else {
            const double saturation =
                p.colorSpaceModel == ColorSpaceModel::HCL ? e.saturation : e.chroma;
            HclComponents colour{e.hue, e.chroma, e.lightness, e.alpha, saturation};
            weight = selectionWeight(colour, p, false);
        }
        if (weight > 0.0) {
            ++count.colors;
            count.pixels += e.locationCount;
        }
    }
    return count;
}

} // namespace tintorra::cli
