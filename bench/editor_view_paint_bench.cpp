// How fast the editor view shows a 24-megapixel photograph: a new result of the same size at
// fit-to-window (from the hand-over to the painted window), a zoom step, and a scroll at 100 %.
// Each figure is the time until the view has painted the right pixels, the renders running on
// the view's worker as in the program. Run on the offscreen platform with TINTORRA_BENCH_IMAGE
// set (see BenchImage.h).
#include "BenchImage.h"
#include "app/KVImageEditorView.h"
#include "app/KVImageRenderer.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QScrollArea>
#include <QScrollBar>
#include <memory>

using namespace tintorra;

namespace {

constexpr QSize kWindowSize(1280, 800);

struct ShownView {
    ShownView()
    {
        area.reset(view->scrollWidget());
        area->resize(kWindowSize);
        area->show();
    }
    // Waits (in the event loop, as the program would) for the next render to land, then paints.
    void waitAndPaint(std::uint64_t rendersBefore)
    {
        while (view->displayCache().rendersTaken() == rendersBefore)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        view->repaint();
    }
    // Paints until the view shows the right pixels at its current place and zoom, letting the
    // worker deliver in between.
    void paintUntilShown()
    {
        for (;;) {
            view->repaint();
            if (view->displayCache().covers(view->visibleDeviceRect(), view->deviceScale()))
                return;
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
    }
    KVImageEditorView* view = new KVImageEditorView;
    std::unique_ptr<QWidget> area;
};

// Two results of the same size, as the editor hands them over one after another.
KVBitmapPtr otherResult(const KVBitmapPtr& image)
{
    static KVBitmapPtr other;
    if (!other) {
        other = image->copy();
        std::uint8_t* data = other->bitmapData();
        for (std::size_t i = 0; i < other->sampleBytes(); i += 3)
            data[i] = static_cast<std::uint8_t>(255 - data[i]);
    }
    return other;
}

void BM_NewResultAtFit(benchmark::State& state)
{
    const KVBitmapPtr image = bench::benchImage(state.range(0) != 0, false);
    if (!image) {
        bench::skipWithoutImage(state);
        return;
    }
    ShownView shown;
    shown.view->setImageReps({image});
    shown.waitAndPaint(0);
    const KVBitmapPtr results[2] = {otherResult(image), image};
    int next = 0;
    for (auto _ : state) {
        const std::uint64_t before = shown.view->displayCache().rendersTaken();
        QElapsedTimer timer;
        timer.start();
        shown.view->setImageReps({results[next]});
        shown.waitAndPaint(before);
        state.SetIterationTime(static_cast<double>(timer.nsecsElapsed()) * 1e-9);
        next = 1 - next;
        // The overview and anything else queued finish outside the timed part.
        shown.view->displayCache().waitForWorker();
        QCoreApplication::processEvents();
    }
    state.counters["zoom"] = shown.view->currentZoomFactor();
}

void BM_ZoomStep(benchmark::State& state)
{
    const KVBitmapPtr image = bench::benchImage(false, false);
    if (!image) {
        bench::skipWithoutImage(state);
        return;
    }
    ShownView shown;
    shown.view->setImageReps({image});
    shown.waitAndPaint(0);
    const double from = static_cast<double>(state.range(0)) / 100.0;
    shown.view->zoomToFactor(from, QPointF(3000, 2000));
    shown.paintUntilShown();
    shown.view->displayCache().waitForWorker();
    QCoreApplication::processEvents();
    bool in = true;
    for (auto _ : state) {
        QElapsedTimer timer;
        timer.start();
        in ? shown.view->zoomIn() : shown.view->zoomOut();
        shown.paintUntilShown();
        state.SetIterationTime(static_cast<double>(timer.nsecsElapsed()) * 1e-9);
        in = !in;
        shown.view->displayCache().waitForWorker();
        QCoreApplication::processEvents();
    }
}

// A scroll of 40 pixels at 100 %: only the strip that came into view is rendered.
void BM_ScrollAtActualSize(benchmark::State& state)
{
    const KVBitmapPtr image = bench::benchImage(false, false);
    if (!image) {
        bench::skipWithoutImage(state);
        return;
    }
    ShownView shown;
    shown.view->setImageReps({image});
    shown.waitAndPaint(0);
    shown.view->zoomToFactor(1.0, QPointF(3000, 2000));
    shown.paintUntilShown();
    QScrollBar* bar = static_cast<QScrollArea*>(shown.view->scrollWidget())->verticalScrollBar();
    int direction = 1;
    for (auto _ : state) {
        if (bar->value() + 200 > bar->maximum() || bar->value() < 200)
            direction = -direction;
        QElapsedTimer timer;
        timer.start();
        bar->setValue(bar->value() + 40 * direction);
        shown.paintUntilShown();
        state.SetIterationTime(static_cast<double>(timer.nsecsElapsed()) * 1e-9);
    }
}

// The render alone, without the event loop: the part of the above that scales and converts.
void BM_RenderVisibleAtFit(benchmark::State& state)
{
    const KVBitmapPtr image = bench::benchImage(state.range(1) != 0, false);
    if (!image) {
        bench::skipWithoutImage(state);
        return;
    }
    KVRenderSource source;
    source.image = image;
    const double scale = 0.1995;
    const QRect rect(0, 0, 1197, 798);
    for (auto _ : state)
        benchmark::DoNotOptimize(
            renderImageRegion(source, rect, scale, static_cast<int>(state.range(0))));
}

} // namespace

BENCHMARK(BM_RenderVisibleAtFit)
    ->Args({1, 0})
    ->Args({2, 0})
    ->Args({1, 1})
    ->Args({2, 1})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(BM_NewResultAtFit)
    ->Arg(0)
    ->Arg(1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(40);
BENCHMARK(BM_ZoomStep)
    ->Arg(20)
    ->Arg(100)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(30);
BENCHMARK(BM_ScrollAtActualSize)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(100);

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
