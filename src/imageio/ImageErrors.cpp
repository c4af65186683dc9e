#include "imageio/ImageErrors.h"

namespace tintorra {

namespace {

constexpr const char* kConvertToRGBSuggestion =
    "Please convert the image to RGB or choose a different image.";

} // namespace

KVError notRGBImageFileError()
{
    return {TintorraErrorDomain, kTintorraErrorNotRGB,
            "The image file could not be opened. Tintorra only supports RGB images at this time.",
            kConvertToRGBSuggestion};
}

KVError notRGBImageUseError()
{
    return {TintorraErrorDomain, kTintorraErrorNotRGB,
            "The image cannot be used. Tintorra only supports RGB images at this time.",
            kConvertToRGBSuggestion};
}

KVError cannotSaveInFormatError()
{
    return {TintorraErrorDomain, kTintorraErrorCannotSave,
            "The image cannot be saved in the specified format.",
            "Please save the image in a different format."};
}

} // namespace tintorra
