// The image, its description built in the background, and the shifts of the live shifter.
#include "controls/ParameterEncoding.h"
#include "editor/HueShiftParametersBuilder.h"
#include "editor/ShiftRecordEncoding.h"
#include "engine/HueSpectrum.h"
#include "ui/KVCircularSlider.h"
#include "ui/KVPixelReadout.h"
#include "ui/KVSpectrumColors.h"
#include "ui/TintorraVC.h"

#include <QLabel>
#include <QUndoStack>
#include <algorithm>

namespace tintorra {

namespace {

// Swatches: the mean colours of the most populated hue bands.
constexpr std::size_t kImageColorCount = 8;
// One picture shown, one being written, one waiting.
constexpr std::size_t kDestinationPoolSize = 3;

} // namespace

void TintorraVC::setImageReps(std::vector<KVBitmapPtr> reps)
{
    deselectSelectionTools();
    const KVBitmapPtr source = reps.empty() ? nullptr : reps[0];
    const bool newSource = source != sourceRep_;
    if (source == nullptr || sourceRep_ == nullptr ||
        !(source->colorSpace() == sourceRep_->colorSpace())) {
        colorGamut_.reset();
    }
    sourceRep_ = source;
    exMaskRep_ = reps.size() > 1 ? reps[1] : nullptr;
    inMaskRep_ = reps.size() > 2 ? reps[2] : nullptr;
    fillImageInformation();
    if (newSource) {
        destinationPool_.clear();
        colorTable_.reset();
        spectrum_.reset();
        destinationRep_.reset();
        describeImageInBackground();
    } else {
        processImage();
    }
    if (source != nullptr) {
        emit imageLoaded();
    } else {
        emit imageProcessed(nullptr);
    }
}

KVBitmapPtr TintorraVC::exclusionMaskForPainting()
{
    if (exMaskRep_ == nullptr && sourceRep_ != nullptr) {
        // All zero: nothing excluded yet.
        exMaskRep_ = KVBitmap::deviceWhite8Rep(sourceRep_->pixelsWide(), sourceRep_->pixelsHigh());
    }
    return exMaskRep_;
}

void TintorraVC::setExclusionMask(KVBitmapPtr mask)
{
    exMaskRep_ = std::move(mask);
    processImage();
}

// --- Background description --------------------------------------------------------------------

void TintorraVC::describeImageInBackground()
{
    reapFinishedJobs();
    for (DescriptionJob& job : jobs_) {
        job.thread.request_stop();
    }
    const std::uint64_t generation = ++generation_;
    // Whatever runs on the old description is stale now.
    shifter_.abandonAll();
    firstCurrentRequest_ = lastRequest_ + 1;
    if (sourceRep_ == nullptr) {
        return;
    }
    emit processingStarted();
    const KVBitmapPtr image = sourceRep_;
    const ColorSpaceModel model = parameters_.colorSpaceModel();
    const double imageGamma = 1.0 / parameters_.displayGamma();
    const bool gamutNeeded = colorGamut_ == nullptr;
    auto done = std::make_shared<std::atomic<bool>>(false);
    // The threads call back into this object; the destructor joins them first.
    std::jthread thread([this, image, model, imageGamma, gamutNeeded, generation,
                         done](std::stop_token stop) {
        if (gamutNeeded) {
            auto gamut = engine_.buildGamut(image->colorSpace(), model, stop);
            if (!gamut) {
                done->store(true);
                return;
            }
            QMetaObject::invokeMethod(
                this, [this, generation, gamut = gamut.take()] { takeGamut(generation, gamut); },
                Qt::QueuedConnection);
        }
        auto table = engine_.buildColorTable(image, imageGamma, model, stop);
        if (table && !stop.stop_requested()) {
            auto spectrum = std::make_shared<const LChSpectrum>(
                createLChSpectrumFromLChColorTable(*table.value()));
            QMetaObject::invokeMethod(
                this,
                [this, generation, table = table.take(), spectrum] {
                    takeColorTable(generation, table, spectrum);
                },
                Qt::QueuedConnection);
        }
        done->store(true);
    });
    jobs_.push_back({std::move(thread), std::move(done)});
}

void TintorraVC::reapFinishedJobs()
{
    // A finished thread joins at once; unfinished ones are only asked to stop.
    jobs_.remove_if([](const DescriptionJob& job) { return job.done->load(); });
}

void TintorraVC::takeGamut(std::uint64_t generation, KVColorGamutPtr gamut)
{
    if (generation != generation_) {
        return;
    }
    colorGamut_ = std::move(gamut);
    attemptToProcessImage();
}

void TintorraVC::takeColorTable(std::uint64_t generation, ColorTablePtr table,
                                LChSpectrumPtr spectrum)
{
    if (generation != generation_) {
        return;
    }
    colorTable_ = std::move(table);
    spectrum_ = std::move(spectrum);
    reapFinishedJobs();
    attemptToProcessImage();
}

void TintorraVC::attemptToProcessImage()
{
    const ColorSpaceModel model = parameters_.colorSpaceModel();
    for (KVCircularSlider* ring : {hueSlider_, targetHueSlider_}) {
        ring->setColorGamut(colorGamut_);
        ring->setColorSpaceModel(model);
    }
    if (spectrumView_ != nullptr) {
        spectrumView_->setColorGamut(colorGamut_);
        spectrumView_->setColorSpaceModel(model);
        spectrumView_->setSpectrum(spectrum_);
    }
    updateSourceSatAndBriSliderColors();
    updateTargetSatAndBriSliderColors();
    refreshImageColors();
    processImage();
}

void TintorraVC::refreshImageColors()
{
    std::vector<QColor> colors;
    if (spectrum_ != nullptr && !spectrum_->empty()) {
        std::vector<std::size_t> bands(spectrum_->count);
        for (std::size_t band = 0; band < bands.size(); ++band) {
            bands[band] = band;
        }
        const auto& data = spectrum_->bands;
        std::stable_sort(bands.begin(), bands.end(), [&](std::size_t a, std::size_t b) {
            return data[a].count > data[b].count;
        });
        Matrix3 xyzToRgb{};
        if (colorGamut_ != nullptr) {
            colorGamut_->copy_XYZ_to_RGB_matrix(xyzToRgb);
        }
        const ColorSpaceModel model = parameters_.colorSpaceModel();
        for (std::size_t i = 0; i < bands.size() && colors.size() < kImageColorCount; ++i) {
            const LChSpectrumBand& band = data[bands[i]];
            if (band.count == 0) {
                break;
            }
            if (const auto color = colorForLightness(band.lightnessMean, band.chromaMean,
                                                     band.hueMean, 1.0, model, xyzToRgb)) {
                colors.push_back(*color);
            }
        }
    }
    if (colors != imageColors_) {
        imageColors_ = std::move(colors);
        emit imageColorsChanged();
    }
}

void TintorraVC::fillImageInformation()
{
    sourceRepPropertiesHeader_->setText(imageInformationHeader());
    sourceRepProperties_->setText(sourceRep_ ? imageInformation(*sourceRep_) : QString());
}

// --- Shifting ------------------------------------------------------------------------------------

bool TintorraVC::isOkToProcessImage() const
{
    return sourceRep_ != nullptr && colorGamut_ != nullptr && colorTable_ != nullptr &&
           colorTable_->count > 0 && colorTable_->colors && colorTable_->locations &&
           spectrum_ != nullptr && spectrum_->count > 0 && !blockProcessing_;
}

void TintorraVC::processImage()
{
    if (!isOkToProcessImage()) {
        return;
    }
    HueShiftContext context;
    context.gamut = colorGamut_;
    context.colorTable = colorTable_.get();
    context.spectrum = spectrum_.get();
    context.inclusionMask = inMaskRep_;
    context.exclusionMask = exMaskRep_;
    context.currentSelectionTool = currentSelectionTool();
    lastRequest_ = shifter_.submit(
        {sourceRep_, reusableDestination(), hueShiftParameters(parameters_, context), colorTable_});
    emit processingStarted();
}

void TintorraVC::takeShiftResult(std::uint64_t request, KVBitmapPtr result)
{
    // Results arrive in order, but one of a superseded image or table may still be queued.
    if (request < firstCurrentRequest_ || request <= shownRequest_) {
        return;
    }
    shownRequest_ = request;
    // The pool is kept newest last: the newest picture differs least from the next one, and the
    // live shifter rewrites only what differs.
    if (result != nullptr && result != sourceRep_) {
        const auto pooled = std::find(destinationPool_.begin(), destinationPool_.end(), result);
        if (pooled != destinationPool_.end()) {
            destinationPool_.erase(pooled);
        }
        if (destinationPool_.size() < kDestinationPoolSize) {
            destinationPool_.push_back(result);
        }
    }
    destinationRep_ = std::move(result);
    imageProcessed_ = destinationRep_ != nullptr;
    emit imageProcessed(destinationRep_);
}

KVBitmapPtr TintorraVC::reusableDestination() const
{
    // Only this thread hands the pictures out, so a count of one (the pool's own) cannot grow
    // behind our back: nobody else holds the picture, and writing into it again is safe.
    for (auto picture = destinationPool_.rbegin(); picture != destinationPool_.rend(); ++picture) {
        if (picture->use_count() == 1) {
            return *picture;
        }
    }
    return nullptr;
}

// --- The parameter string
// -------------------------------------------------------------------------

QString TintorraVC::hexEncodedStringFromHueShiftParameters() const
{
    HueShiftContext context;
    context.gamut = colorGamut_;
    context.colorTable = colorTable_.get();
    context.spectrum = spectrum_.get();
    context.currentSelectionTool = currentSelectionTool();
    return QString::fromStdString(
        tintorra::hexEncodedStringFromHueShiftParameters(hueShiftParameters(parameters_, context)));
}

bool TintorraVC::setHueShiftParametersFromHexEncodedString(const QString& encoded)
{
    const std::optional<DecodedHueShiftParameters> decoded =
        decodeHueShiftParameters(encoded.toStdString());
    if (!decoded) {
        return false;
    }
    const bool wasBlocked = blockProcessing_;
    blockProcessing_ = true;
    beginUndoGroup(tr("Hue Shift Settings"));
    applyDecodedHueShiftParameters(*decoded, *this);
    endUndoGroup();
    blockProcessing_ = wasBlocked;
    processImage();
    return true;
}

} // namespace tintorra
