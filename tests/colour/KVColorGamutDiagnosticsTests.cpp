#include "GamutTestSupport.h"
#include "colour/KVColorGamut.h"
#include "colour/WorkingSpaces.h"
#include "support/DiagnosticsCapture.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

namespace tintorra {
namespace {

std::vector<std::string> linesOf(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

// Three channels printed with %f after `prefix`; true when they parse, each within 0..1, and one
// of them at 0 or 1 within 0.01 (a colour on the surface of the RGB cube).
bool isSurfaceRgb(const std::string& line, const std::string& prefix)
{
    double r = -1, g = -1, b = -1;
    const std::size_t at = line.find(prefix);
    if (at == std::string::npos ||
        std::sscanf(line.c_str() + at + prefix.size(), "%lf, %lf, %lf", &r, &g, &b) != 3) {
        return false;
    }
    const testSupport::Rgb rgb{r, g, b};
    return rgb.within(0.0, 1.0) && (rgb.smallest() < 0.01 || rgb.largest() > 0.99);
}

class GamutDiagnostics : public ::testing::Test {
protected:
    void SetUp() override
    {
        test::captureDiagnostics();
        gamut_ = std::make_unique<KVColorGamut>(sRGBChromaticities(), ColorSpaceModel::LChuv);
        gamut_->buildRGBColors();
        gamut_->buildLuvColors();
        test::capturedDiagnostics();
    }

    // The lines a diagnostic writes to standard error.
    template <typename Run>
    static std::vector<std::string> printed(Run run)
    {
        test::captureDiagnostics();
        run();
        return linesOf(test::capturedDiagnostics());
    }

    std::unique_ptr<KVColorGamut> gamut_;
};

TEST_F(GamutDiagnostics, RgbRoundTripPrintsMatricesAndNoErrorsForLuv)
{
    const auto lines = printed([this] { gamut_->testRGBColors(); });
    ASSERT_EQ(lines.size(), 1u + 4u + 4u + 1u + 1u);
    EXPECT_EQ(lines[0], "Color gamut matrices:");
    EXPECT_EQ(lines[1], "Matrix |RGB->XYZ matrix|:");
    EXPECT_EQ(lines[5], "Matrix |XYZ->RGB matrix (inverse RGB->XYZ)|:");
    EXPECT_EQ(lines[9], "Testing rgb values with threshold of 0.001000...");
    EXPECT_EQ(lines[10], "Finished testing rgb values.");
}

TEST_F(GamutDiagnostics, LabRoundTripReportsOnlyWhatExceedsTheThreshold)
{
    test::captureDiagnostics();
    KVColorGamut lab(sRGBChromaticities(), ColorSpaceModel::LChab);
    lab.buildRGBColors();
    test::capturedDiagnostics();
    const auto lines = printed([&lab] { lab.testRGBColors(); });
    ASSERT_GE(lines.size(), 11u);
    EXPECT_EQ(lines.back(), "Finished testing rgb values.");
    for (std::size_t k = 10; k + 1 < lines.size(); ++k) {
        unsigned long index = 0;
        double error = 0.0;
        ASSERT_EQ(
            std::sscanf(lines[k].c_str(), "rgb[%lu]->LCh->rgb max error: %lf", &index, &error), 2)
            << lines[k];
        EXPECT_LT(index, 9261u);
        EXPECT_GT(error, 0.001 - 5e-7);
        // The fast arctangent of the Lab path is off by at most about 0.07 degrees, which for the
        // most chromatic colours moves a channel by about 0.01.
        EXPECT_LT(error, 0.02);
    }
}

TEST_F(GamutDiagnostics, LuvValuesPrintFourLinesPerPoint)
{
    const auto lines = printed([this] { gamut_->testLuvColors(); });
    ASSERT_EQ(lines.size(), 2u + 4u * 9261u);
    EXPECT_EQ(lines.front(), "Testing Luv values...");
    EXPECT_EQ(lines[1], "Luv[0]: 0.000000, 0.000000, 0.000000");
    EXPECT_EQ(lines[2], "rgb[0] before: 0.000000, 0.000000, 0.000000");
    EXPECT_EQ(lines[3], "rgb[0]  after: 0.000000, 0.000000, 0.000000");
    EXPECT_EQ(lines[4], "rgb errors: 0.000000, 0.000000, 0.000000");
    EXPECT_TRUE(lines[4 * 9260 + 1].starts_with("Luv[9260]: 100.000000, "));
    EXPECT_EQ(lines[4 * 9260 + 2], "rgb[9260] before: 1.000000, 1.000000, 1.000000");
    EXPECT_EQ(lines.back(), "Finished testing Luv values.");
}

TEST_F(GamutDiagnostics, ChromaTableEntriesLieOnTheCubeSurface)
{
    const auto lines = printed([this] { gamut_->testChromaLUT(90, 25); });
    ASSERT_EQ(lines.size(), 2u + 8u * 9u);
    EXPECT_EQ(lines.front(), "Testing chroma LUT values...");
    EXPECT_EQ(lines.back(), "Finished testing chroma LUT values.");
    EXPECT_EQ(lines[1], "chroma[0,0] = 0.000000 rgb: 0.000000, 0.000000, 0.000000");
    for (std::size_t k = 1; k + 1 < lines.size(); ++k) {
        unsigned long i = 0, j = 0;
        double chroma = 0.0;
        ASSERT_EQ(std::sscanf(lines[k].c_str(), "chroma[%lu,%lu] = %lf", &i, &j, &chroma), 3);
        char expected[32];
        std::snprintf(expected, sizeof expected, "%f", gamut_->tableChroma(i, j));
        EXPECT_NE(lines[k].find(std::string(" = ") + expected + " rgb: "), std::string::npos)
            << lines[k];
        if (j > 0 && j < 200) {
            EXPECT_TRUE(isSurfaceRgb(lines[k], " rgb: ")) << lines[k];
        }
    }
}

TEST_F(GamutDiagnostics, MaxChromaColoursLieOnTheCubeSurface)
{
    const auto lines = printed([this] { gamut_->testMaxChromaLUT(); });
    ASSERT_EQ(lines.size(), 2u + 720u);
    EXPECT_EQ(lines.front(), "Testing maxChroma LUT values...");
    EXPECT_EQ(lines.back(), "Finished testing maxChroma LUT values.");
    EXPECT_TRUE(lines[1].starts_with("hue: 0.000000 rgb: "));
    EXPECT_TRUE(lines[720].starts_with("hue: 359.500000 rgb: "));
    for (std::size_t k = 1; k + 1 < lines.size(); ++k) {
        EXPECT_TRUE(isSurfaceRgb(lines[k], " rgb: ")) << lines[k];
    }
}

TEST_F(GamutDiagnostics, WithoutGridOnlyTheFramesArePrinted)
{
    test::captureDiagnostics();
    const KVColorGamut gamut(sRGBChromaticities(), ColorSpaceModel::LChuv);
    test::capturedDiagnostics();
    EXPECT_EQ(printed([&gamut] { gamut.testLuvColors(); }),
              (std::vector<std::string>{"Testing Luv values...", "Finished testing Luv values."}));
}

} // namespace
} // namespace tintorra
