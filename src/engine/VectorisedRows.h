#pragma once

#include "colour/ColorComponents.h"
#include "engine/HueShiftParameters.h"
#include "engine/HueShiftWorkers.h"
#include "engine/RowKernel.h"
#include "engine/SampleTables.h"
#include "engine/ShiftOutcome.h"
#include "engine/VectorisedShift.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace tintorra {

// The row worker's steps four pixels at a time, for 16-bit images on processors with AVX2: the
// reading with its hue filter for every record, and for the LCh modes showing the shifted image
// the whole chain of selection, shift and writing. The results are the scalar steps', bit for
// bit. Rows go in stretches of a few hundred pixels, so that the working arrays stay in the
// first-level cache; one per worker, kept from row to row.
class VectorisedRows {
public:
    // Whether a run can go this way: the processor has AVX2 and both bitmaps 16-bit samples with
    // their lookup tables.
    static bool available(const HueShiftRun& run);

    VectorisedRows(const HueShiftRun& run, const HueShiftParameters& normalised,
                   const OutcomeContext& context);

    VectorisedRows(const VectorisedRows&) = delete;
    VectorisedRows& operator=(const VectorisedRows&) = delete;

    // Whether shiftRow serves the record (an LCh mode showing the shifted image); otherwise
    // readRow feeds the scalar steps.
    bool shiftsWholeRows() const { return wholeRows_; }

    // Every stage of row y; where it writes no colour the destination row gets the source's
    // samples (unless it holds them already).
    void shiftRow(std::int64_t y);

    // Row y's candidates in order of x, their linear colours into `linear` and their columns
    // into `x` (room for the row's width each); returns their count.
    std::size_t readRow(std::int64_t y, ColorComponents* linear, std::uint32_t* x);

    // The stages' view of a 16-bit encoding table, which must outlive it.
    static rowKernel::Encoding encodingOf(const SampleEncodeTable& table);

    // The constants the stages run with, for tests of the stages on their own.
    const rowKernel::SelectConstants& selectConstants() const { return shift_.select(); }
    const rowKernel::PaintConstants& paintConstants() const { return shift_.paint(); }

private:
    static bool readPixel(const void* self, std::int64_t x, std::int64_t y, double* rgba);
    static std::uint32_t encodeSample(const void* table, double linear);
    static void writePixel(const void* self, std::int64_t x, std::int64_t y, const double* rgba);

    const HueShiftRun& run_;
    const HueShiftParameters& p_;
    bool wholeRows_ = false;
    std::vector<float> boxBounds_;
    rowKernel::PixelShuffles shuffles_{};
    rowKernel::PixelUnshuffles unshuffles_{};
    StretchArrays arrays_;
    VectorisedShift shift_;
    rowKernel::ReadConstants read_{};
    rowKernel::WriteConstants write_{};
};

} // namespace tintorra
