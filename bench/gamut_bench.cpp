// Building a gamut happens whenever an image opens or the colour mode changes; looking chroma up
// happens per pixel. These measure both, and the plain one-entry-at-a-time search the build
// replaced, for comparison.
#include "colour/ColorMatrices.h"
#include "colour/GamutChromaSearch.h"
#include "colour/KVColorGamut.h"
#include "colour/WorkingSpaces.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <fcntl.h>
#include <numbers>
#include <unistd.h>
#include <vector>

namespace {

using namespace tintorra;

// The build announces itself on standard error; keep that out of the benchmark's report.
class QuietStandardError {
public:
    QuietStandardError() : saved_(dup(2))
    {
        const int null = open("/dev/null", O_WRONLY);
        dup2(null, 2);
        close(null);
    }
    ~QuietStandardError()
    {
        dup2(saved_, 2);
        close(saved_);
    }

private:
    int saved_;
};

Matrix3 sRGBInverse()
{
    Matrix3 MI{};
    invertMatrix3(MI, matrixFromChromaticities(sRGBChromaticities()));
    return MI;
}

double hueOfRow(std::size_t row)
{
    return static_cast<double>(row) * 0.5 * std::numbers::pi / 180.0;
}

// The full build as the program runs it: allocation, both tables, rows over all cores.
void BM_BuildExact(benchmark::State& state)
{
    const ColorSpaceModel model = colorSpaceModelFromNumber(state.range(0)).value();
    const QuietStandardError quiet;
    for (auto _ : state) {
        const KVColorGamut gamut(sRGBChromaticities(), model);
        benchmark::DoNotOptimize(gamut.tableChroma(100, 100));
    }
    state.SetLabel(model == ColorSpaceModel::LChab ? "sRGB Lab" : "sRGB Luv");
}
BENCHMARK(BM_BuildExact)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

// The 720 x 201 searches on one thread, one entry at a time: the arithmetic as written.
void BM_SearchTableScalar(benchmark::State& state)
{
    const bool lab = state.range(0) == 1;
    const Matrix3 MI = sRGBInverse();
    const ChromaSearchCoefficients table = lab ? labMatrixPrecalc(MI) : luvMatrixPrecalc(MI);
    std::vector<double> chromas(KVColorGamut::kHueCount * KVColorGamut::kLightnessCount);
    for (auto _ : state) {
        for (std::size_t i = 0; i < KVColorGamut::kHueCount; ++i) {
            for (std::size_t j = 0; j < KVColorGamut::kLightnessCount; ++j) {
                const double L = static_cast<double>(j) * 0.5;
                chromas[i * KVColorGamut::kLightnessCount + j] =
                    lab ? labChromaSearch(table, hueOfRow(i), L)
                        : luvChromaSearch(table, hueOfRow(i), L);
            }
        }
        benchmark::DoNotOptimize(chromas.data());
    }
    state.SetLabel(lab ? "sRGB Lab" : "sRGB Luv");
}
BENCHMARK(BM_SearchTableScalar)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

// The same searches row by row in vector registers, still on one thread.
void BM_SearchTableRows(benchmark::State& state)
{
    const bool lab = state.range(0) == 1;
    const ChromaRowKernel kernel =
        state.range(1) == 1 ? ChromaRowKernel::baseline : ChromaRowKernel::best;
    const Matrix3 MI = sRGBInverse();
    const ChromaSearchCoefficients table = lab ? labMatrixPrecalc(MI) : luvMatrixPrecalc(MI);
    std::vector<double> chromas(KVColorGamut::kHueCount * KVColorGamut::kLightnessCount);
    for (auto _ : state) {
        for (std::size_t i = 0; i < KVColorGamut::kHueCount; ++i) {
            double* row = chromas.data() + i * KVColorGamut::kLightnessCount;
            if (lab) {
                labChromaSearchRow(table, hueOfRow(i), row, kernel);
            } else {
                luvChromaSearchRow(table, hueOfRow(i), row, kernel);
            }
        }
        benchmark::DoNotOptimize(chromas.data());
    }
    state.SetLabel(std::string(lab ? "sRGB Lab" : "sRGB Luv") +
                   (kernel == ChromaRowKernel::best ? ", best kernel" : ", baseline kernel"));
}
BENCHMARK(BM_SearchTableRows)
    ->Args({0, 0})
    ->Args({1, 0})
    ->Args({0, 1})
    ->Args({1, 1})
    ->Unit(benchmark::kMillisecond);

// The alternative builder: 21^3 grid, TetGen, rays against the hull.
void BM_BuildHull(benchmark::State& state)
{
    const QuietStandardError quiet;
    KVColorGamut gamut(sRGBChromaticities(), ColorSpaceModel::LChuv);
    for (auto _ : state) {
        gamut.buildRGBColors();
        gamut.buildLuvColors();
        gamut.buildChromaLUTsFromPolys();
        benchmark::DoNotOptimize(gamut.tableChroma(100, 100));
    }
}
BENCHMARK(BM_BuildHull)->Unit(benchmark::kMillisecond);

void BM_ChromaForHue(benchmark::State& state)
{
    const QuietStandardError quiet;
    const KVColorGamut gamut(sRGBChromaticities(),
                             colorSpaceModelFromNumber(state.range(0)).value());
    // Scattered hues (negative ones too) and lightnesses, so that neither the branches nor the
    // cache see a pattern.
    std::vector<double> hues(4096);
    std::vector<double> lightnesses(4096);
    unsigned lcg = 12345;
    for (std::size_t k = 0; k < hues.size(); ++k) {
        lcg = lcg * 1664525u + 1013904223u;
        hues[k] = (lcg >> 8) * (1.0 / 16777216.0) * 4.0 * std::numbers::pi - 2.0 * std::numbers::pi;
        lcg = lcg * 1664525u + 1013904223u;
        lightnesses[k] = (lcg >> 8) * (100.0 / 16777216.0);
    }
    std::size_t k = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(gamut.chromaForHue(hues[k], lightnesses[k]));
        k = (k + 1) & 4095;
    }
}
BENCHMARK(BM_ChromaForHue)->Arg(0)->Arg(1);

void BM_MaxChromaForHue(benchmark::State& state)
{
    const QuietStandardError quiet;
    const KVColorGamut gamut;
    double hue = -3.0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(gamut.maxChromaForHue(hue));
        hue = hue > 3.0 ? -3.0 : hue + 0.0137;
    }
}
BENCHMARK(BM_MaxChromaForHue);

} // namespace
