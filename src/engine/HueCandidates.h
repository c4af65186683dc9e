#pragma once

#include "colour/Matrix3.h"
#include "controls/HueShiftParameters.h"
#include "engine/ColorTable.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace tintorra {

// Cheap tests that rule colours out before their weight is computed. They only ever rule out
// colours whose hue lies outside every part of the normalised hue range (with a margin far
// beyond rounding), so the weights of the colours that pass, and therefore every result, are
// exactly those of computing each weight in full.

// The raw hues (as the conversions return them) whose weight can differ from 0: the arc from the
// smallest to the largest hue bound, widened by the margin, or the whole circle.
struct HueArc {
    bool wholeCircle = true;
    double centre = 0.0;
    double halfWidth = 0.0;
    double period = 1.0;
};

HueArc selectableHueArc(const HueShiftParameters& normalised);

// Index ranges [begin, end) of the entries in [first, end) of a table sorted by hue whose hue
// lies on the arc. The whole run when the arc is the whole circle.
std::vector<std::pair<std::uint64_t, std::uint64_t>>
entriesOnHueArc(const color_table_lch_entry_info* colors, std::uint64_t first, std::uint64_t end,
                const HueArc& arc);

// For LCh over Luv: a linear RGB colour's hue is the direction of (4X - u'n d, 9Y - v'n d) with
// d = X + 15Y + 3Z, so whether it can lie on the arc is decided with two dot products, without
// cube root or arctangent.
class LuvHueFilter {
public:
    LuvHueFilter(const HueArc& arc, const Matrix3& M);

    bool mayBeSelected(double r, double g, double b) const
    {
        if (everything_) {
            return true;
        }
        const double u = a_[0] * r + a_[1] * g + a_[2] * b;
        const double v = b_[0] * r + b_[1] * g + b_[2] * b;
        const double norm = u * u + v * v;
        // Too close to grey for the direction to mean anything: let the full weight decide.
        if (norm < 1e-24) {
            return true;
        }
        const double along = u * centreCos_ + v * centreSin_;
        if (cosHalfWidth_ >= 0.0) {
            return along >= 0.0 && along * along >= cosSquared_ * norm;
        }
        return along >= 0.0 || along * along <= cosSquared_ * norm;
    }

private:
    bool everything_ = true;
    double a_[3] = {};
    double b_[3] = {};
    double centreCos_ = 1.0;
    double centreSin_ = 0.0;
    double cosHalfWidth_ = -1.0;
    double cosSquared_ = 1.0;
};

} // namespace tintorra
