#include "colour/KVColorGamut.h"

#include "colour/ColorConversions.h"
#include "colour/ColorMatrices.h"
#include "colour/GamutHull.h"
#include "colour/KVColorSpace.h"
#include "common/Diagnostics.h"
#include "common/ParallelLoops.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <new>
#include <thread>

namespace tintorra {

namespace {

template <class T>
T* allocateZeroed(std::size_t count, long allocationIndex, long failingAllocation)
{
    if (allocationIndex == failingAllocation) {
        return nullptr;
    }
    return new (std::nothrow) T[count]();
}

// Rows are spread over the cores in small chunks taken in turn, so that a core slowed down by
// other work does not hold up the rest. Every row is computed by exactly one thread with the same
// arithmetic, so the result does not depend on the split.
template <class RowJob>
void forEachRowInParallel(std::size_t rowCount, RowJob job)
{
    constexpr std::size_t kRowsPerChunk = 8;
    // Beyond a handful of threads, starting them costs more than the rows they would take.
    constexpr unsigned kMostThreads = 8;
    const std::size_t chunks = (rowCount + kRowsPerChunk - 1) / kRowsPerChunk;
    runChunks(tableThreadCount(chunks, kMostThreads, 1), chunks, [&](std::size_t chunk, unsigned) {
        const std::size_t last = std::min((chunk + 1) * kRowsPerChunk, rowCount);
        for (std::size_t row = chunk * kRowsPerChunk; row < last; ++row) {
            job(row);
        }
    });
}

double hueOfRow(std::size_t row)
{
    return radiansFromDegrees(static_cast<double>(row) * 0.5);
}

double lightnessOfColumn(std::size_t column)
{
    return static_cast<double>(column) * 0.5;
}

} // namespace

void KVColorGamut::RowArrayDeleter::operator()(double** rows) const
{
    for (std::size_t i = 0; i < kHueCount; ++i) {
        delete[] rows[i];
    }
    delete[] rows;
}

KVColorGamut::KVColorGamut() : KVColorGamut(sRGBChromaticities(), ColorSpaceModel::LChuv) {}

KVColorGamut::KVColorGamut(const KVColorSpace* colorSpace, ColorSpaceModel colorSpaceModel)
{
    initVars();
    matrixFromColorSpace(M, colorSpace);
    initWithMatrix(colorSpaceModel);
}

KVColorGamut::KVColorGamut(const KVColorSpace& colorSpace, ColorSpaceModel colorSpaceModel)
    : KVColorGamut(&colorSpace, colorSpaceModel)
{}

KVColorGamut::KVColorGamut(const KVColorSpace& colorSpace, ColorSpaceModel colorSpaceModel,
                           long failingAllocationForTesting)
{
    initVars();
    matrixFromColorSpace(M, &colorSpace);
    failingAllocation_ = failingAllocationForTesting;
    initWithMatrix(colorSpaceModel);
    failingAllocation_ = -1;
}

KVColorGamut::KVColorGamut(const ColorSpaceChromaticities& chromaticities,
                           ColorSpaceModel colorSpaceModel, long failingAllocationForTesting)
{
    initVars();
    M = matrixFromChromaticities(chromaticities);
    failingAllocation_ = failingAllocationForTesting;
    initWithMatrix(colorSpaceModel);
    failingAllocation_ = -1;
}

KVColorGamut::KVColorGamut(const ColorSpaceChromaticities& chromaticities,
                           ColorSpaceModel colorSpaceModel)
{
    initVars();
    M = matrixFromChromaticities(chromaticities);
    initWithMatrix(colorSpaceModel);
}

KVColorGamut::~KVColorGamut() = default;

void KVColorGamut::initWithMatrix(ColorSpaceModel colorSpaceModel)
{
    // A singular matrix leaves the adjugate; profile matrices are never that close to singular,
    // and a zero matrix (non-RGB space) gives zero either way.
    invertMatrix3(MI, M);
    colorSpaceModel_ =
        colorSpaceModel == ColorSpaceModel::LChab ? ColorSpaceModel::LChab : ColorSpaceModel::LChuv;
    buildChromaLUTsExact();
}

void KVColorGamut::initVars()
{
    divisionsPerChannel_ = 20;
    pointsPerChannel_ = 21;
    includeInteriorPoints_ = true;
    maxNumberOfPoints_ = pointsPerChannel_ * pointsPerChannel_ * pointsPerChannel_;
    actualNumberOfPoints_ = 0;
    rgbColors_.clear();
    LuvColors_.clear();
    M = {};
    MI = {};
}

KVColorGamut::ChromaRows KVColorGamut::allocateMatrix() const
{
    constexpr std::size_t rows = kHueCount;
    constexpr std::size_t columns = kLightnessCount;
    double** rowArray = allocateZeroed<double*>(rows, 1, failingAllocation_);
    if (rowArray == nullptr) {
        diagnostic("Memory allocation failed while allocating for matrix[].\n");
        return nullptr;
    }
    ChromaRows matrix(rowArray);
    for (std::size_t i = 0; i < rows; ++i) {
        matrix[i] = allocateZeroed<double>(columns, 2 + static_cast<long>(i), failingAllocation_);
        if (matrix[i] == nullptr) {
            diagnostic("Memory allocation failed while allocating matrix[%lu][%lu]\n",
                       static_cast<unsigned long>(i), static_cast<unsigned long>(columns));
            return nullptr;
        }
    }
    return matrix;
}

bool KVColorGamut::allocateTables()
{
    maxChromasLUT_.reset();
    chromasLUT_.reset();
    std::unique_ptr<ColorComponents[]> records(
        allocateZeroed<ColorComponents>(kHueCount, 0, failingAllocation_));
    if (records) {
        // Zeroed records, alpha included, until the rows are filled.
        std::fill_n(records.get(), kHueCount, ColorComponents{0.0, 0.0, 0.0, 0.0});
    }
    ChromaRows rows = allocateMatrix();
    if (!records || !rows) {
        diagnostic("Memory allocation failed building lookup tables");
        return false;
    }
    maxChromasLUT_ = std::move(records);
    chromasLUT_ = std::move(rows);
    return true;
}

template <class ChromaOfRow>
void KVColorGamut::fillTables(ChromaOfRow chromaOfRow)
{
    forEachRowInParallel(kHueCount, [&](std::size_t i) {
        const double hue = hueOfRow(i);
        double* row = chromasLUT_[i];
        chromaOfRow(hue, row);
        ColorComponents record{0.0, 0.0, hue, 1.0};
        for (std::size_t j = 0; j < kLightnessCount; ++j) {
            // Strictly greater: of equal chromas the lower lightness stays.
            if (row[j] > record.c1) {
                record.c0 = lightnessOfColumn(j);
                record.c1 = row[j];
            }
        }
        maxChromasLUT_[i] = record;
    });
}

void KVColorGamut::buildChromaLUTsExact()
{
    if (!allocateTables()) {
        return;
    }
    diagnostic("Building chroma LUT...\n");
    if (colorSpaceModel_ == ColorSpaceModel::LChab) {
        LabMatrixPrecalc();
        fillTables(
            [this](double hue, double* row) { labChromaSearchRow(precalc_table, hue, row); });
    } else {
        LuvMatrixPrecalc();
        fillTables(
            [this](double hue, double* row) { luvChromaSearchRow(precalc_table, hue, row); });
    }
}

void KVColorGamut::LabMatrixPrecalc()
{
    precalc_table = labMatrixPrecalc(MI);
}

void KVColorGamut::LuvMatrixPrecalc()
{
    precalc_table = luvMatrixPrecalc(MI);
}

double KVColorGamut::LabChromaIterationForHue(double hue, double lightness) const
{
    return labChromaSearch(precalc_table, hue, lightness);
}

double KVColorGamut::LuvChromaIterationForHue(double hue, double lightness) const
{
    return luvChromaSearch(precalc_table, hue, lightness);
}

double KVColorGamut::chromaForHue(double hue, double lightness) const
{
    if (!hasTables()) {
        return 0.0;
    }
    const double x = 2.0 * wrapDegrees(degreesFromRadians(hue));
    const double y = 2.0 * lightness;
    if (!std::isfinite(x) || std::isnan(y)) {
        return 0.0;
    }
    const double floorX = std::floor(x);
    std::size_t i0 = static_cast<std::size_t>(floorX);
    std::size_t i1 = static_cast<std::size_t>(std::ceil(x));
    if (i0 == kHueCount) {
        i0 = 0;
    }
    if (i1 == kHueCount) {
        i1 = 0;
    }

    const double ceilY = std::ceil(y);
    if (ceilY < 0.0) {
        return 0.0;
    }
    const double lastColumn = static_cast<double>(kLightnessCount - 1);
    const double floorY = std::clamp(std::floor(y), 0.0, lastColumn);
    const std::size_t j0 = static_cast<std::size_t>(floorY);
    const std::size_t j1 = static_cast<std::size_t>(std::min(ceilY, lastColumn));
    if (j1 == 0 || j0 == kLightnessCount - 1) {
        // Black and white have no chroma.
        return 0.0;
    }

    const double fy = y - floorY;
    const double fx = x - floorX;
    const double* row0 = chromasLUT_[i0];
    if (i0 == i1) {
        return (1.0 - fy) * row0[j0] + fy * row0[j1];
    }
    const double* row1 = chromasLUT_[i1];
    if (j0 == j1) {
        return (1.0 - fx) * row0[j0] + fx * row1[j0];
    }
    return (1.0 - fx) * (1.0 - fy) * row0[j0] + fx * (1.0 - fy) * row1[j0] +
           (1.0 - fx) * fy * row0[j1] + fx * fy * row1[j1];
}

ColorComponents KVColorGamut::maxChromaForHue(double hue) const
{
    if (!hasTables()) {
        return {};
    }
    const double d = wrapDegrees(degreesFromRadians(hue));
    std::size_t index = std::isfinite(d) ? static_cast<std::size_t>(std::floor(2.0 * d + 0.5)) : 0;
    if (index == kHueCount) {
        index = 0;
    }
    return maxChromasLUT_[index];
}

std::string KVColorGamut::description() const
{
    char text[96];
    std::snprintf(text, sizeof text, "<<%s: %p>> colorSpaceModel: %lu", "KVColorGamut",
                  static_cast<const void*>(this),
                  static_cast<unsigned long>(colorSpaceModelNumber(colorSpaceModel_)));
    return text;
}

// ---- Hull builder ---------------------------------------------------------------------------

void KVColorGamut::buildRGBColors()
{
    rgbColors_.clear();
    rgbColors_.reserve(maxNumberOfPoints_);
    const std::size_t last = pointsPerChannel_ - 1;
    const double divisions = static_cast<double>(divisionsPerChannel_);
    for (std::size_t r = 0; r < pointsPerChannel_; ++r) {
        for (std::size_t g = 0; g < pointsPerChannel_; ++g) {
            for (std::size_t b = 0; b < pointsPerChannel_; ++b) {
                const bool onSurface =
                    r == 0 || r == last || g == 0 || g == last || b == 0 || b == last;
                if (includeInteriorPoints_ || onSurface) {
                    rgbColors_.push_back({static_cast<double>(r) / divisions,
                                          static_cast<double>(g) / divisions,
                                          static_cast<double>(b) / divisions, 1.0});
                }
            }
        }
    }
    actualNumberOfPoints_ = rgbColors_.size();
    if (!includeInteriorPoints_) {
        buildRGBTriangles();
    }
}

void KVColorGamut::buildRGBTriangles()
{
    // The hull is found by tetrahedralisation, so the cube's surface needs no triangles of its own.
}

void KVColorGamut::buildLuvColors()
{
    diagnostic("Building Luv colors...\n");
    LuvColors_.clear();
    LuvColors_.reserve(rgbColors_.size());
    for (const ColorComponents& rgb : rgbColors_) {
        LuvColors_.push_back(xyzToLuv(rgbToXyz(rgb, M)));
    }
}

void KVColorGamut::buildHull()
{
    std::vector<int> markers(LuvColors_.size(), 0);
    for (std::size_t i = 0; i < markers.size() && i < rgbColors_.size(); ++i) {
        const ColorComponents& rgb = rgbColors_[i];
        const auto atEdge = [](double c) { return c == 0.0 || c == 1.0; };
        markers[i] = atEdge(rgb.c0) || atEdge(rgb.c1) || atEdge(rgb.c2) ? 1 : 0;
    }
    hull_ = std::make_unique<GamutHull>();
    hull_->build(LuvColors_, markers);
}

double KVColorGamut::calculateChromaForHue(double hue, double lightness) const
{
    if (lightness <= 0.0 || lightness >= 100.0 || !hull_) {
        return 0.0;
    }
    return hull_->rayDistance(hue, lightness);
}

void KVColorGamut::buildChromaLUTsFromPolys()
{
    buildHull();
    if (hull_->triangleCount() == 0) {
        return;
    }
    if (!allocateTables()) {
        return;
    }
    diagnostic("Building chroma LUT...\n");
    // Only triangles spanning a column's lightness can meet its rays; looking at just those
    // finds the same first hit as walking the whole list.
    std::vector<std::vector<std::size_t>> candidates(kLightnessCount);
    for (std::size_t j = 0; j < kLightnessCount; ++j) {
        candidates[j] = hull_->trianglesNearLightness(lightnessOfColumn(j));
    }
    fillTables([&](double hue, double* row) {
        for (std::size_t j = 0; j < kLightnessCount; ++j) {
            const double L = lightnessOfColumn(j);
            row[j] = L <= 0.0 || L >= 100.0 ? 0.0 : hull_->rayDistance(hue, L, candidates[j]);
        }
    });
}

} // namespace tintorra
