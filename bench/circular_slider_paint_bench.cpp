// Repaints of the hue ring as a drag sees them: the still background comes from the cache, the
// selection, thumbs and (while dragging) the value label are drawn anew each time.
#include "colour/KVColorGamut.h"
#include "ui/KVCircularSlider.h"
#include "ui/KVCircularSliderGeometry.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QImage>
#include <QMouseEvent>
#include <cmath>
#include <memory>

using namespace tintorra;

namespace {

constexpr QSize kRingSize(200, 200);

struct Ring {
    explicit Ring(qreal dpr) : image(kRingSize * dpr, QImage::Format_ARGB32_Premultiplied)
    {
        static const KVColorGamutPtr gamut = std::make_shared<const KVColorGamut>();
        slider.setColorGamut(gamut);
        image.setDevicePixelRatio(dpr);
        // The first render builds the background; every later one reuses it.
        slider.render(&image);
    }

    void send(QEvent::Type type, double value, Qt::MouseButtons buttons)
    {
        const QPointF point =
            KVCircularSliderGeometry(slider.size(), slider.model()).pointForValue(value);
        QMouseEvent event(type, point, slider.mapToGlobal(point), Qt::LeftButton, buttons,
                          Qt::NoModifier);
        QCoreApplication::sendEvent(&slider, &event);
    }

    KVCircularSlider slider{kRingSize};
    QImage image;
};

// The middle set from outside (a binding) between renders; the degree field shows.
void BM_RingRenderMiddleChanging(benchmark::State& state)
{
    Ring ring(static_cast<qreal>(state.range(0)));
    double middle = 0.0;
    for (auto _ : state) {
        middle = std::fmod(middle + 0.013, 1.0);
        ring.slider.setMiddleValue(middle);
        ring.slider.render(&ring.image);
        benchmark::DoNotOptimize(ring.image.constBits());
    }
    state.counters["backgroundBuilds"] = ring.slider.backgroundBuildCount();
}

// A real drag of the middle thumb: each step is a mouse move (hit test, value rules, signals)
// and a render with the value label in place of the field.
void BM_RingDragMiddle(benchmark::State& state)
{
    Ring ring(static_cast<qreal>(state.range(0)));
    ring.send(QEvent::MouseButtonPress, 0.0, Qt::LeftButton);
    double pointer = 0.0;
    for (auto _ : state) {
        pointer = std::fmod(pointer + 0.013, 1.0);
        ring.send(QEvent::MouseMove, pointer, Qt::LeftButton);
        ring.slider.render(&ring.image);
        benchmark::DoNotOptimize(ring.image.constBits());
    }
    ring.send(QEvent::MouseButtonRelease, pointer, Qt::NoButton);
    state.counters["backgroundBuilds"] = ring.slider.backgroundBuildCount();
}

BENCHMARK(BM_RingRenderMiddleChanging)
    ->ArgName("dpr")
    ->Arg(1)
    ->Arg(2)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_RingDragMiddle)->ArgName("dpr")->Arg(1)->Arg(2)->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char** argv)
{
    // No display is needed: the widget only ever renders into images.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
