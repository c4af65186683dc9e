#include "IccTestBytes.h"
#include "MatrixTestHelpers.h"
#include "colour/ColorMatrices.h"
#include "colour/IccProfiles.h"
#include "colour/KVColorSpace.h"
#include "colour/WorkingSpaces.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace tintorra {
namespace {

using test::Bytes;

struct InstalledProfile {
    const char* path;
    KVColorSpaceModel model;
};

// Models from the data colour space in each header: RGB, grey, Lab and XYZ (which the program has
// no model for).
const InstalledProfile kInstalled[] = {
    {"/usr/share/color/icc/colord/sRGB.icc", KVColorSpaceModel::rgb},
    {"/usr/share/color/icc/colord/ProPhotoRGB.icc", KVColorSpaceModel::rgb},
    {"/usr/share/color/icc/sRGB.icc", KVColorSpaceModel::rgb},
    {"/usr/share/color/argyll/ref/ClayRGB1998.icm", KVColorSpaceModel::rgb},
    {"/usr/share/color/icc/Gray.icc", KVColorSpaceModel::gray},
    {"/usr/share/color/icc/Gray-CIE_L.icc", KVColorSpaceModel::gray},
    {"/usr/share/color/icc/ITULab.icc", KVColorSpaceModel::lab},
    {"/usr/share/color/icc/LCMSLABI.ICM", KVColorSpaceModel::lab},
    {"/usr/share/color/argyll/ref/lab2lab.icm", KVColorSpaceModel::lab},
    {"/usr/share/color/icc/LCMSXYZI.ICM", KVColorSpaceModel::unknown},
};

TEST(ColorSpaceFromIccProfile, ModelAndNameComeFromTheProfile)
{
    int checked = 0;
    for (const InstalledProfile& p : kInstalled) {
        SCOPED_TRACE(p.path);
        const auto bytes = test::readFileBytes(p.path);
        if (!bytes) {
            continue;
        }
        const auto parsed = test::parseProfile(*bytes);
        ASSERT_TRUE(parsed);
        const auto space = colorSpaceFromIccProfile(*bytes);
        ASSERT_TRUE(space);
        EXPECT_EQ(space->model(), p.model);
        const auto description = test::descriptionText(*parsed);
        ASSERT_TRUE(description);
        EXPECT_FALSE(description->empty());
        EXPECT_EQ(space->name(), *description);
        EXPECT_EQ(space->iccProfile(), *bytes);
        ++checked;
    }
    if (checked == 0) {
        GTEST_SKIP() << "none of the profiles is installed";
    }
}

TEST(ColorSpaceFromIccProfile, BytesThatAreNoProfileGiveNothing)
{
    Bytes truncated;
    Bytes wrongMagic;
    if (const auto bytes = test::readFileBytes("/usr/share/color/icc/colord/sRGB.icc")) {
        truncated.assign(bytes->begin(), bytes->begin() + 100);
        wrongMagic = *bytes;
        wrongMagic[36] = 'x';
    }
    const Bytes cases[] = {{},        {0, 1, 2, 3}, Bytes(128, 0), Bytes(2048, 0xFF),
                           truncated, wrongMagic};
    for (const Bytes& bytes : cases) {
        EXPECT_FALSE(colorSpaceFromIccProfile(bytes)) << bytes.size() << " bytes";
    }
}

TEST(ColorSpaceFromIccProfile, BuiltProfileWithoutDescriptionHasAnEmptyName)
{
    const Bytes bytes = test::buildProfile(
        "RGB ", {{"wtpt", {test::toFixed(0.9642), test::toFixed(1.0), test::toFixed(0.8249)}}});
    const auto space = colorSpaceFromIccProfile(bytes);
    ASSERT_TRUE(space);
    EXPECT_EQ(space->model(), KVColorSpaceModel::rgb);
    EXPECT_EQ(space->name(), "");
}

// The profile is a version 4 one whose white point tag holds D50, so, like the version 4 profiles
// of colord, its matrix has the sRGB primaries but maps RGB white onto D50. Code that wants the
// sRGB row should use an untagged space (or none) instead.
TEST(SRGBColorSpace, MatrixHasTheSRGBPrimariesButAD50White)
{
    const KVColorSpace space = sRGBColorSpace();
    EXPECT_EQ(space.model(), KVColorSpaceModel::rgb);
    EXPECT_EQ(space.name(), "sRGB");
    const auto parsed = test::parseProfile(space.iccProfile());
    ASSERT_TRUE(parsed);
    EXPECT_EQ(parsed->colorSpace, "RGB ");
    EXPECT_EQ(parsed->majorVersion, 4);
    const auto reread = colorSpaceFromIccProfile(space.iccProfile());
    ASSERT_TRUE(reread);
    EXPECT_EQ(reread->model(), KVColorSpaceModel::rgb);
    const auto white = test::xyzTag(*parsed, "wtpt");
    ASSERT_TRUE(white);

    Matrix3 m{};
    matrixFromColorSpace(m, &space);
    const test::Vector3 rgbWhite = test::apply(m, {1.0, 1.0, 1.0});
    for (int i = 0; i < 3; ++i) {
        EXPECT_NEAR(rgbWhite[i], (*white)[i], 1e-12);
    }
    EXPECT_TRUE(isD50White(rgbWhite[0], rgbWhite[1], rgbWhite[2]));

    const Matrix3 srgb = matrixFromChromaticities(sRGBChromaticities());
    for (int c = 0; c < 3; ++c) {
        const double sum = m[c] + m[3 + c] + m[6 + c];
        const double srgbSum = srgb[c] + srgb[3 + c] + srgb[6 + c];
        EXPECT_NEAR(m[c] / sum, srgb[c] / srgbSum, 1e-4);
        EXPECT_NEAR(m[3 + c] / sum, srgb[3 + c] / srgbSum, 1e-4);
    }
}

TEST(SRGBColorSpace, IsMadeOnceAndTheSameFromEveryThread)
{
    std::vector<KVColorSpace> results(4);
    std::vector<std::thread> threads;
    for (KVColorSpace& result : results) {
        threads.emplace_back([&result] { result = sRGBColorSpace(); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const KVColorSpace& result : results) {
        EXPECT_EQ(result, sRGBColorSpace());
    }
}

TEST(ColorSpaceForMainScreen, CoreHasNoScreen)
{
    EXPECT_FALSE(colorSpaceForMainScreen());
}

} // namespace
} // namespace tintorra
