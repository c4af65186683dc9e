#pragma once

namespace tintorra {

// Which bound of the selection's hue range an eyedropper click moves, and to where. The value is
// what goes to the slider's setUpperValue or setLowerValue: the slider's own bound plus the
// shortest way round to the picked hue, so a range across 0 may end above 1 or below 0.
struct HueBoundMove {
    enum class Bound { none, upper, lower };
    Bound bound = Bound::none;
    double value = 0.0;

    friend bool operator==(const HueBoundMove&, const HueBoundMove&) = default;
};

// Widens the range [lower, upper] (hue fractions, period 1) to take in `hue`: the nearer bound
// moves out to it, the upper one on a tie. A hue already inside moves nothing.
HueBoundMove hueBoundToAdd(double upper, double lower, double hue);

// Narrows the range to leave `hue` out: only a hue strictly inside moves a bound, the nearer one
// (the upper one on a tie) in to the hue.
HueBoundMove hueBoundToSubtract(double upper, double lower, double hue);

} // namespace tintorra
