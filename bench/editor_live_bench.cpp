// The editing panel live on a 24-megapixel photograph, offscreen: how long a slider change takes
// to come back as a shifted picture on the main thread while changes stream in at 60 per second,
// and the longest the main thread's event loop stays busy meanwhile (a stall the user would feel).
//
// Uses the photograph of TINTORRA_BENCH_IMAGE (see BenchImage.h) when set, else generates a
// photo-like 6000 x 4000 picture. Prints medians and worst cases in milliseconds and as multiples
// (M) of a 96 MB memcpy timed in the same run.
#include "BenchImage.h"
#include "colour/HueAngles.h"
#include "editor/HueShiftParametersBuilder.h"
#include "engine/HueSpectrum.h"
#include "ui/KVCircularSlider.h"
#include "ui/KVSettings.h"
#include "ui/TintorraVC.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTimer>
#include <QUndoStack>
#include <cmath>
#include <cstdio>
#include <map>
#include <random>

using namespace tintorra;

namespace {

using Clock = std::chrono::steady_clock;

double msSince(Clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

// Smooth value noise: a coarse random grid interpolated with a smoothstep.
class ValueNoise {
public:
    ValueNoise(int cells, std::uint32_t randomStart)
        : cells_(cells), grid_((cells + 1) * (cells + 1))
    {
        std::mt19937 random(randomStart);
        std::uniform_real_distribution<float> unit(0.0f, 1.0f);
        for (float& v : grid_) {
            v = unit(random);
        }
    }
    float at(float u, float v) const
    {
        const float x = u * float(cells_), y = v * float(cells_);
        const int x0 = std::min(int(x), cells_ - 1), y0 = std::min(int(y), cells_ - 1);
        const float fx = smooth(x - float(x0)), fy = smooth(y - float(y0));
        const auto g = [&](int i, int j) { return grid_[std::size_t(j * (cells_ + 1) + i)]; };
        const float top = g(x0, y0) + (g(x0 + 1, y0) - g(x0, y0)) * fx;
        const float bottom = g(x0, y0 + 1) + (g(x0 + 1, y0 + 1) - g(x0, y0 + 1)) * fx;
        return top + (bottom - top) * fy;
    }

private:
    static float smooth(float t) { return t * t * (3.0f - 2.0f * t); }
    int cells_;
    std::vector<float> grid_;
};

// An evening scene: a sky from deep blue to orange, clouds, green hills and a dark foreground,
// with fine grain, so that it holds colours the way a photograph does.
KVBitmapPtr photoLikeImage(int wide, int high)
{
    KVBitmapLayout layout;
    layout.pixelsWide = wide;
    layout.pixelsHigh = high;
    layout.bitsPerSample = 8;
    layout.samplesPerPixel = 3;
    layout.hasAlpha = false;
    KVBitmapPtr image = KVBitmap::create(layout);
    const ValueNoise clouds(24, 7), hills(8, 11), texture(180, 13);
    std::mt19937 random(5);
    std::normal_distribution<float> grain(0.0f, 2.5f);
    for (int y = 0; y < high; ++y) {
        std::uint8_t* row = image->bitmapData() + std::int64_t(y) * image->bytesPerRow();
        const float v = float(y) / float(high);
        for (int x = 0; x < wide; ++x) {
            const float u = float(x) / float(wide);
            const float horizon = 0.55f + 0.12f * (hills.at(u, 0.3f) - 0.5f);
            float r, g, b;
            if (v < horizon) {
                const float t = v / horizon;
                const float cloud = std::max(0.0f, clouds.at(u, v * 2.0f) - 0.45f) * 1.6f;
                r = 20 + 230 * t * t + 120 * cloud;
                g = 40 + 120 * t + 60 * cloud * (1 - t);
                b = 120 + 60 * (1 - t) - 40 * t + 80 * cloud * (1 - t);
            } else {
                const float t = (v - horizon) / (1 - horizon);
                const float leaf = texture.at(u, v);
                r = 30 + 60 * leaf * (1 - t) + 40 * t;
                g = 70 + 110 * leaf * (1 - t) - 30 * t;
                b = 25 + 30 * leaf + 10 * t;
            }
            const float noise = grain(random);
            row[x * 3 + 0] = std::uint8_t(std::clamp(r + noise, 0.0f, 255.0f));
            row[x * 3 + 1] = std::uint8_t(std::clamp(g + noise, 0.0f, 255.0f));
            row[x * 3 + 2] = std::uint8_t(std::clamp(b + noise, 0.0f, 255.0f));
        }
    }
    return image;
}

double memcpyMilliseconds()
{
    std::vector<char> from(bench::kCopyBytes, 1), to(bench::kCopyBytes, 0);
    std::vector<double> runs;
    for (int i = 0; i < 7; ++i) {
        const auto start = Clock::now();
        std::memcpy(to.data(), from.data(), bench::kCopyBytes);
        benchmark::ClobberMemory();
        runs.push_back(msSince(start));
    }
    return bench::median(runs);
}

// The longest the main thread spends delivering one event (a slider change, a queued result, a
// paint, a timer): the time an input event that arrives meanwhile waits, a stall the user would
// feel. Measured around the application's event delivery, so it wakes nothing up, which on two
// cores would take time from the shifts.
class StallMeter : public QApplication {
public:
    using QApplication::QApplication;

    bool notify(QObject* receiver, QEvent* event) override
    {
        if (depth_++ > 0) {
            const bool handled = QApplication::notify(receiver, event);
            --depth_;
            return handled;
        }
        const auto start = Clock::now();
        const bool handled = QApplication::notify(receiver, event);
        worst_ = std::max(worst_,
                          std::chrono::duration<double, std::milli>(Clock::now() - start).count());
        --depth_;
        return handled;
    }
    void reset() { worst_ = 0.0; }
    double worst() const { return worst_; }

private:
    int depth_ = 0;
    double worst_ = 0.0;
};

void waitFor(const std::function<bool()>& done, int timeoutMs)
{
    QElapsedTimer timer;
    timer.start();
    while (!done() && timer.elapsed() < timeoutMs) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 10);
    }
}

// The fraction of the table's colours whose hue lies within `halfWidth` of `centre` (fractions).
double selectedFraction(const LChColorTable& table, double centre, double halfWidth)
{
    std::uint64_t inside = 0;
    for (std::uint64_t i = 0; i < table.count; ++i) {
        const double hue = hueFraction(table.colors[i].hue);
        if (std::abs(hueDifference(centre, hue, 1.0)) <= halfWidth) {
            ++inside;
        }
    }
    return double(inside) / double(table.count);
}

struct StreamFigures {
    std::vector<double> latencies; // per change: until a picture at least as new is shown
    int shown = 0;
    double worstStall = 0.0;
    double lastChangeToFinal = 0.0;
};

StreamFigures streamChanges(TintorraVC& vc, KVCircularSlider* target, StallMeter& stalls)
{
    constexpr int kChanges = 100;
    std::map<std::uint64_t, Clock::time_point> sent;
    std::vector<std::pair<std::uint64_t, Clock::time_point>> arrivals;
    const QMetaObject::Connection connection =
        QObject::connect(&vc, &TintorraVC::imageProcessed,
                         [&] { arrivals.emplace_back(vc.shownShift(), Clock::now()); });
    int sentCount = 0;
    Clock::time_point lastSent;
    QTimer timer;
    timer.setTimerType(Qt::PreciseTimer);
    timer.setInterval(1000 / 60);
    QObject::connect(&timer, &QTimer::timeout, [&] {
        target->setMiddleValue(std::fmod(0.3 + 0.004 * sentCount, 1.0));
        lastSent = Clock::now();
        sent[vc.lastRequestedShift()] = lastSent;
        if (++sentCount == kChanges) {
            timer.stop();
        }
    });
    stalls.reset();
    timer.start();
    waitFor([&] { return sentCount == kChanges && vc.shownShift() == vc.lastRequestedShift(); },
            60000);
    StreamFigures figures;
    figures.worstStall = stalls.worst();
    figures.shown = int(arrivals.size());
    for (const auto& [request, at] : sent) {
        for (const auto& [shown, when] : arrivals) {
            if (shown >= request) {
                figures.latencies.push_back(
                    std::chrono::duration<double, std::milli>(when - at).count());
                break;
            }
        }
    }
    if (!arrivals.empty()) {
        figures.lastChangeToFinal =
            std::chrono::duration<double, std::milli>(arrivals.back().second - lastSent).count();
    }
    QObject::disconnect(connection);
    return figures;
}

void printStream(const char* name, const StreamFigures& f, double yardstick)
{
    std::vector<double> sorted = f.latencies;
    std::sort(sorted.begin(), sorted.end());
    const double median = sorted.empty() ? 0.0 : bench::median(sorted);
    const double worst = sorted.empty() ? 0.0 : sorted.back();
    std::printf("%s: change -> imageProcessed median %.1f ms (%.2f M), worst %.1f ms (%.2f M) "
                "over %zu changes, %d pictures shown; longest main-thread stall %.1f ms; last "
                "change -> final picture %.1f ms\n",
                name, median, median / yardstick, worst, worst / yardstick, sorted.size(), f.shown,
                f.worstStall, f.lastChangeToFinal);
}

double synchronousShiftMilliseconds(Engine& engine, const KVBitmapPtr& image,
                                    const KVHueShiftParameterSet& parameters)
{
    const ColorSpaceModel model = parameters.colorSpaceModel();
    auto gamut = engine.buildGamut(image->colorSpace(), model).take();
    ColorTablePtr table =
        engine.buildColorTable(image, 1.0 / parameters.displayGamma(), model).take();
    const LChSpectrum spectrum = createLChSpectrumFromLChColorTable(*table);
    HueShiftContext context;
    context.gamut = gamut;
    context.colorTable = table.get();
    context.spectrum = &spectrum;
    const ShiftRequest request{image, nullptr, hueShiftParameters(parameters, context), table};
    std::vector<double> runs;
    for (int i = 0; i < 3; ++i) {
        const auto start = Clock::now();
        benchmark::DoNotOptimize(engine.shift(request).ok());
        runs.push_back(msSince(start));
    }
    return bench::median(runs);
}

} // namespace

int main(int argc, char* argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    StallMeter stalls(argc, argv);
    QTemporaryDir settingsFolder;
    KVSettings::redirectStandard(settingsFolder.filePath("bench.ini"));

    const double yardstick = memcpyMilliseconds();
    std::printf("memcpy of 96 MB: %.1f ms (M = 1)\n", yardstick);

    auto start = Clock::now();
    KVBitmapPtr image = bench::benchImage(false, false);
    const bool photograph = image != nullptr;
    if (!photograph) {
        image = photoLikeImage(6000, 4000);
    }
    std::printf("%s %lldx%lld, ready in %.0f ms\n",
                photograph ? "photograph" : "generated photo-like image",
                static_cast<long long>(image->pixelsWide()),
                static_cast<long long>(image->pixelsHigh()), msSince(start));

    EngineOptions options;
    options.keepsEntryMaps = true; // as the desktop program's engine
    Engine engine(options);
    std::printf("engine threads: %u\n", engine.threadCount());
    QUndoStack undoStack;
    TintorraVC vc(engine, &undoStack);
    vc.resize(400, 700);
    vc.show();
    auto* target = vc.findChild<KVCircularSlider*>(QStringLiteral("targetHueSlider"));

    // Opening: the table and gamut are built in the background.
    std::uint64_t firstShown = 0;
    Clock::time_point firstAt;
    QObject::connect(&vc, &TintorraVC::imageProcessed, [&] {
        if (firstShown == 0) {
            firstShown = vc.shownShift();
            firstAt = Clock::now();
        }
    });
    stalls.reset();
    start = Clock::now();
    vc.setImageReps({image});
    waitFor([&] { return firstShown != 0; }, 120000);
    std::printf("opening: first shifted picture after %.0f ms (%.1f M); longest main-thread stall "
                "%.1f ms\n",
                std::chrono::duration<double, std::milli>(firstAt - start).count(),
                std::chrono::duration<double, std::milli>(firstAt - start).count() / yardstick,
                stalls.worst());

    // About a tenth of the colours: a hue window around the hue of the image's first colour,
    // widened until it holds 10 %.
    ColorTablePtr table =
        engine.buildColorTable(image, 1.0 / vc.parameters().displayGamma(), ColorSpaceModel::LChuv)
            .take();
    const double centre = hueFraction(table->colors[table->count / 3].hue);
    double low = 0.0, high = 0.5;
    for (int i = 0; i < 30; ++i) {
        const double mid = 0.5 * (low + high);
        (selectedFraction(*table, centre, mid) < 0.10 ? low : high) = mid;
    }
    const double halfWidth = high;
    const double falloff = 2.0 / 360.0;
    std::printf("selection: hue %.1f deg +- %.1f deg (fall-offs %.0f deg) holds %.1f %% of %llu "
                "colours (with fall-offs %.1f %%)\n",
                centre * 360.0, halfWidth * 360.0, falloff * 360.0,
                100.0 * selectedFraction(*table, centre, halfWidth),
                static_cast<unsigned long long>(table->count),
                100.0 * selectedFraction(*table, centre, halfWidth + falloff));
    table.reset();
    vc.setSourceHueValues({{"upperFalloff", centre + halfWidth + falloff},
                           {"upper", centre + halfWidth},
                           {"middle", centre},
                           {"lower", centre - halfWidth},
                           {"lowerFalloff", centre - halfWidth - falloff}});
    waitFor([&] { return vc.shownShift() == vc.lastRequestedShift(); }, 60000);
    printStream("tenth selected", streamChanges(vc, target, stalls), yardstick);
    std::printf("  one synchronous shift, tenth selected: %.1f ms\n",
                synchronousShiftMilliseconds(engine, image, vc.parameters()));

    // Everything selected.
    vc.setSourceHueValues({{"upperFalloff", 1.0},
                           {"upper", 1.0},
                           {"middle", 0.5},
                           {"lower", 0.0},
                           {"lowerFalloff", 0.0}});
    waitFor([&] { return vc.shownShift() == vc.lastRequestedShift(); }, 60000);
    const StreamFigures all = streamChanges(vc, target, stalls);
    printStream("everything selected", all, yardstick);
    std::printf("  one synchronous shift, everything selected: %.1f ms\n",
                synchronousShiftMilliseconds(engine, image, vc.parameters()));
    return 0;
}
