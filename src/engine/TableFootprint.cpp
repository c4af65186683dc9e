#include "engine/TableFootprint.h"

#include "engine/HueShiftWorkers.h"

#include <algorithm>

namespace tintorra {

TableFootprint footprintOf(const std::vector<std::vector<TableColor>>& toWrite)
{
    std::size_t count = 0;
    for (const auto& list : toWrite) {
        count += list.size();
    }
    TableFootprint footprint;
    footprint.reserve(count);
    for (const auto& list : toWrite) {
        for (const TableColor& color : list) {
            footprint.push_back({color.firstLocation, color.locationCount});
        }
    }
    return footprint;
}

std::vector<TableColor> entriesToRestore(const TableFootprint& before, const TableFootprint& now)
{
    std::vector<TableColor> restore;
    if (before.empty()) {
        return restore;
    }
    // A bit per possible first location: a million entries are looked up without sorting them.
    std::uint32_t end = 0;
    for (const TableSpan& span : now) {
        end = std::max(end, span.firstLocation + 1);
    }
    std::vector<bool> writtenNow(end, false);
    for (const TableSpan& span : now) {
        writtenNow[span.firstLocation] = true;
    }
    for (const TableSpan& span : before) {
        if (span.firstLocation >= end || !writtenNow[span.firstLocation]) {
            restore.push_back({span.firstLocation, span.locationCount, {}});
        }
    }
    return restore;
}

} // namespace tintorra
