#pragma once

#include "colour/ColorComponents.h"
#include "colour/ColorSpaceModel.h"
#include "colour/Matrix3.h"
#include "engine/SelectionWeights.h"
#include "engine/ShiftOutcome.h"

#include <cstdint>
#include <vector>

namespace tintorra {

// A run of colours of one worker (a row's pixels or a stretch of colour-table entries) whose
// selected members are painted together: the powers of their lightness steps and the sines and
// cosines of their way back to RGB are taken four at a time. Kept by the worker from run to run.
struct ShiftBatch {
    // The run's colours in the mode's form; the LCh modes use `lch`, the others `cylinder`.
    std::vector<ColorComponents> lch;
    std::vector<HclComponents> cylinder;
    // The selected members: their index in the run and their selection.
    std::vector<std::uint32_t> selected;
    std::vector<Selection> selection;
    // Linear straight-alpha RGB inside 0..1 of each selected member, once painted.
    std::vector<ColorComponents> rgb;
    std::vector<double> a;
    std::vector<double> b;
    std::vector<double> c;
    // For lchOfLinearColors.
    std::vector<ColorComponents> xyz;
    std::vector<double> d;

    void reserve(std::size_t n);
};

// The first `count` linear colours into the run's LCh colours (`lch`), as rgbToLchuv (mode 0) or
// rgbToLchab (any other) would convert each, the cube roots and arctangents taken four at a time.
void lchOfLinearColors(const ColorComponents* linear, std::size_t count, ColorSpaceModel mode,
                       const Matrix3& M, ShiftBatch& batch);

// Paints the first `count` selected members: the shifted colour, or the highlight the record's
// maskToShow asks for, as lchOutcome and cylinderOutcome would, into `rgb`. The run's colours
// are replaced by the painted mode colours on the way.
void paintSelectedLch(ShiftBatch& batch, std::size_t count, const OutcomeContext& context);
void paintSelectedCylinders(ShiftBatch& batch, std::size_t count, const OutcomeContext& context);

} // namespace tintorra
