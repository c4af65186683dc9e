#include "IccTestBytes.h"
#include "MatrixTestHelpers.h"
#include "colour/IccProfiles.h"
#include "colour/LabColorSpaces.h"
#include "colour/WorkingSpaces.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace tintorra {
namespace {

struct Case {
    const char* what;
    const KVColorSpace& (*space)();
    const IlluminantRecord& (*illuminant)();
};

const Case kCases[] = {
    {"D50", calibratedD50LabColorSpace, illuminantD50},
    {"D65", calibratedD65LabColorSpace, illuminantD65},
};

TEST(CalibratedLabColorSpace, IsALabProfileWithTheIlluminantsWhite)
{
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.what);
        const KVColorSpace& space = c.space();
        EXPECT_EQ(space.model(), KVColorSpaceModel::lab);
        ASSERT_TRUE(space.hasIccProfile());

        const auto parsed = test::parseProfile(space.iccProfile());
        ASSERT_TRUE(parsed);
        EXPECT_EQ(parsed->colorSpace, "Lab ");
        const auto white = test::xyzTag(*parsed, "wtpt");
        ASSERT_TRUE(white);
        const test::Vector3 expected =
            test::whiteFromChromaticity(c.illuminant().x2, c.illuminant().y2);
        // The tag holds s15.16 numbers: half a step is 7.6e-6.
        for (int i = 0; i < 3; ++i) {
            EXPECT_NEAR((*white)[i], expected[i], 7.7e-6);
        }

        const auto reread = colorSpaceFromIccProfile(space.iccProfile());
        ASSERT_TRUE(reread);
        EXPECT_EQ(reread->model(), KVColorSpaceModel::lab);
    }
    EXPECT_NE(calibratedD50LabColorSpace().iccProfile(), calibratedD65LabColorSpace().iccProfile());
}

TEST(CalibratedLabColorSpace, IsMadeOnceForTheWholeProgram)
{
    for (const Case& c : kCases) {
        std::vector<const KVColorSpace*> seen(4, nullptr);
        std::vector<std::thread> threads;
        for (const KVColorSpace*& pointer : seen) {
            threads.emplace_back([&pointer, &c] { pointer = &c.space(); });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        for (const KVColorSpace* pointer : seen) {
            EXPECT_EQ(pointer, &c.space()) << c.what;
        }
    }
}

} // namespace
} // namespace tintorra
