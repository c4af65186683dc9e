#pragma once

#include "colour/ColorSpaceModel.h"
#include "engine/TableAllocation.h"
#include "image/KVBitmap.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace tintorra {

// One distinct colour of an image, expressed in the table's colour mode. Seven 4-byte fields, so
// that a million colours stay compact and the shift workers can walk them linearly.
//
// Modes 0 and 1 (LCh): hue in radians as the conversion returns it (-pi..pi), chroma, lightness
// 0..100, alpha. Modes 2 to 4: the mode's hue fraction, its second component (HCL chroma, HSB or
// HSL saturation), its third component (luma, brightness, lightness) and alpha.
// A plain record without initialisers, so that arrays of a million entries are not cleared before
// they are filled.
struct color_table_lch_entry_info {
    float hue;
    float chroma;
    float lightness;
    float alpha;
    // The HSB saturation that the HCL conversion yields beside its components; 0 in other modes.
    float saturation;
    // The entry's run in the table's locations: index of its first location and number of pixels.
    std::uint32_t firstLocation;
    std::uint32_t locationCount;
};
static_assert(sizeof(color_table_lch_entry_info) == 28);

// The distinct colours of an image with the positions of all pixels of each colour.
//
// `locations` holds one byte offset per pixel (row * bytesPerRow + column * bytesPerPixel),
// grouped by colour: the groups follow the packed colour (r | g << 8 | b << 16 | a << 24) in
// ascending order, and each group lists its offsets in ascending order. `colors` are sorted by
// hue, then lightness, then chroma, ascending (equal triples keep the order of their groups).
struct LChColorTable {
    ColorSpaceModel colorSpaceModel = ColorSpaceModel::LChuv;
    std::uint64_t count = 0;
    TableArray<color_table_lch_entry_info> colors;
    TableArray<std::uint32_t> locations;
    // Pixels described by `locations` (width * height); 0 for an empty table.
    std::uint64_t locationCount = 0;

    bool empty() const { return count == 0; }
};

// Builds the colour table of an 8-bit image in the given colour mode (0 LChuv, 1 LChab, 2 HCL,
// 3 HSB, anything else HSL). Samples are un-premultiplied where the bitmap stores them so and
// linearised with `imageGamma` (clamped to [1/3, 1] by the pixel layer); the LCh modes use the
// matrix of the bitmap's colour space. Samples of 16 bits are read by their high byte.
//
// Returns an empty table (the mode and nothing else) for an unsupported layout, for an image
// whose offsets do not fit in 32 bits, and, with a message on standard error, when memory runs
// out. Uses up to two threads; the result does not depend on their number.
LChColorTable createLChColorTableWithImageGamma(const KVBitmapPtr& bitmap, double imageGamma,
                                                ColorSpaceModel colorSpaceModel);

// True when every pixel of an image of this geometry has a byte offset that fits in 32 bits and
// the pixel count fits the entries' 32-bit location fields.
bool colorTableCanAddress(std::int64_t pixelsWide, std::int64_t pixelsHigh,
                          std::int64_t bytesPerRow, std::int64_t bytesPerPixel);

} // namespace tintorra
