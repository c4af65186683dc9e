// Tools, eyedroppers, the pixel readout, spectrogram clicks, hovering and the saved sets.
#include "colour/HueAngles.h"
#include "colour/KVLChColor.h"
#include "editor/EyedropperRules.h"
#include "editor/PixelColorReport.h"
#include "engine/HueShiftParameters.h"
#include "ui/KVCircularSlider.h"
#include "ui/KVLChColorMetaType.h"
#include "ui/KVNotificationCenter.h"
#include "ui/KVPixelReadout.h"
#include "ui/KVSavedSetsPopup.h"
#include "ui/KVSelectionSetSaveSheet.h"
#include "ui/KVTenSegmentSlider.h"
#include "ui/TintorraVC.h"

#include <QApplication>
#include <QLabel>
#include <QListWidget>
#include <QStackedWidget>
#include <QToolButton>
#include <cstdio>

namespace tintorra {

// --- Tools ---------------------------------------------------------------------------------------

QToolButton* TintorraVC::toolButton(int tag) const
{
    return tag >= 1 && tag <= static_cast<int>(toolButtons_.size())
               ? toolButtons_[static_cast<std::size_t>(tag - 1)]
               : nullptr;
}

int TintorraVC::currentSelectionTool() const
{
    for (const QToolButton* button : toolButtons_) {
        if (button->isChecked()) {
            return button->property("tag").toInt();
        }
    }
    return -1;
}

void TintorraVC::pressToolButton(int tag)
{
    const QToolButton* pressed = toolButton(tag);
    if (pressed == nullptr) {
        return;
    }
    const bool brushBefore =
        currentSelectionTool() == kToolMaskPaintbrush || tag == kToolMaskPaintbrush;
    for (QToolButton* button : toolButtons_) {
        if (button != pressed) {
            button->setChecked(false);
        }
    }
    if (tag == kToolMaskPaintbrush && exMaskRep_ == nullptr) {
        exclusionMaskForPainting();
        processImage();
    }
    if (brushBefore) {
        // The brush shows the masks unlimited by the painted ones, so the picture changes.
        if (parameters_.maskToShow() == MaskView::blackMask) {
            processImage();
        } else {
            emit imageNeedsDisplay();
            KVNotificationCenter::defaultCenter().post(kImageNeedsDisplayNotification, this);
        }
    }
    emit toolButtonPressed(tag);
    KVNotificationCenter::defaultCenter().post(kToolButtonPressedNotification, this,
                                               {{QStringLiteral("tag"), tag}});
}

void TintorraVC::deselectSelectionTools()
{
    for (int tag = kToolSetSelectionHue; tag <= kToolSetTargetHue; ++tag) {
        toolButton(tag)->setChecked(false);
    }
}

// --- Eyedroppers ---------------------------------------------------------------------------------

std::optional<double> TintorraVC::hueOfPixel(QPoint pixel, const KVBitmapPtr& image) const
{
    const auto report = pixelColorReport(image, pixel.x(), pixel.y(),
                                         1.0 / parameters_.displayGamma(), colorGamut_.get());
    if (!report) {
        return std::nullopt;
    }
    return normalizedHueForColorModel(*report, parameters_.colorSpaceModel());
}

void TintorraVC::setSelectionHueSliderValue(QPoint pixel, const KVBitmapPtr& image)
{
    if (const auto hue = hueOfPixel(pixel, image)) {
        hueSlider_->setMiddleValue(*hue);
        selectionSetsPopup_->clearSelection();
    }
}

void TintorraVC::addSelectionHueSliderValue(QPoint pixel, const KVBitmapPtr& image)
{
    if (const auto hue = hueOfPixel(pixel, image)) {
        addSelectionHue(*hue);
    }
}

void TintorraVC::subtractSelectionHueSliderValue(QPoint pixel, const KVBitmapPtr& image)
{
    if (const auto hue = hueOfPixel(pixel, image)) {
        subtractSelectionHue(*hue);
    }
}

void TintorraVC::setTargetHueSliderValue(QPoint pixel, const KVBitmapPtr& image)
{
    if (const auto hue = hueOfPixel(pixel, image)) {
        targetHueSlider_->setMiddleValue(*hue);
    }
}

namespace {

void moveBound(KVCircularSlider* slider, const HueBoundMove& move)
{
    if (move.bound == HueBoundMove::Bound::upper) {
        slider->model().setUpperValue(move.value);
    } else if (move.bound == HueBoundMove::Bound::lower) {
        slider->model().setLowerValue(move.value);
    }
}

} // namespace

void TintorraVC::addSelectionHue(double hue)
{
    const KVCircularSliderModel& model = hueSlider_->model();
    moveBound(hueSlider_, hueBoundToAdd(model.upperValue(), model.lowerValue(), hue));
    selectionSetsPopup_->clearSelection();
}

void TintorraVC::subtractSelectionHue(double hue)
{
    const KVCircularSliderModel& model = hueSlider_->model();
    moveBound(hueSlider_, hueBoundToSubtract(model.upperValue(), model.lowerValue(), hue));
    selectionSetsPopup_->clearSelection();
}

void TintorraVC::spectrumClicked(const KVNotification& notification, bool add)
{
    const auto* clickedWindow = notification.userInfo.value(kSpectrumWindowKey).value<QWidget*>();
    if (clickedWindow != window()) {
        return;
    }
    const auto color = notification.userInfo.value(kSpectrumColorKey).value<KVLChColor>();
    const double period = isLchColorMode(parameters_.colorSpaceModel()) ? kTwoPi : 1.0;
    const double hue = fractionalPart(color.hue() / period);
    if (add) {
        addSelectionHue(hue);
    } else {
        hueSlider_->setMiddleValue(hue);
        selectionSetsPopup_->clearSelection();
    }
}

// --- Readout -------------------------------------------------------------------------------------

void TintorraVC::mouseMovedOverImage(QPoint pixel, const KVBitmapPtr& image)
{
    const auto report = pixel.x() < 0 || pixel.y() < 0
                            ? std::nullopt
                            : pixelColorReport(image, pixel.x(), pixel.y(),
                                               1.0 / parameters_.displayGamma(), colorGamut_.get());
    if (!report) {
        pixelPropertiesHeader_->setText(emptyPixelReadoutHeader());
        for (QLabel* column : pixelPropertiesColumns_) {
            column->clear();
        }
        return;
    }
    const ColorSpaceModel model = parameters_.colorSpaceModel();
    const KVPixelReadout readout = pixelReadout(*report, model);
    pixelPropertiesHeader_->setText(readout.header);
    for (std::size_t i = 0; i < pixelPropertiesColumns_.size(); ++i) {
        pixelPropertiesColumns_[i]->setText(readout.columns[static_cast<qsizetype>(i)]);
    }
}

void TintorraVC::debugImagePixel(QPoint pixel, const KVBitmapPtr& image)
{
    const auto report = pixelColorReport(image, pixel.x(), pixel.y(),
                                         1.0 / parameters_.displayGamma(), colorGamut_.get());
    if (report) {
        const QString text = pixelDescription(*report, parameters_.colorSpaceModel());
        std::fprintf(stderr, "%s\n", text.toUtf8().constData());
    }
}

QString TintorraVC::pixelPropertiesHeader() const
{
    return pixelPropertiesHeader_->text();
}

QStringList TintorraVC::pixelPropertiesColumns() const
{
    QStringList columns;
    for (const QLabel* column : pixelPropertiesColumns_) {
        columns << column->text();
    }
    return columns;
}

QString TintorraVC::sourceRepPropertiesHeader() const
{
    return sourceRepPropertiesHeader_->text();
}

QString TintorraVC::sourceRepProperties() const
{
    return sourceRepProperties_->text();
}

// --- Hovering over the target sliders
// ----------------------------------------------------------------

QString TintorraVC::targetHoverText() const
{
    return targetHoverLabel_->text();
}

void TintorraVC::targetSliderHovered(const KVNotification& notification)
{
    QObject* const slider = notification.object;
    if (slider != targetHueSlider_ && slider != targetSatSlider_ && slider != targetTenBriSlider_) {
        return;
    }
    if (notification.userInfo.isEmpty()) {
        targetHoverLabel_->clear();
        return;
    }
    const double value = notification.userInfo.cbegin().value().toDouble();
    if (slider == targetHueSlider_) {
        targetHoverLabel_->setText(
            tr("Hue %1\u00B0").arg(fractionalPart(value) * 360.0, 0, 'f', 1));
    } else if (slider == targetSatSlider_) {
        targetHoverLabel_->setText(tr("Saturation %1%").arg(value * 100.0, 0, 'f', 0));
    } else {
        targetHoverLabel_->setText(tr("Brightness %1%").arg(value * 100.0, 0, 'f', 0));
    }
}

// --- Saved sets
// ------------------------------------------------------------------------------------

void TintorraVC::chooseSelectionSet(const QString& name, const QVariantMap& set)
{
    setSelectionSettings(set);
    selectionSetsPopup_->selectSet(name);
    updateSourceSatAndBriSliderColors();
}

void TintorraVC::chooseTargetSet(const QString& name, const QVariantMap& set)
{
    setTargetSettings(set);
    targetSetsPopup_->selectSet(name);
}

void TintorraVC::openSaveSheet(KVSavedSetsPopup* popup)
{
    setsPopupInUse_ = popup;
    saveSheet_->open();
}

void TintorraVC::openManageTab(KVSavedSetsPopup* popup)
{
    setsPopupInUse_ = popup;
    auto* list = selectionTabView_->findChild<QListWidget*>(QStringLiteral("savedSetsList"));
    list->clear();
    list->addItems(popup->setNames());
    selectionTabView_->setCurrentIndex(1);
}

bool TintorraVC::closeSelectionSetSaveSheet(bool saveButton)
{
    KVSavedSetsPopup* popup = setsPopupInUse_ ? setsPopupInUse_ : selectionSetsPopup_;
    if (saveButton) {
        const QString name = saveSheet_->name();
        const QVariantMap settings = popup == targetSetsPopup_ ? dictionaryOfTargetSettings()
                                                               : dictionaryOfSelectionSettings();
        if (!popup->saveSet(name, settings)) {
            QApplication::beep();
            return false;
        }
        popup->buildMenu();
        popup->selectSet(name);
    } else {
        popup->clearSelection();
    }
    saveSheet_->hide();
    return true;
}

} // namespace tintorra
