#pragma once

#include "engine/HueShiftParameters.h"
#include "engine/RowKernel.h"
#include "engine/ShiftOutcome.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace tintorra {

// The four-lane selection and shift stages' constants for a normalised record in an LCh mode,
// with their ways back into the scalar code for what is rare. Shared by the row worker and the
// colour-table worker; the record must outlive it.
class VectorisedShift {
public:
    // keepUnshifted: whether the selected colours' unshifted linear colours are kept for a
    // painted coverage to mix in.
    VectorisedShift(const HueShiftParameters& normalised, const OutcomeContext& context,
                    std::shared_ptr<const std::vector<double>> pairedChroma, bool keepUnshifted);

    const rowKernel::SelectConstants& select() const { return select_; }
    const rowKernel::PaintConstants& paint() const { return paint_; }

private:
    static double bringHueIntoChain(const void* record, double hue, bool raise);
    static void blend(const void* record, const double* from, int zone, double weight,
                      double* shifted);

    std::shared_ptr<const std::vector<double>> chromaTable_;
    rowKernel::SelectConstants select_{};
    rowKernel::PaintConstants paint_{};
};

// The stages' working arrays for stretches of up to `stretch` colours, each with room for the
// last group of four; kept by a worker from stretch to stretch.
class StretchArrays {
public:
    explicit StretchArrays(std::size_t stretch);

    StretchArrays(const StretchArrays&) = delete;
    StretchArrays& operator=(const StretchArrays&) = delete;

    const rowKernel::RowWords& words() const { return words_; }
    const rowKernel::Candidates& candidates() const { return candidates_; }
    const rowKernel::SelectedColors& selected() const { return selected_; }
    double* weights() const { return weights_; }

private:
    std::vector<std::uint32_t> wordStore_;
    std::vector<std::uint32_t> indexStore_;
    std::vector<double> doubleStore_;
    rowKernel::RowWords words_{};
    rowKernel::Candidates candidates_{};
    rowKernel::SelectedColors selected_{};
    double* weights_ = nullptr;
};

} // namespace tintorra
