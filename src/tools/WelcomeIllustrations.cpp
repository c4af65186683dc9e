#include "tools/WelcomeIllustrations.h"

#include "colour/IccProfiles.h"
#include "editor/HueShiftParametersBuilder.h"
#include "editor/ShiftRecordEncoding.h"
#include "engine/Engine.h"
#include "engine/HueSpectrum.h"
#include "tools/IconPainter.h"
#include "ui/KVBitmapPreview.h"
#include "ui/KVCircularSlider.h"
#include "ui/KVCircularSliderGeometry.h"
#include "ui/KVLChSpectrumView.h"
#include "ui/KVTenSegmentSlider.h"

#include <QPainter>
#include <cstdio>
#include <cstdlib>

namespace tintorra {

namespace {

constexpr int kImageSide = 640;
constexpr qreal kPrintScale = 2.0;

// The shift the pages show: the icon's blue disc and the blues of its ring turned to orange.
KVHueShiftParameterSet tourParameters()
{
    KVHueShiftParameterSet set;
    const double middle = 250.0 / 360.0;
    set.setSourceHueRange({middle + 0.07, middle + 0.04, middle, middle - 0.04, middle - 0.07});
    set.setTargetHue(35.0 / 360.0);
    return set;
}

[[noreturn]] void fail(const char* what)
{
    std::fprintf(stderr, "tintorra-welcome-pdf: %s\n", what);
    std::exit(1);
}

QPixmap rendered(QWidget& widget, QSize size)
{
    widget.resize(size);
    widget.ensurePolished();
    QPixmap pixmap(size * kPrintScale);
    pixmap.setDevicePixelRatio(kPrintScale);
    pixmap.fill(Qt::transparent);
    widget.render(&pixmap, QPoint(), QRegion(), QWidget::DrawChildren);
    return pixmap;
}

} // namespace

struct WelcomeIllustrations::State {
    Engine engine;
    KVHueShiftParameterSet parameters = tourParameters();
    KVBitmapPtr source;
    KVColorGamutPtr gamut;
    ColorTablePtr table;
    LChSpectrumPtr spectrum;
    KVBitmapPtr shifted;
    KVBitmapPtr mask;
    QString parameterString;

    KVBitmapPtr run(MaskView maskToShow, QString* encoded = nullptr)
    {
        KVHueShiftParameterSet set = parameters;
        set.setMaskToShow(maskToShow);
        HueShiftContext context;
        context.gamut = gamut;
        context.colorTable = table.get();
        context.spectrum = spectrum.get();
        const HueShiftParameters record = hueShiftParameters(set, context);
        if (encoded != nullptr) {
            *encoded = QString::fromStdString(hexEncodedStringFromHueShiftParameters(record));
        }
        auto result = engine.shift({source, nullptr, record, table});
        if (!result) {
            fail("the sample image could not be shifted");
        }
        return result.take();
    }
};

WelcomeIllustrations::WelcomeIllustrations() : state_(std::make_unique<State>())
{
    State& s = *state_;
    s.source = paintTintorraIcon(kImageSide);
    if (!s.source) {
        fail("no memory for the sample image");
    }
    const ColorSpaceModel model = s.parameters.colorSpaceModel();
    auto gamut = s.engine.buildGamut(s.source->colorSpace(), model);
    auto table = s.engine.buildColorTable(s.source, 1.0 / s.parameters.displayGamma(), model);
    if (!gamut || !table) {
        fail("the sample image could not be described");
    }
    s.gamut = gamut.take();
    s.table = table.take();
    s.spectrum = std::make_shared<const LChSpectrum>(createLChSpectrumFromLChColorTable(*s.table));
    s.shifted = s.run(MaskView::shiftedImage, &s.parameterString);
    s.mask = s.run(MaskView::blackMask);
}

WelcomeIllustrations::~WelcomeIllustrations() = default;

QImage WelcomeIllustrations::sourceImage() const
{
    return previewImage(state_->source, kImageSide);
}

QImage WelcomeIllustrations::shiftedImage() const
{
    return previewImage(state_->shifted, kImageSide);
}

QImage WelcomeIllustrations::maskImage() const
{
    return previewImage(state_->mask, kImageSide);
}

QString WelcomeIllustrations::parameterString() const
{
    return state_->parameterString;
}

QPixmap WelcomeIllustrations::selectionHueRing(int side, std::optional<KVSliderValues> values) const
{
    KVCircularSlider ring(QSize(side, side));
    ring.setColorGamut(state_->gamut);
    ring.setValues(values.value_or(state_->parameters.sourceHueRange()));
    return rendered(ring, QSize(side, side));
}

std::array<QPointF, 3> WelcomeIllustrations::selectionThumbs(int side,
                                                             const KVSliderValues& values) const
{
    KVCircularSlider ring(QSize(side, side));
    ring.setValues(values);
    const KVCircularSliderGeometry geometry(QSizeF(side, side), ring.model());
    return {geometry.pointForValue(values.middle), geometry.pointForValue(values.upper),
            geometry.pointForValue(values.upperFalloff)};
}

QPixmap WelcomeIllustrations::targetHueRing(int side) const
{
    KVCircularSlider ring(QSize(side, side));
    ring.model().setShowsUpperLowerThumbs(false);
    ring.model().setShowsUpperLowerFalloffThumbs(false);
    ring.setColorGamut(state_->gamut);
    ring.setMiddleValue(state_->parameters.targetHue());
    return rendered(ring, QSize(side, side));
}

QPixmap WelcomeIllustrations::saturationSlider(QSize size) const
{
    KVCircularSlider slider(size);
    slider.setValues({1.0, 0.95, 0.6, 0.25, 0.15});
    return rendered(slider, size);
}

QPixmap WelcomeIllustrations::brightnessCurve(QSize size) const
{
    // A gentle S-curve shows better what the thumbs do than the identity the shift uses.
    const KVTenSegmentValues sCurve{0.0, 0.05, 0.12, 0.22, 0.35, 0.5, 0.65, 0.78, 0.88, 0.95, 1.0};
    KVTenSegmentSlider curve;
    curve.setValues(dictionaryFromTenSegmentValues(sCurve));
    return rendered(curve, size);
}

QPixmap WelcomeIllustrations::spectrogram(QSize size) const
{
    KVLChSpectrumView view;
    view.setColorSpaceModel(state_->parameters.colorSpaceModel());
    view.setColorGamut(state_->gamut);
    view.setDrawLog(true);
    view.setSpectrum(state_->spectrum);
    return rendered(view, size);
}

} // namespace tintorra
