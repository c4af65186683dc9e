#include "imageio/ImageTypes.h"
#include "imageio/ShiftedFileName.h"

#include <gtest/gtest.h>

namespace tintorra {
namespace {

struct NameCase {
    const char* path;
    const char* name;
};

TEST(ShiftedFileName, CountsOnlyNamesEndingInDashShifted)
{
    const NameCase cases[] = {
        {"photo.jpg", "photo (hue-shifted)"},
        {"photo-shifted.png", "photo (hue-shifted)-1"},
        {"photo-shifted-3.tif", "photo (hue-shifted)-4"},
        // A name this rule made does not match its pattern: a second suffix follows.
        {"photo (hue-shifted).tiff", "photo (hue-shifted) (hue-shifted)"},
        {"name-shifted-0", "name (hue-shifted)-1"},
        {"name-Shifted", "name-Shifted (hue-shifted)"},
        {"/Users/ann/Pictures/photo-shifted-9.jpeg", "photo (hue-shifted)-10"},
        {"photo-shifted-12-shifted.tif", "photo-shifted-12 (hue-shifted)-1"},
        // A hyphen without digits is no count.
        {"photo-shifted-.tif", "photo-shifted- (hue-shifted)"},
        {"photo-shifted-x.tif", "photo-shifted-x (hue-shifted)"},
        {"archive.tar.gz", "archive.tar (hue-shifted)"},
        {".hidden", ".hidden (hue-shifted)"},
        {"folder/", "folder (hue-shifted)"},
        {"Fotó-shifted-2.png", "Fotó (hue-shifted)-3"},
        // The count saturates at the largest signed 64-bit integer before one is added.
        {"x-shifted-99999999999999999999.png", "x (hue-shifted)-9223372036854775808"},
    };
    for (const NameCase& c : cases)
        EXPECT_EQ(shiftedFileNameForPath(c.path), c.name) << c.path;
}

TEST(ShiftedFileName, ExtensionOfTheSaveType)
{
    const std::pair<std::string_view, const char*> cases[] = {
        {TintorraTIFFType, "photo (hue-shifted).tiff"}, {kTypeTIFF, "photo (hue-shifted).tiff"},
        {kTypePNG, "photo (hue-shifted).png"},          {kTypeJPEG, "photo (hue-shifted).jpeg"},
        {kTypeJPEG2000, "photo (hue-shifted).jp2"},     {kTypeBMP, "photo (hue-shifted).bmp"},
        {"public.plain-text", "photo (hue-shifted)"},
    };
    for (const auto& [type, name] : cases)
        EXPECT_EQ(shiftedFileNameForPath("/a/photo.jpg", type), name) << type;
}

TEST(ShiftedFileName, PathInTheSameFolder)
{
    const NameCase cases[] = {
        {"/a/b/photo-shifted.jpg", "/a/b/photo (hue-shifted)-1.tiff"},
        {"/photo.jpg", "/photo (hue-shifted).tiff"},
        {"photo.jpg", "photo (hue-shifted).tiff"},
        {"rel/dir/photo.jpg", "rel/dir/photo (hue-shifted).tiff"},
    };
    for (const NameCase& c : cases)
        EXPECT_EQ(shiftedPathForPath(c.path, TintorraTIFFType), c.name) << c.path;
}

} // namespace
} // namespace tintorra
