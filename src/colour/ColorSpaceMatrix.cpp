// The RGB-to-XYZ matrix of a colour space, read from the colourant and white point tags of its ICC
// profile.
#include "colour/ColorMatrices.h"
#include "colour/KVColorSpace.h"
#include "colour/LcmsProfile.h"

#include <cstdint>

namespace tintorra {

namespace {

// The profile connection space white and the sRGB white as (x/y, 1, (1 - x - y)/y) of the D50 and
// D65 illuminant rows.
constexpr double kD50White[3] = {0.9642119944211994, 1.0, 0.8251882845188288};
constexpr double kD65White[3] = {0.9504285453771807, 1.0, 1.0889003707981277};

// An XYZ tag is the type signature, four reserved bytes and then three s15.16 numbers.
constexpr std::uint32_t kXyzDataOffset = 8;
constexpr std::uint32_t kXyzTagMinimumSize = kXyzDataOffset + 12;

std::int32_t bigEndianInt32(const std::uint8_t* bytes)
{
    const std::uint32_t value = (std::uint32_t{bytes[0]} << 24) | (std::uint32_t{bytes[1]} << 16) |
                                (std::uint32_t{bytes[2]} << 8) | std::uint32_t{bytes[3]};
    return static_cast<std::int32_t>(value);
}

// The three numbers of an XYZ tag, each converted in single precision; a tag that is missing or
// too short reads as zero.
std::array<double, 3> readXyzTag(cmsHPROFILE profile, cmsTagSignature signature)
{
    std::array<double, 3> xyz = {0.0, 0.0, 0.0};
    std::uint8_t bytes[kXyzTagMinimumSize] = {};
    if (cmsReadRawTag(profile, signature, bytes, kXyzTagMinimumSize) < kXyzTagMinimumSize) {
        return xyz;
    }
    constexpr float kFixedOne = 1.0f / 65536.0f;
    for (int i = 0; i < 3; ++i) {
        const float value =
            static_cast<float>(bigEndianInt32(bytes + kXyzDataOffset + 4 * i)) * kFixedOne;
        xyz[i] = value;
    }
    return xyz;
}

void matrixFromProfile(Matrix3& out, cmsHPROFILE profile)
{
    std::array<double, 3> primaries[3] = {
        readXyzTag(profile, cmsSigRedColorantTag),
        readXyzTag(profile, cmsSigGreenColorantTag),
        readXyzTag(profile, cmsSigBlueColorantTag),
    };
    const std::array<double, 3> white = readXyzTag(profile, cmsSigMediaWhitePointTag);

    // Colourants that add up to the connection space white were adapted to D50 by the profile's
    // maker; take them back to the D65 the rest of the program assumes.
    const double sumX = primaries[0][0] + primaries[1][0] + primaries[2][0];
    const double sumY = primaries[0][1] + primaries[1][1] + primaries[2][1];
    const double sumZ = primaries[0][2] + primaries[1][2] + primaries[2][2];
    if (isD50White(sumX, sumY, sumZ)) {
        for (std::array<double, 3>& primary : primaries) {
            std::array<double, 3> adapted{};
            adaptXyz(primary.data(), kD50White, adapted.data(), kD65White,
                     kAdaptationBradfordAlias);
            primary = adapted;
        }
    }

    Matrix3 p{};
    for (int column = 0; column < 3; ++column) {
        for (int row = 0; row < 3; ++row) {
            p[row * 3 + column] = primaries[column][row];
        }
    }

    // The scale comes from the white point tag as stored, not adapted: for profiles whose white
    // point tag holds D50 the matrix then maps RGB white to D50.
    Matrix3 pInverse{};
    invertMatrix3(pInverse, p);
    double scale[3];
    for (int row = 0; row < 3; ++row) {
        scale[row] = pInverse[row * 3] * white[0] + pInverse[row * 3 + 1] * white[1] +
                     pInverse[row * 3 + 2] * white[2];
    }
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            out[row * 3 + column] = p[row * 3 + column] * scale[column];
        }
    }
}

} // namespace

void matrixFromColorSpace(Matrix3& out, const KVColorSpace* colorSpace)
{
    if (colorSpace == nullptr) {
        out = matrixFromChromaticities(sRGBChromaticities());
        return;
    }
    if (colorSpace->model() != KVColorSpaceModel::rgb) {
        return;
    }
    const LcmsProfileHandle profile = openLcmsProfile(colorSpace->iccProfile());
    if (!profile) {
        // No profile, or bytes that do not parse as one: the same as an untagged space.
        out = matrixFromChromaticities(sRGBChromaticities());
        return;
    }
    matrixFromProfile(out, profile.get());
}

void inverseMatrixFromColorSpace(Matrix3& out, const KVColorSpace* colorSpace)
{
    // A non-RGB space has no matrix, and then there is nothing to invert either.
    if (colorSpace != nullptr && colorSpace->model() != KVColorSpaceModel::rgb) {
        return;
    }
    Matrix3 m{};
    matrixFromColorSpace(m, colorSpace);
    invertMatrix3(out, m);
}

} // namespace tintorra
