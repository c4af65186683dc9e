#pragma once

#include "colour/ColorComponents.h"
#include "colour/ColorSpaceModel.h"
#include "colour/GamutChromaSearch.h"
#include "colour/Matrix3.h"
#include "colour/WorkingSpaces.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace tintorra {

class GamutHull;
class KVColorSpace;

// The largest in-gamut chroma of an RGB colour space for every hue and lightness, in LCh over
// Luv (model 0) or over Lab (model 1), precomputed per half degree of hue and half unit of
// lightness and read with bilinear interpolation.
//
// A gamut is complete when its constructor returns and is not changed afterwards: owners hand it
// out as std::shared_ptr<const KVColorGamut>, and any number of threads may then read it without
// locking. The building steps stay public, as non-const members, for the diagnostics and for the
// alternative hull builder.
class KVColorGamut {
public:
    static constexpr std::size_t kHueCount = 720;
    static constexpr std::size_t kLightnessCount = kGamutLightnessCount;

    // sRGB, LCh over Luv.
    KVColorGamut();
    // The matrix of a colour space (sRGB when there is none; a non-RGB space leaves the matrices
    // zero). Model 1 is Lab; any other value is stored as 0, Luv.
    KVColorGamut(const KVColorSpace* colorSpace, ColorSpaceModel colorSpaceModel);
    KVColorGamut(const KVColorSpace& colorSpace, ColorSpaceModel colorSpaceModel);
    KVColorGamut(const ColorSpaceChromaticities& chromaticities, ColorSpaceModel colorSpaceModel);
    // The same, with allocation number `failingAllocationForTesting` of the build made to fail
    // (0 is the record table, 1 the row array, 2 + i row i; -1 none), for exercising the failure
    // path. Later builds of the gamut allocate normally.
    KVColorGamut(const KVColorSpace& colorSpace, ColorSpaceModel colorSpaceModel,
                 long failingAllocationForTesting);
    KVColorGamut(const ColorSpaceChromaticities& chromaticities, ColorSpaceModel colorSpaceModel,
                 long failingAllocationForTesting);
    ~KVColorGamut();

    KVColorGamut(const KVColorGamut&) = delete;
    KVColorGamut& operator=(const KVColorGamut&) = delete;

    // Interpolated largest chroma for a hue in radians (any angle, negative too) and a lightness
    // in 0..100. Black, white and lightness outside 0..100 have none.
    double chromaForHue(double hue, double lightness) const;

    // The most chromatic colour of the nearest tabulated hue: (lightness, chroma, hue in radians,
    // 1.0).
    ColorComponents maxChromaForHue(double hue) const;

    void copy_RGB_to_XYZ_matrix(Matrix3& out) const { out = M; }
    void copy_XYZ_to_RGB_matrix(Matrix3& out) const { out = MI; }

    ColorSpaceModel colorSpaceModel() const { return colorSpaceModel_; }

    // "<<KVColorGamut: 0x...>> colorSpaceModel: n"
    std::string description() const;

    // False only when allocating the tables failed; such a gamut must not be read.
    bool hasTables() const { return maxChromasLUT_ != nullptr && chromasLUT_ != nullptr; }

    // Direct table access: row i is the hue i x 0.5 degrees, column j the lightness j x 0.5.
    double tableChroma(std::size_t hueIndex, std::size_t lightnessIndex) const
    {
        return chromasLUT_[hueIndex][lightnessIndex];
    }
    const ColorComponents& tableMaxChroma(std::size_t hueIndex) const
    {
        return maxChromasLUT_[hueIndex];
    }
    // Row i of the chroma table (kLightnessCount values), for lookups of many colours at once.
    const double* chromaRow(std::size_t hueIndex) const { return chromasLUT_[hueIndex]; }

    // ---- Building steps -----------------------------------------------------------------------
    void initVars();
    // Both tables by the chroma search of the model, rows spread over the processor's cores.
    void buildChromaLUTsExact();
    void LabMatrixPrecalc();
    void LuvMatrixPrecalc();
    double LabChromaIterationForHue(double hue, double lightness) const;
    double LuvChromaIterationForHue(double hue, double lightness) const;

    // The hull builder: a 21^3 grid of the RGB cube, its Luv points tetrahedralised, and rays
    // from the grey axis cast against the hull. It measures the convex hull, so it can only
    // exceed the search where the gamut body is concave.
    void buildRGBColors();
    void buildRGBTriangles();
    void buildLuvColors();
    void buildHull();
    double calculateChromaForHue(double hue, double lightness) const;
    void buildChromaLUTsFromPolys();
    void setIncludeInteriorPoints(bool include) { includeInteriorPoints_ = include; }
    const std::vector<ColorComponents>& rgbColors() const { return rgbColors_; }
    const std::vector<ColorComponents>& luvColors() const { return LuvColors_; }
    std::size_t actualNumberOfPoints() const { return actualNumberOfPoints_; }
    const GamutHull* hull() const { return hull_.get(); }

    // ---- Diagnostics on standard error; nothing calls them in normal operation ---------------
    // Round trip of every grid sample through the model's LCh.
    void testRGBColors() const;
    // Every Luv grid point back to RGB, next to the sample it came from.
    void testLuvColors() const;
    // Table entries back to RGB; the strides thin out the (very long) listing.
    void testChromaLUT(std::size_t hueStride = 1, std::size_t lightnessStride = 1) const;
    void testMaxChromaLUT() const;

private:
    struct RowArrayDeleter {
        void operator()(double** rows) const;
    };
    using ChromaRows = std::unique_ptr<double*[], RowArrayDeleter>;

    void initWithMatrix(ColorSpaceModel colorSpaceModel);
    bool allocateTables();
    template <class ChromaOfRow>
    void fillTables(ChromaOfRow chromaOfRow);
    // kHueCount zeroed rows of kLightnessCount doubles; nothing (after saying so) when any
    // allocation fails.
    ChromaRows allocateMatrix() const;

    std::size_t divisionsPerChannel_ = 20;
    std::size_t pointsPerChannel_ = 21;
    std::vector<ColorComponents> rgbColors_;
    std::vector<ColorComponents> LuvColors_;
    bool includeInteriorPoints_ = true;
    std::size_t maxNumberOfPoints_ = 21 * 21 * 21;
    std::size_t actualNumberOfPoints_ = 0;
    // TetGen's input and output live here once the hull builder runs.
    std::unique_ptr<GamutHull> hull_;
    std::unique_ptr<ColorComponents[]> maxChromasLUT_;
    ChromaRows chromasLUT_;
    Matrix3 M{};
    Matrix3 MI{};
    ChromaSearchCoefficients precalc_table{};
    ColorSpaceModel colorSpaceModel_ = ColorSpaceModel::LChuv;
    long failingAllocation_ = -1;
};

using KVColorGamutPtr = std::shared_ptr<const KVColorGamut>;

} // namespace tintorra
