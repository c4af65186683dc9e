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

// The header's colour space decides the model; a field that names no colour space (as a hostile
// file may have) gives an unknown model, not a value outside the enumeration.
TEST(ColorSpaceFromIccProfile, BuiltProfilesTakeTheirModelFromTheHeader)
{
    for (const auto& [field, model] :
         {std::pair{"RGB ", KVColorSpaceModel::rgb}, std::pair{"GRAY", KVColorSpaceModel::gray},
          std::pair{"\xff\xff\xff\x7f", KVColorSpaceModel::unknown}}) {
        const Bytes bytes = test::buildProfile(
            field, {{"wtpt", {test::toFixed(0.9642), test::toFixed(1.0), test::toFixed(0.8249)}}});
        const auto space = colorSpaceFromIccProfile(bytes);
        ASSERT_TRUE(space) << field;
        EXPECT_EQ(space->model(), model) << field;
        EXPECT_EQ(space->name(), "");
    }
}

// Our own sRGB profile is laid out like the common version 2 ones (colourants adapted to D50,
// white point tag D65), so files we tag with it read back as the sRGB row of the table.
TEST(SRGBColorSpace, MatrixIsTheSRGBRowOfTheTable)
{
    const KVColorSpace space = sRGBColorSpace();
    EXPECT_EQ(space.model(), KVColorSpaceModel::rgb);
    EXPECT_EQ(space.name(), "sRGB");
    const auto parsed = test::parseProfile(space.iccProfile());
    ASSERT_TRUE(parsed);
    EXPECT_EQ(parsed->colorSpace, "RGB ");
    EXPECT_EQ(parsed->majorVersion, 2);
    const auto reread = colorSpaceFromIccProfile(space.iccProfile());
    ASSERT_TRUE(reread);
    EXPECT_EQ(reread->model(), KVColorSpaceModel::rgb);
    const auto white = test::xyzTag(*parsed, "wtpt");
    ASSERT_TRUE(white);
    EXPECT_FALSE(isD50White((*white)[0], (*white)[1], (*white)[2]));

    Matrix3 m{};
    matrixFromColorSpace(m, &space);
    const Matrix3 table = matrixFromChromaticities(sRGBChromaticities());
    for (std::size_t i = 0; i < m.size(); ++i) {
        // The s15.16 encoding of the tags limits the agreement, as with other v2 sRGB profiles.
        EXPECT_NEAR(m[i], table[i], 3e-4) << i;
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
