// The undoable setters of the parameter set and how the controls follow them.
#include "editor/PixelColorReport.h"
#include "editor/SavedSelectionSets.h"
#include "ui/KVCircularSlider.h"
#include "ui/KVParameterUndoCommand.h"
#include "ui/KVSavedSetsPopup.h"
#include "ui/KVTenSegmentSlider.h"
#include "ui/KVValueDictionaryVariant.h"
#include "ui/TintorraVC.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QSignalBlocker>
#include <QToolButton>
#include <QUndoStack>
#include <tuple>

namespace tintorra {

namespace {

// Which changes may merge within one drag: one key per setter.
enum MergeKey : int {
    kMergeTargetHue = 1,
    kMergeTargetSat,
    kMergeTargetBri,
    kMergeTargetCurve,
    kMergeSourceHue,
    kMergeSourceSat,
    kMergeSourceBri,
    kMergeSelectionSettings,
    kMergeTargetSettings,
    kMergeDisplayGamma,
    kMergeTargetColor,
    kMergePreserveHue,
    kMergeColorMode,
    kMergeBlend,
};

using Ranges = std::tuple<KVSliderValues, KVSliderValues, KVSliderValues>;
using Targets = std::tuple<double, double, double>;
using ColorAndHue = std::pair<QColor, double>;

KVSliderValues rangeFromSet(const QVariantMap& set, const char* key)
{
    return valuesFromDictionary(dictionaryFromVariantMap(set.value(QLatin1String(key)).toMap()));
}

QVariantMap setFromRanges(const KVSliderValues& hue, const KVSliderValues& saturation,
                          const KVSliderValues& lightness)
{
    return {
        {QLatin1String(kSelectionSetHueKey), variantMapFromDictionary(dictionaryFromValues(hue))},
        {QLatin1String(kSelectionSetSaturationKey),
         variantMapFromDictionary(dictionaryFromValues(saturation))},
        {QLatin1String(kSelectionSetLightnessKey),
         variantMapFromDictionary(dictionaryFromValues(lightness))},
    };
}

} // namespace

// --- Undo registration ---------------------------------------------------------------------------

template <typename Value, typename Apply>
void TintorraVC::changeParameter(const QString& actionName, int mergeKey, Value oldValue,
                                 Value newValue, Apply apply)
{
    if (undoStack_ == nullptr || !undoRegistrationEnabled()) {
        apply(newValue);
        return;
    }
    // Undo and redo apply without registering again.
    auto applyQuietly = [this, apply](const Value& value) {
        ++undoSuspended_;
        apply(value);
        --undoSuspended_;
    };
    openPendingMacro();
    undoStack_->push(new KVParameterUndoCommand<Value>(
        actionName, mergeKey, groupDepth_ > 0 ? groupSerial_ : 0, std::move(oldValue),
        std::move(newValue), std::move(applyQuietly)));
}

void TintorraVC::beginUndoGroup(const QString& actionName)
{
    if (groupDepth_++ == 0) {
        groupName_ = actionName;
        ++groupSerial_;
        macroOpen_ = false;
    }
}

void TintorraVC::endUndoGroup()
{
    if (groupDepth_ == 0) {
        return;
    }
    if (--groupDepth_ == 0 && macroOpen_) {
        undoStack_->endMacro();
        macroOpen_ = false;
    }
}

// The macro opens with the group's first change, so a click that changes nothing leaves no
// empty step behind.
void TintorraVC::openPendingMacro()
{
    if (groupDepth_ > 0 && !macroOpen_ && undoStack_ != nullptr) {
        undoStack_->beginMacro(groupName_);
        macroOpen_ = true;
    }
}

// --- Setters
// ---------------------------------------------------------------------------------------

void TintorraVC::setTargetHue(double hue)
{
    changeParameter(tr("Target Hue"), kMergeTargetHue, parameters_.targetHue(), hue,
                    [this](double value) { applyTargetHue(value); });
}

void TintorraVC::applyTargetHue(double hue)
{
    parameters_.setTargetHue(hue);
    showParametersInControls();
    updateTargetSatAndBriSliderColors();
    processImage();
}

void TintorraVC::setTargetSat(double saturation)
{
    KVHueShiftParameterSet changed = parameters_;
    changed.setTargetSat(saturation);
    changeParameter(tr("Target Saturation"), kMergeTargetSat, parameters_.targetSat(),
                    changed.targetSat(), [this](double value) {
                        parameters_.setTargetSat(value);
                        deselectSelectionTools();
                        showParametersInControls();
                        processImage();
                    });
}

void TintorraVC::setTargetBri(double brightness)
{
    KVHueShiftParameterSet changed = parameters_;
    changed.setTargetBri(brightness);
    changeParameter(tr("Target Brightness"), kMergeTargetBri, parameters_.targetBri(),
                    changed.targetBri(), [this](double value) {
                        parameters_.setTargetBri(value);
                        deselectSelectionTools();
                        showParametersInControls();
                        processImage();
                    });
}

void TintorraVC::setTargetBriTenVals(const KVValueDictionary& values)
{
    changeParameter(tr("Target Brightness"), kMergeTargetCurve, parameters_.targetBriTenVals(),
                    values, [this](const KVValueDictionary& value) {
                        parameters_.setTargetBriTenVals(value);
                        deselectSelectionTools();
                        showParametersInControls();
                        processImage();
                    });
}

void TintorraVC::setSourceHueValues(const KVValueDictionary& values)
{
    changeParameter(tr("Selection Hue"), kMergeSourceHue, parameters_.sourceHueRange(),
                    valuesFromDictionary(values), [this](const KVSliderValues& range) {
                        parameters_.setSourceHueRange(range);
                        selectionSetsPopup_->clearSelection();
                        updateSourceSatAndBriSliderColors();
                        showParametersInControls();
                        processImage();
                    });
}

void TintorraVC::setSourceSatValues(const KVValueDictionary& values)
{
    changeParameter(tr("Selection Saturation"), kMergeSourceSat, parameters_.sourceSatRange(),
                    valuesFromDictionary(values), [this](const KVSliderValues& range) {
                        parameters_.setSourceSatRange(range);
                        selectionSetsPopup_->clearSelection();
                        updateSourceSatAndBriSliderColors();
                        showParametersInControls();
                        processImage();
                    });
}

void TintorraVC::setSourceBriValues(const KVValueDictionary& values)
{
    changeParameter(tr("Selection Brightness"), kMergeSourceBri, parameters_.sourceBriRange(),
                    valuesFromDictionary(values), [this](const KVSliderValues& range) {
                        parameters_.setSourceBriRange(range);
                        selectionSetsPopup_->clearSelection();
                        updateSourceSatAndBriSliderColors();
                        showParametersInControls();
                        processImage();
                    });
}

void TintorraVC::setSelectionSettings(const QVariantMap& settings)
{
    const Ranges old{parameters_.sourceHueRange(), parameters_.sourceSatRange(),
                     parameters_.sourceBriRange()};
    const Ranges chosen{rangeFromSet(settings, kSelectionSetHueKey),
                        rangeFromSet(settings, kSelectionSetSaturationKey),
                        rangeFromSet(settings, kSelectionSetLightnessKey)};
    changeParameter(tr("Saved Selection Settings"), kMergeSelectionSettings, old, chosen,
                    [this](const Ranges& ranges) {
                        const auto& [hue, saturation, lightness] = ranges;
                        applySourceRanges(hue, saturation, lightness);
                    });
}

void TintorraVC::applySourceRanges(const KVSliderValues& hue, const KVSliderValues& saturation,
                                   const KVSliderValues& brightness)
{
    parameters_.setSourceHueRange(hue);
    parameters_.setSourceSatRange(saturation);
    parameters_.setSourceBriRange(brightness);
    updateSourceSatAndBriSliderColors();
    showParametersInControls();
    processImage();
}

// A target set keeps the middles of the three target sliders.
void TintorraVC::setTargetSettings(const QVariantMap& settings)
{
    KVHueShiftParameterSet changed = parameters_;
    changed.setTargetSat(rangeFromSet(settings, kSelectionSetSaturationKey).middle);
    changed.setTargetBri(rangeFromSet(settings, kSelectionSetLightnessKey).middle);
    const Targets old{parameters_.targetHue(), parameters_.targetSat(), parameters_.targetBri()};
    const Targets chosen{rangeFromSet(settings, kSelectionSetHueKey).middle, changed.targetSat(),
                         changed.targetBri()};
    changeParameter(tr("Saved Target Settings"), kMergeTargetSettings, old, chosen,
                    [this](const Targets& targets) {
                        const auto& [hue, saturation, brightness] = targets;
                        parameters_.setTargetHue(hue);
                        parameters_.setTargetSat(saturation);
                        parameters_.setTargetBri(brightness);
                        updateTargetSatAndBriSliderColors();
                        showParametersInControls();
                        processImage();
                    });
}

QVariantMap TintorraVC::dictionaryOfSelectionSettings() const
{
    return setFromRanges(parameters_.sourceHueRange(), parameters_.sourceSatRange(),
                         parameters_.sourceBriRange());
}

QVariantMap TintorraVC::dictionaryOfTargetSettings() const
{
    return setFromRanges(targetHueSlider_->values(), targetSatSlider_->values(),
                         targetBriSlider_->values());
}

void TintorraVC::setDisplayGamma(double gamma)
{
    KVHueShiftParameterSet changed = parameters_;
    changed.setDisplayGamma(gamma);
    changeParameter(tr("Image Gamma"), kMergeDisplayGamma, parameters_.displayGamma(),
                    changed.displayGamma(), [this](double value) { applyDisplayGamma(value); });
}

void TintorraVC::applyDisplayGamma(double gamma)
{
    parameters_.setDisplayGamma(gamma);
    showParametersInControls();
    // The table holds linear colours: a new gamma means a new table, and until it is there no
    // shift may run on the old one.
    colorTable_.reset();
    spectrum_.reset();
    describeImageInBackground();
}

void TintorraVC::setTargetColor(const QColor& color)
{
    const QColor rgb = color.toRgb();
    const double hue = normalizedHueOfEncodedColor(
        {rgb.redF(), rgb.greenF(), rgb.blueF(), rgb.alphaF()}, 1.0 / parameters_.displayGamma(),
        sourceRep_ ? &sourceRep_->colorSpace() : nullptr, parameters_.colorSpaceModel());
    changeParameter(
        tr("Target Color"), kMergeTargetColor, ColorAndHue{targetColor_, parameters_.targetHue()},
        ColorAndHue{color, hue},
        [this](const ColorAndHue& value) { applyTargetColor(value.first, value.second); });
}

void TintorraVC::applyTargetColor(const QColor& color, double hue)
{
    targetColor_ = color;
    if (targetColorWell_ != nullptr) {
        targetColorWell_->setStyleSheet(
            color.isValid() ? QStringLiteral("background-color: %1").arg(color.name()) : QString());
    }
    ++undoSuspended_;
    setTargetHue(hue);
    --undoSuspended_;
}

void TintorraVC::setPreserveHue(bool preserve)
{
    changeParameter(tr("Hue preserving blends"), kMergePreserveHue, parameters_.preserveHue(),
                    preserve, [this](bool value) {
                        parameters_.setPreserveHue(value);
                        showParametersInControls();
                        processImage();
                    });
}

void TintorraVC::setBlendToFalloffHues(bool blend)
{
    changeParameter(tr("Blend to falloff hues"), kMergeBlend, parameters_.blendToFalloffHues(),
                    blend, [this](bool value) {
                        parameters_.setBlendToFalloffHues(value);
                        showParametersInControls();
                        processImage();
                    });
}

void TintorraVC::setColorSpaceModel(ColorSpaceModel model)
{
    changeParameter(tr("Color Mode"), kMergeColorMode, parameters_.colorSpaceModel(), model,
                    [this](ColorSpaceModel value) { applyColorSpaceModel(value); });
}

void TintorraVC::applyColorSpaceModel(ColorSpaceModel model)
{
    parameters_.setColorSpaceModel(model);
    hueSlider_->setColorSpaceModel(model);
    updateSourceSatAndBriSliderColors();
    targetHueSlider_->setColorSpaceModel(model);
    updateTargetSatAndBriSliderColors();
    showParametersInControls();
    // Both the gamut and the table are the mode's own; the rebuild reprocesses when done.
    colorGamut_.reset();
    colorTable_.reset();
    spectrum_.reset();
    describeImageInBackground();
}

void TintorraVC::setMaskToShow(int view)
{
    if (const auto mask = maskViewFromNumber(view)) {
        setMaskToShow(*mask);
    }
}

void TintorraVC::setMaskToShow(MaskView view)
{
    if (parameters_.maskToShow() == view) {
        return;
    }
    parameters_.setMaskToShow(view);
    showParametersInControls();
    emit maskToShowChanged(maskViewNumber(view));
    processImage();
}

void TintorraVC::invertSourceHueValues()
{
    deselectSelectionTools();
    const KVSliderValues& range = parameters_.sourceHueRange();
    const KVValueDictionary complement{
        {kSliderUpperFalloffKey, range.lower},
        {kSliderUpperKey, range.lowerFalloff},
        {kSliderLowerKey, range.upperFalloff},
        {kSliderLowerFalloffKey, range.upper},
    };
    setSourceHueValues(complement);
}

// --- Controls following the parameters ----------------------------------------------------------

void TintorraVC::showParametersInControls()
{
    if (hueSlider_ == nullptr) {
        return;
    }
    updatingControls_ = true;
    hueSlider_->model().takeValues(parameters_.sourceHueRange());
    satSlider_->model().takeValues(parameters_.sourceSatRange());
    briSlider_->model().takeValues(parameters_.sourceBriRange());
    targetHueSlider_->model().takeMiddleValue(parameters_.targetHue());
    targetSatSlider_->model().takeMiddleValue(parameters_.targetSat());
    targetBriSlider_->model().takeMiddleValue(parameters_.targetBri());
    targetTenBriSlider_->takeValues(parameters_.targetBriTenVals());
    for (QWidget* slider :
         {static_cast<QWidget*>(hueSlider_), static_cast<QWidget*>(satSlider_),
          static_cast<QWidget*>(briSlider_), static_cast<QWidget*>(targetHueSlider_),
          static_cast<QWidget*>(targetSatSlider_), static_cast<QWidget*>(targetBriSlider_),
          static_cast<QWidget*>(targetTenBriSlider_)}) {
        slider->update();
    }
    {
        const QSignalBlocker modeBlocker(colorModePopup_);
        colorModePopup_->setCurrentIndex(static_cast<int>(parameters_.colorSpaceModel()));
        const QSignalBlocker maskBlocker(maskPopup_);
        maskPopup_->setCurrentIndex(static_cast<int>(parameters_.maskToShow()));
        const QSignalBlocker preserveBlocker(preserveHueBox_);
        preserveHueBox_->setChecked(parameters_.preserveHue());
        const QSignalBlocker blendBlocker(blendBox_);
        blendBox_->setChecked(parameters_.blendToFalloffHues());
        const QSignalBlocker gammaBlocker(gammaField_);
        gammaField_->setValue(parameters_.displayGamma());
    }
    updatingControls_ = false;
}

} // namespace tintorra
