#pragma once

#include "colour/Matrix3.h"
#include "controls/HueShiftParameters.h"
#include "engine/PaintCoverage.h"
#include "engine/PixelAccess.h"

#include <cstdint>

namespace tintorra {

// What every worker of one run shares, read-only: both bitmaps' offsets (the same record when
// shifting in place), the painted coverage and the colour space's matrices.
struct HueShiftRun {
    const PixelManipulationOffsets* source = nullptr;
    const PixelManipulationOffsets* destination = nullptr;
    const PaintCoverage* coverage = nullptr;
    Matrix3 M{};
    Matrix3 MI{};
};

// One worker's share: its own copy of the normalised record, so no thread sees another's
// changes, and its run of items (colour-table entries or rows).
struct HueShiftTask {
    const HueShiftRun* run = nullptr;
    HueShiftParameters parameters;
    std::uint64_t firstItem = 0;
    std::uint64_t itemCount = 0;
    unsigned long index = 0;
};

// 8-bit images: each entry of the colour table is computed once and written to every pixel of
// that colour. The destination must already hold the source's samples.
void colorTableWorker(const HueShiftTask& task);

// Other depths: every pixel of the task's rows, left to right.
void rowWorker(const HueShiftTask& task);

// The trace both workers begin with, on standard output.
void printWorkerTrace(unsigned long index);

} // namespace tintorra
