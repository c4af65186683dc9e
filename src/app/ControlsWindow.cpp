#include "app/ControlsWindow.h"

#include "colour/KVLChColor.h"
#include "editor/HueShiftParametersBuilder.h"
#include "engine/HueSpectrum.h"
#include "ui/KVBitmapPreview.h"
#include "ui/KVCircularSlider.h"
#include "ui/KVLChColorMetaType.h"
#include "ui/KVNotificationCenter.h"
#include "ui/KVTenSegmentSlider.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QVBoxLayout>
#include <cmath>
#include <numbers>

namespace tintorra {

namespace {

QString degrees(double fraction)
{
    return QString::number(fraction * 360.0, 'f', 1) + QStringLiteral("°");
}

QString percent(double fraction)
{
    return QString::number(fraction * 100.0, 'f', 0) + QStringLiteral("%");
}

QGroupBox* group(const QString& title, QWidget* parent)
{
    auto* box = new QGroupBox(title, parent);
    box->setLayout(new QGridLayout);
    return box;
}

} // namespace

namespace {
constexpr int kPreviewSide = 360;
} // namespace

ControlsWindow::ControlsWindow(Engine& engine, KVBitmapPtr image, QWidget* parent)
    : QMainWindow(parent), engine_(engine), image_(std::move(image)),
      shifter_(engine, [this](std::uint64_t request, Result<KVBitmapPtr> result) {
          if (!result) {
              return;
          }
          // Made here, off the main thread, which only shows it.
          QImage preview = previewImage(result.value(), kPreviewSide);
          QMetaObject::invokeMethod(
              this, [this, request, preview] { showShifted(request, preview); },
              Qt::QueuedConnection);
      })
{
    setWindowTitle(tr("Tintorra"));
    buildControls();
    parametersChanged();
    describeImageInBackground();
}

ControlsWindow::~ControlsWindow() = default;

void ControlsWindow::buildControls()
{
    auto* central = new QWidget(this);
    auto* columns = new QGridLayout(central);

    QGroupBox* selection = group(tr("Selection"), central);
    auto* selectionGrid = static_cast<QGridLayout*>(selection->layout());
    // Rings keep their square: the form follows the aspect of the frame.
    sourceHue_ = new KVCircularSlider(QSize(200, 200), selection);
    sourceHue_->setFixedSize(200, 200);
    sourceHue_->setObjectName(QStringLiteral("sourceHue"));
    sourceHue_->setToolTip(tr("The hues to change: drag the middle, the bounds or the fall-offs"));
    sourceHue_->setValues(parameters_.sourceHueRange());
    sourceSaturation_ = new KVCircularSlider(QSize(240, 36), selection);
    sourceSaturation_->setToolTip(tr("The saturations to change"));
    sourceSaturation_->setValues(parameters_.sourceSatRange());
    sourceBrightness_ = new KVCircularSlider(QSize(240, 36), selection);
    sourceBrightness_->setToolTip(tr("The brightnesses to change"));
    sourceBrightness_->setValues(parameters_.sourceBriRange());
    selectionGrid->addWidget(sourceHue_, 0, 0, 1, 2, Qt::AlignHCenter);
    selectionGrid->addWidget(new QLabel(tr("Saturation"), selection), 1, 0);
    selectionGrid->addWidget(sourceSaturation_, 1, 1);
    selectionGrid->addWidget(new QLabel(tr("Brightness"), selection), 2, 0);
    selectionGrid->addWidget(sourceBrightness_, 2, 1);

    QGroupBox* target = group(tr("Target"), central);
    auto* targetGrid = static_cast<QGridLayout*>(target->layout());
    targetHue_ = new KVCircularSlider(QSize(200, 200), target);
    targetHue_->setFixedSize(200, 200);
    targetHue_->setObjectName(QStringLiteral("targetHue"));
    targetHue_->setToolTip(tr("The hue the selection moves to"));
    targetHue_->model().setShowsUpperLowerThumbs(false);
    targetHue_->model().setShowsUpperLowerFalloffThumbs(false);
    targetHue_->setMiddleValue(parameters_.targetHue());
    brightnessCurve_ = new KVTenSegmentSlider(target);
    brightnessCurve_->setToolTip(
        tr("The brightness curve: output brightness for inputs 0% to 100% of the selection"));
    brightnessCurve_->setMinimumSize(240, 120);
    targetGrid->addWidget(targetHue_, 0, 0, Qt::AlignHCenter);
    targetGrid->addWidget(new QLabel(tr("Brightness curve"), target), 1, 0);
    targetGrid->addWidget(brightnessCurve_, 2, 0);

    spectrum_ = new KVLChSpectrumView(central);
    spectrum_->setToolTip(tr("The image's colours by hue: click to select a hue, Ctrl-click for "
                             "the next graph, Alt-click for the other scale"));
    spectrum_->setMinimumSize(480, 160);
    spectrum_->setColorSpaceModel(parameters_.colorSpaceModel());
    spectrum_->setDrawLog(true);

    preview_ = new QLabel(central);
    preview_->setObjectName(QStringLiteral("preview"));
    preview_->setToolTip(tr("The image with the selection shifted"));
    preview_->setAlignment(Qt::AlignCenter);
    preview_->setMinimumSize(kPreviewSide, kPreviewSide);
    preview_->setPixmap(QPixmap::fromImage(previewImage(image_, kPreviewSide)));

    summary_ = new QLabel(central);
    summary_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    summary_->setWordWrap(true);
    summary_->setObjectName(QStringLiteral("summary"));

    columns->addWidget(selection, 0, 0);
    columns->addWidget(target, 0, 1);
    columns->addWidget(preview_, 0, 2, 2, 1);
    columns->addWidget(spectrum_, 1, 0, 1, 2);
    columns->addWidget(summary_, 2, 0, 1, 3);
    setCentralWidget(central);

    connect(sourceHue_, &KVCircularSlider::valuesChanged, this, [this](const KVSliderValues& v) {
        parameters_.setSourceHueRange(v);
        parametersChanged();
    });
    connect(sourceSaturation_, &KVCircularSlider::valuesChanged, this,
            [this](const KVSliderValues& v) {
                parameters_.setSourceSatRange(v);
                parametersChanged();
            });
    connect(sourceBrightness_, &KVCircularSlider::valuesChanged, this,
            [this](const KVSliderValues& v) {
                parameters_.setSourceBriRange(v);
                parametersChanged();
            });
    connect(targetHue_, &KVCircularSlider::middleValueChanged, this, [this](double hue) {
        parameters_.setTargetHue(hue);
        parametersChanged();
    });
    connect(brightnessCurve_, &KVTenSegmentSlider::valuesChanged, this,
            [this](const KVValueDictionary& curve) {
                parameters_.setTargetBriTenVals(curve);
                parametersChanged();
            });
    // A click on a band of the spectrogram centres the selection on that band's hue.
    KVNotificationCenter::defaultCenter().addObserver(
        kUserClickedOnLChColorNotification, this, [this](const KVNotification& notification) {
            if (notification.object != spectrum_) {
                return;
            }
            const auto color =
                notification.userInfo.value(QStringLiteral("color")).value<KVLChColor>();
            double hue = color.hue() / (2.0 * std::numbers::pi);
            hue -= std::floor(hue);
            sourceHue_->setMiddleValue(hue);
        });
}

void ControlsWindow::describeImageInBackground()
{
    const ColorSpaceModel model = parameters_.colorSpaceModel();
    const double imageGamma = 1.0 / parameters_.displayGamma();
    describing_ = std::jthread([this, model, imageGamma](std::stop_token stop) {
        auto gamut = engine_.buildGamut(image_->colorSpace(), model, stop);
        auto table = engine_.buildColorTable(image_, imageGamma, model, stop);
        if (!gamut || !table) {
            return;
        }
        auto spectrum =
            std::make_shared<const LChSpectrum>(createLChSpectrumFromLChColorTable(*table.value()));
        QMetaObject::invokeMethod(
            this,
            [this, gamut = gamut.take(), table = table.take(), spectrum] {
                showImageDescription(gamut, table, spectrum);
            },
            Qt::QueuedConnection);
    });
}

void ControlsWindow::showImageDescription(KVColorGamutPtr gamut, ColorTablePtr table,
                                          LChSpectrumPtr spectrum)
{
    gamut_ = gamut;
    table_ = std::move(table);
    spectrumData_ = spectrum;
    sourceHue_->setColorGamut(gamut);
    targetHue_->setColorGamut(gamut);
    spectrum_->setColorGamut(gamut);
    spectrum_->setSpectrum(std::move(spectrum));
    requestShift();
}

void ControlsWindow::requestShift()
{
    if (table_ == nullptr) {
        return; // the image's description is still being built
    }
    HueShiftContext context;
    context.gamut = gamut_;
    context.colorTable = table_.get();
    context.spectrum = spectrumData_.get();
    shifter_.submit({image_, nullptr, hueShiftParameters(parameters_, context), table_});
}

void ControlsWindow::showShifted(std::uint64_t request, const QImage& preview)
{
    if (request <= shownRequest_) {
        return;
    }
    shownRequest_ = request;
    preview_->setPixmap(QPixmap::fromImage(preview));
}

void ControlsWindow::parametersChanged()
{
    const KVSliderValues& hue = parameters_.sourceHueRange();
    const KVSliderValues& saturation = parameters_.sourceSatRange();
    const KVSliderValues& brightness = parameters_.sourceBriRange();
    summary_->setText(tr("Selection: hue %1 (%2 to %3, fall-offs to %4 and %5), saturation %6 to "
                         "%7, brightness %8 to %9. Target hue: %10.")
                          .arg(degrees(hue.middle), degrees(hue.lower), degrees(hue.upper),
                               degrees(hue.lowerFalloff), degrees(hue.upperFalloff),
                               percent(saturation.lower), percent(saturation.upper),
                               percent(brightness.lower), percent(brightness.upper))
                          .arg(degrees(parameters_.targetHue())));
    requestShift();
}

} // namespace tintorra
