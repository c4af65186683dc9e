#include "editor/EyedropperRules.h"

#include <gtest/gtest.h>

namespace tintorra {
namespace {

using Bound = HueBoundMove::Bound;

struct EyedropperCase {
    const char* name;
    double upper;
    double lower;
    double hue;
    Bound bound;
    double value;
};

void expectMove(const HueBoundMove& move, const EyedropperCase& c)
{
    EXPECT_EQ(move.bound, c.bound) << c.name;
    if (c.bound != Bound::none) {
        EXPECT_NEAR(move.value, c.value, 1e-12) << c.name;
    }
}

TEST(EyedropperRulesTests, AddWidensTheNearerBound)
{
    const EyedropperCase cases[] = {
        {"inside", 0.6, 0.4, 0.5, Bound::none, 0.0},
        {"on a bound", 0.6, 0.4, 0.6, Bound::none, 0.0},
        {"above", 0.6, 0.4, 0.65, Bound::upper, 0.65},
        {"below", 0.6, 0.4, 0.3, Bound::lower, 0.3},
        {"tie extends the upper bound", 0.6, 0.4, 0.0, Bound::upper, 1.0},
        {"across 0 from a ring, past upper", 0.1, -0.1, 0.15, Bound::upper, 0.15},
        {"across 0 from a ring, below lower", 0.1, -0.1, 0.85, Bound::lower, -0.15},
        {"across 0 from a ring, inside", 0.1, -0.1, 0.95, Bound::none, 0.0},
        {"saved set near 0: lower above upper", 10.0 / 360.0, 350.0 / 360.0, 0.05, Bound::upper,
         0.05},
        {"saved set near 0: inside", 10.0 / 360.0, 350.0 / 360.0, 0.99, Bound::none, 0.0},
        {"saved set near 0: below lower", 10.0 / 360.0, 350.0 / 360.0, 0.9, Bound::lower, 0.9},
    };
    for (const EyedropperCase& c : cases) {
        expectMove(hueBoundToAdd(c.upper, c.lower, c.hue), c);
    }
}

TEST(EyedropperRulesTests, SubtractPullsInTheNearerBoundOnlyFromInside)
{
    const EyedropperCase cases[] = {
        {"outside", 0.6, 0.4, 0.7, Bound::none, 0.0},
        {"on the upper bound", 0.6, 0.4, 0.6, Bound::none, 0.0},
        {"on the lower bound", 0.6, 0.4, 0.4, Bound::none, 0.0},
        {"near upper", 0.6, 0.4, 0.55, Bound::upper, 0.55},
        {"near lower", 0.6, 0.4, 0.42, Bound::lower, 0.42},
        {"tie pulls the upper bound", 0.6, 0.4, 0.5, Bound::upper, 0.5},
        {"across 0 from a ring", 0.1, -0.1, 0.95, Bound::lower, -0.05},
        {"saved set near 0", 10.0 / 360.0, 350.0 / 360.0, 0.01, Bound::upper, 0.01},
    };
    for (const EyedropperCase& c : cases) {
        expectMove(hueBoundToSubtract(c.upper, c.lower, c.hue), c);
    }
}

} // namespace
} // namespace tintorra
