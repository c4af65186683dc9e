#pragma once

#include "colour/ColorComponents.h"
#include "engine/ColorTable.h"
#include "engine/HueShiftParameters.h"
#include "engine/SampleTables.h"
#include "image/PixelAccess.h"

#include <cstdint>

namespace tintorra {

// Whether a colour-table entry describes pixels of the table's locations (an entry of a damaged
// or foreign table may not).
inline bool describesPixels(const color_table_lch_entry_info& entry, const ColorTableRef& table)
{
    return entry.locationCount != 0 &&
           static_cast<std::uint64_t>(entry.firstLocation) + entry.locationCount <=
               table.locationCount;
}

// The four stored bytes of a linear colour: encoded with the destination's gamma, premultiplied
// where the destination stores it so, rounded half up.
PixelChars encodedColor(ColorComponents c, const PixelManipulationOffsets& destination,
                        const SampleEncodeTable& encode);

} // namespace tintorra
