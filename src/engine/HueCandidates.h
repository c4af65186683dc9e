#pragma once

#include "colour/Matrix3.h"
#include "engine/ColorTable.h"
#include "engine/HueShiftParameters.h"

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
    // The two linear forms in r, g, b and the arc's direction and width.
    struct Coefficients {
        bool everything = true;
        double u[3] = {};
        double v[3] = {};
        double centreCos = 1.0;
        double centreSin = 0.0;
        double cosHalfWidth = -1.0;
        double cosSquared = 1.0;
    };

    // A looser test for a whole box of linear colours (each channel within a range): the arc
    // widened by kBoxAngle as two linear forms w1, w2 in r, g, b. Every colour of the box lies
    // off the arc when the largest of w1 . rgb over the box is below -kBoxFloor, or the largest
    // of w2 . rgb is (`bothForms` false), or both are (`bothForms` true). The box's colours then
    // lie far enough from grey and from the arc that mayBeSelected rules each of them out too.
    struct BoxTest {
        bool active = false;
        bool bothForms = false;
        double w1[3] = {};
        double w2[3] = {};
    };
    static constexpr double kBoxAngle = 1e-4;
    static constexpr double kBoxFloor = 1e-11;

    LuvHueFilter(const HueArc& arc, const Matrix3& M);

    bool mayBeSelected(double r, double g, double b) const
    {
        const Coefficients& k = k_;
        if (k.everything) {
            return true;
        }
        const double u = k.u[0] * r + k.u[1] * g + k.u[2] * b;
        const double v = k.v[0] * r + k.v[1] * g + k.v[2] * b;
        const double norm = u * u + v * v;
        // Too close to grey for the direction to mean anything: let the full weight decide.
        if (norm < 1e-24) {
            return true;
        }
        const double along = u * k.centreCos + v * k.centreSin;
        if (k.cosHalfWidth >= 0.0) {
            return along >= 0.0 && along * along >= k.cosSquared * norm;
        }
        return along >= 0.0 || along * along <= k.cosSquared * norm;
    }

    const Coefficients& coefficients() const { return k_; }
    const BoxTest& boxTest() const { return box_; }

private:
    Coefficients k_;
    BoxTest box_;
};

} // namespace tintorra
