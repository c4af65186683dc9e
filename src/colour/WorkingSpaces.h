#pragma once

#include <array>
#include <string_view>

namespace tintorra {

// The white point of a standard illuminant for the 2 degree and the 10 degree observer.
struct IlluminantRecord {
    const char* name;
    double x2;
    double y2;
    double x10;
    double y10;
};

// An RGB working space: chromaticity and luminance of each primary, the white point and the
// nominal gamma of its transfer curve.
struct ColorSpaceChromaticities {
    const char* name;
    double redX, redY, redLuminance;
    double greenX, greenY, greenLuminance;
    double blueX, blueY, blueLuminance;
    double whiteX, whiteY;
    double gamma;
};

extern const std::array<IlluminantRecord, 20> illuminantTable;
extern const std::array<ColorSpaceChromaticities, 16> workingSpaceTable;

// Looks a row up by its exact name; nullptr when there is none.
const IlluminantRecord* illuminantNamed(std::string_view name);
const ColorSpaceChromaticities* workingSpaceNamed(std::string_view name);

// The rows the program reads by name.
const IlluminantRecord& illuminantD50();
const IlluminantRecord& illuminantD65();
const ColorSpaceChromaticities& sRGBChromaticities();

} // namespace tintorra
