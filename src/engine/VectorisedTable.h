#pragma once

#include "engine/HueShiftParameters.h"
#include "engine/HueShiftWorkers.h"
#include "engine/ShiftOutcome.h"
#include "engine/VectorisedShift.h"

#include <cstdint>
#include <vector>

namespace tintorra {

// The colour-table worker's selection and shift four colours at a time, for the LCh modes
// showing the shifted image on processors with AVX2. The table holds every colour in LCh
// already, so the stages start there; the stored colours are the scalar steps', bit for bit.
// One per worker.
class VectorisedTable {
public:
    // Whether the worker can go this way in this run with the (normalised) record.
    static bool serves(const HueShiftRun& run, const HueShiftParameters& normalised);

    VectorisedTable(const HueShiftRun& run, const HueShiftParameters& normalised,
                    const OutcomeContext& context);

    VectorisedTable(const VectorisedTable&) = delete;
    VectorisedTable& operator=(const VectorisedTable&) = delete;

    // The selected entries from `begin` to `end` with the bytes they are written with, appended
    // to `toWrite` in the table's order.
    void shiftEntries(const ColorTableRef& table, std::uint64_t begin, std::uint64_t end,
                      std::vector<TableColor>& toWrite);

private:
    const HueShiftRun& run_;
    StretchArrays arrays_;
    VectorisedShift shift_;
};

} // namespace tintorra
