#include "MatrixTestHelpers.h"
#include "colour/ColorMatrices.h"
#include "colour/WorkingSpaces.h"

#include <gtest/gtest.h>

#include <cmath>
#include <set>
#include <string>

namespace tintorra {
namespace {

TEST(WorkingSpaces, RowsTheProgramReadsByName)
{
    EXPECT_STREQ(illuminantD50().name, "Illuminant D50 - Horizon Light, ICC Profile PCS");
    EXPECT_EQ(illuminantD50().x2, 0.34567);
    EXPECT_EQ(illuminantD50().y2, 0.3585);
    EXPECT_STREQ(illuminantD65().name,
                 "Illuminant D65 - 2° Observer, Noon Daylight, Television, sRGB Color Space");
    EXPECT_EQ(illuminantD65().x2, 0.31271);
    EXPECT_EQ(illuminantD65().y2, 0.32902);
    EXPECT_STREQ(sRGBChromaticities().name, "sRGB");
    EXPECT_EQ(&illuminantD50(), &illuminantTable[3]);
    EXPECT_EQ(&illuminantD65(), &illuminantTable[5]);
    EXPECT_EQ(&sRGBChromaticities(), &workingSpaceTable[14]);
}

TEST(WorkingSpaces, LookupFindsEveryRowByItsExactName)
{
    std::set<std::string> names;
    for (const IlluminantRecord& row : illuminantTable) {
        EXPECT_EQ(illuminantNamed(row.name), &row) << row.name;
        names.insert(row.name);
    }
    for (const ColorSpaceChromaticities& row : workingSpaceTable) {
        EXPECT_EQ(workingSpaceNamed(row.name), &row) << row.name;
        names.insert(row.name);
    }
    EXPECT_EQ(names.size(), illuminantTable.size() + workingSpaceTable.size());

    for (const char* missing : {"", "srgb", "sRGB ", "Illuminant D50", "Adobe RGB"}) {
        EXPECT_EQ(workingSpaceNamed(missing), nullptr) << missing;
        EXPECT_EQ(illuminantNamed(missing), nullptr) << missing;
    }
}

TEST(WorkingSpaces, EqualEnergyWhiteIsTheDoubleNearestOneThird)
{
    const IlluminantRecord* e = illuminantNamed("Illuminant E - Equal Energy");
    ASSERT_NE(e, nullptr);
    const ColorSpaceChromaticities* cie = workingSpaceNamed("CIE RGB");
    ASSERT_NE(cie, nullptr);
    for (const double value : {e->x2, e->y2, e->x10, e->y10, cie->whiteX, cie->whiteY}) {
        // Neither neighbouring double is closer to 1/3.
        const long double third = 1.0L / 3.0L;
        const long double error = std::fabs(static_cast<long double>(value) - third);
        EXPECT_LT(error, std::fabs(static_cast<long double>(std::nextafter(value, 0.0)) - third));
        EXPECT_LT(error, std::fabs(static_cast<long double>(std::nextafter(value, 1.0)) - third));
    }
}

TEST(WorkingSpaces, EveryWhiteIsAnIlluminantRow)
{
    struct Case {
        const char* space;
        const char* illuminant;
    };
    const Case cases[] = {
        {"Adobe RGB 1998",
         "Illuminant D65 - 2° Observer, Noon Daylight, Television, sRGB Color Space"},
        {"Best RGB", "Illuminant D50 - Horizon Light, ICC Profile PCS"},
        {"CIE RGB", "Illuminant E - Equal Energy"},
        {"NTSC RGB",
         "Illuminant C - Shady Daylight at Noon (Average, North Sky Daylight) (obsolete)"},
        {"ProPhoto RGB", "Illuminant D50 - Horizon Light, ICC Profile PCS"},
        {"sRGB", "Illuminant D65 - 2° Observer, Noon Daylight, Television, sRGB Color Space"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.space);
        const ColorSpaceChromaticities* space = workingSpaceNamed(c.space);
        const IlluminantRecord* white = illuminantNamed(c.illuminant);
        ASSERT_NE(space, nullptr);
        ASSERT_NE(white, nullptr);
        EXPECT_EQ(space->whiteX, white->x2);
        EXPECT_EQ(space->whiteY, white->y2);
    }
    // And every other row uses one of these four whites too.
    for (const ColorSpaceChromaticities& space : workingSpaceTable) {
        bool found = false;
        for (const IlluminantRecord& white : illuminantTable) {
            found = found || (space.whiteX == white.x2 && space.whiteY == white.y2);
        }
        EXPECT_TRUE(found) << space.name;
    }
}

// The luminances in the table were derived from the chromaticities, with whites that differ a
// little from the illuminant rows: the Y row of the matrix that forces (1, 1, 1) onto the white
// reproduces them to within 2e-4 for NTSC RGB (measured 1.9e-4; its white C was rounded
// differently) and within 3e-5 for the rest (measured worst 2.8e-5), and they add up to the white's
// Y = 1 to the six printed decimals. A mistyped digit in the first four decimals of a row breaks
// this.
TEST(WorkingSpaces, LuminancesAgreeWithTheChromaticities)
{
    for (const ColorSpaceChromaticities& space : workingSpaceTable) {
        SCOPED_TRACE(space.name);
        const Matrix3 m = matrixFromChromaticities(space);
        const double tolerance = std::string(space.name) == "NTSC RGB" ? 2e-4 : 3e-5;
        EXPECT_NEAR(m[3], space.redLuminance, tolerance);
        EXPECT_NEAR(m[4], space.greenLuminance, tolerance);
        EXPECT_NEAR(m[5], space.blueLuminance, tolerance);
        EXPECT_NEAR(space.redLuminance + space.greenLuminance + space.blueLuminance, 1.0, 2e-6);
        EXPECT_GT(space.gamma, 0.0);
    }
    EXPECT_EQ(workingSpaceNamed("ECI RGB v2")->gamma, 1.0);
    EXPECT_EQ(sRGBChromaticities().gamma, 2.2);
}

} // namespace
} // namespace tintorra
