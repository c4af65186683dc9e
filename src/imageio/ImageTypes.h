#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tintorra {

// Type identifiers of the image files the program reads and writes (reverse-DNS, as the document
// layer and the clipboard name them).
inline constexpr std::string_view kTypeImage = "public.image";
inline constexpr std::string_view kTypeTIFF = "public.tiff";
inline constexpr std::string_view kTypePNG = "public.png";
inline constexpr std::string_view kTypeJPEG = "public.jpeg";
inline constexpr std::string_view kTypeJPEG2000 = "public.jpeg-2000";
inline constexpr std::string_view kTypeBMP = "com.microsoft.bmp";
inline constexpr std::string_view kTypeGIF = "com.compuserve.gif";
// The program's own multi-page TIFF (conforms to TIFF).
inline constexpr std::string_view TintorraTIFFType = "com.velmora.tintorra.tiff";
// The clipboard type of the editor's output image (8 bytes: the bitmap's identity).
inline constexpr std::string_view TintorraNativeImageType = "com.velmora.tintorra.native-image";
inline constexpr std::string_view TintorraNativeImageMimeType =
    "application/x-tintorra-native-image";

// The image formats with an encoder and a decoder.
enum class ImageFormat { tiff, png, jpeg, jpeg2000, bmp, gif };

// True when `type` is `parent` or a kind of it (the program's TIFF is a TIFF; every image type
// is an image).
bool typeConformsTo(std::string_view type, std::string_view parent);

// The type of a save-format tag (0 TIFF, 1 PNG, 2 JPEG, 3 JPEG 2000); nothing for other tags.
std::optional<std::string> UTIForTag(long tag);

// The file name extension for a type, testing conformance in the order TIFF, PNG, JPEG,
// JPEG 2000; nothing for any other type.
std::optional<std::string> extensionForUTI(std::string_view type);

// The extension a save in `type` gives a file name ("tiff" for the program's own type); nothing
// for a type the program cannot write.
std::optional<std::string> preferredExtensionForType(std::string_view type);

// The type a file name's extension stands for (case-insensitive, with or without the dot).
std::optional<std::string> typeForExtension(std::string_view extension);

// The image format of a type, or nothing for a type that is no image format of ours.
std::optional<ImageFormat> formatForType(std::string_view type);

// The public type of a format.
std::string_view typeForFormat(ImageFormat format);

} // namespace tintorra
