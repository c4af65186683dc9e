#include "colour/WorkingSpaces.h"

namespace tintorra {

namespace {

// The two rows the program reads by name; the other rows are reference data.
constexpr const char* kD50Name = "Illuminant D50 - Horizon Light, ICC Profile PCS";
constexpr const char* kD65Name =
    "Illuminant D65 - 2° Observer, Noon Daylight, Television, sRGB Color Space";
constexpr const char* kSRGBName = "sRGB";

// The equal-energy white; a correctly rounded division gives the double nearest to one third.
constexpr double kOneThird = 1.0 / 3.0;

template <typename Table>
const typename Table::value_type* findByName(const Table& table, std::string_view name)
{
    for (const auto& row : table) {
        if (name == row.name) {
            return &row;
        }
    }
    return nullptr;
}

} // namespace

const std::array<IlluminantRecord, 20> illuminantTable = {{
    {"Illuminant A - Incandescent, Tungsten-Filament Lamp", 0.44757, 0.40745, 0.45117, 0.40594},
    {"Illuminant B - Direct Sunlight at Noon (obsolete)", 0.34842, 0.35161, 0.3498, 0.3527},
    {"Illuminant C - Shady Daylight at Noon (Average, North Sky Daylight) (obsolete)", 0.31006,
     0.31616, 0.31039, 0.31905},
    {kD50Name, 0.34567, 0.3585, 0.34773, 0.35952},
    {"Illuminant D55 - Mid-Morning, Mid-Afternoon Daylight", 0.33242, 0.34743, 0.33411, 0.34877},
    {kD65Name, 0.31271, 0.32902, 0.31382, 0.331},
    {"Illuminant D75 - North Sky Daylight", 0.29902, 0.31485, 0.29968, 0.3174},
    {"Illuminant E - Equal Energy", kOneThird, kOneThird, kOneThird, kOneThird},
    {"Illuminant F1 - Daylight Fluorescent (CCT 6430K, CRI 76)", 0.3131, 0.33727, 0.31811, 0.33559},
    {"Illuminant F2 - Cool White Fluorescent (CCT 4230K, CRI 64)", 0.37208, 0.37529, 0.37925,
     0.36733},
    {"Illuminant F3 - White Fluorescent (CCT 3450K, CRI 57)", 0.4091, 0.3943, 0.41761, 0.38324},
    {"Illuminant F4 - Warm White Fluorescent (CCT 2940K, CRI 51)", 0.44018, 0.40329, 0.4492,
     0.39074},
    {"Illuminant F5 - Daylight Fluorescent (CCT 6350K, CRI 72)", 0.31379, 0.34531, 0.31975,
     0.34246},
    {"Illuminant F6 - Lite White Fluorescent (CCT 4150K, CRI 59)", 0.3779, 0.38835, 0.3866,
     0.37847},
    {"Illuminant F7 - D65 Simulator, Daylight Simulator (CCT 6500K, CRI 90)", 0.31292, 0.32933,
     0.31569, 0.3296},
    {"Illuminant F8 - D50 simulator, Sylvania F40 Design 50 (CCT 5000K, CRI 95)", 0.34588, 0.35875,
     0.34902, 0.35939},
    {"Illuminant F9 - Cool White Deluxe Fluorescent (CCT 4150K, CRI 90)", 0.37417, 0.37281, 0.37829,
     0.37045},
    {"Illuminant F10 - Philips TL85, Ultralume 50 (CCT 5000K, CRI 81)", 0.34609, 0.35986, 0.3509,
     0.35444},
    {"Illuminant F11 - Philips TL84, Ultralume 40 (CCT 4000K, CRI 83)", 0.38052, 0.37713, 0.38541,
     0.37123},
    {"Illuminant F12 - Philips TL83, Ultralume 30 (CCT 3000K, CRI 83)", 0.43695, 0.40441, 0.44256,
     0.39717},
}};

// Columns: red x, y, Y; green x, y, Y; blue x, y, Y; white x, y; nominal gamma.
const std::array<ColorSpaceChromaticities, 16> workingSpaceTable = {{
    {"Adobe RGB 1998", 0.64, 0.33, 0.297361, 0.21, 0.71, 0.627355, 0.15, 0.06, 0.075285, 0.31271,
     0.32902, 2.2},
    {"Apple RGB", 0.625, 0.34, 0.244634, 0.28, 0.595, 0.672034, 0.155, 0.07, 0.083332, 0.31271,
     0.32902, 1.8},
    {"Best RGB", 0.7347, 0.2653, 0.228457, 0.215, 0.775, 0.737352, 0.13, 0.035, 0.034191, 0.34567,
     0.3585, 2.2},
    {"Beta RGB", 0.6888, 0.3112, 0.303273, 0.1986, 0.7551, 0.663786, 0.1265, 0.0352, 0.032941,
     0.34567, 0.3585, 2.2},
    {"Bruce RGB", 0.64, 0.33, 0.240995, 0.28, 0.65, 0.683554, 0.15, 0.06, 0.075452, 0.31271,
     0.32902, 2.2},
    {"CIE RGB", 0.735, 0.265, 0.176204, 0.274, 0.717, 0.812985, 0.167, 0.009, 0.010811, kOneThird,
     kOneThird, 2.2},
    {"ColorMatch RGB", 0.63, 0.34, 0.274884, 0.295, 0.605, 0.658132, 0.15, 0.075, 0.066985, 0.34567,
     0.3585, 1.8},
    {"Don RGB 4", 0.696, 0.3, 0.27835, 0.215, 0.765, 0.68797, 0.13, 0.035, 0.03368, 0.34567, 0.3585,
     2.2},
    {"ECI RGB v2", 0.67, 0.33, 0.32025, 0.21, 0.71, 0.602071, 0.14, 0.08, 0.077679, 0.34567, 0.3585,
     1.0},
    {"Ekta Space PS5", 0.695, 0.305, 0.260629, 0.26, 0.7, 0.734946, 0.11, 0.005, 0.004425, 0.34567,
     0.3585, 2.2},
    {"NTSC RGB", 0.67, 0.33, 0.298839, 0.21, 0.71, 0.586811, 0.14, 0.08, 0.11435, 0.31006, 0.31616,
     2.2},
    {"PAL/SECAM RGB", 0.64, 0.33, 0.222021, 0.29, 0.6, 0.706645, 0.15, 0.06, 0.071334, 0.31271,
     0.32902, 2.2},
    {"ProPhoto RGB", 0.7347, 0.2653, 0.28804, 0.1596, 0.8404, 0.711874, 0.0366, 0.0001, 0.000086,
     0.34567, 0.3585, 1.8},
    {"SMPTE-C RGB", 0.63, 0.34, 0.212395, 0.31, 0.595, 0.701049, 0.155, 0.07, 0.086556, 0.31271,
     0.32902, 2.2},
    {kSRGBName, 0.64, 0.33, 0.212656, 0.3, 0.6, 0.715158, 0.15, 0.06, 0.072186, 0.31271, 0.32902,
     2.2},
    {"Wide Gamut RGB", 0.735, 0.265, 0.258187, 0.115, 0.826, 0.724938, 0.157, 0.018, 0.016875,
     0.34567, 0.3585, 2.2},
}};

const IlluminantRecord* illuminantNamed(std::string_view name)
{
    return findByName(illuminantTable, name);
}

const ColorSpaceChromaticities* workingSpaceNamed(std::string_view name)
{
    return findByName(workingSpaceTable, name);
}

const IlluminantRecord& illuminantD50()
{
    static const IlluminantRecord& row = *illuminantNamed(kD50Name);
    return row;
}

const IlluminantRecord& illuminantD65()
{
    static const IlluminantRecord& row = *illuminantNamed(kD65Name);
    return row;
}

const ColorSpaceChromaticities& sRGBChromaticities()
{
    static const ColorSpaceChromaticities& row = *workingSpaceNamed(kSRGBName);
    return row;
}

} // namespace tintorra
