#include "controls/KVCircularSliderModel.h"
#include "controls/KVTenSegmentSliderModel.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

namespace tintorra {
namespace {

std::set<std::string> asSet(const std::vector<std::string>& keys)
{
    return {keys.begin(), keys.end()};
}

const char* const kAllKeys[] = {"values",     "middleValue",       "upperValue",
                                "lowerValue", "upperFalloffValue", "lowerFalloffValue"};

struct AffectedCase {
    const char* key;
    std::set<std::string> affected;
};

class KeysAffectedBy : public testing::TestWithParam<AffectedCase> {};

// The reverse table, written out by hand from the forward one.
TEST_P(KeysAffectedBy, ListsTheKeysThatChangeWithIt)
{
    const AffectedCase& c = GetParam();
    EXPECT_EQ(asSet(dependentKeys(KVCircularSliderModel::keyPathsForValuesAffectedByValueForKey(),
                                  c.key)),
              c.affected);
}

INSTANTIATE_TEST_SUITE_P(
    Keys, KeysAffectedBy,
    testing::Values(AffectedCase{"values",
                                 {"middleValue", "upperValue", "lowerValue", "upperFalloffValue",
                                  "lowerFalloffValue"}},
                    AffectedCase{"middleValue",
                                 {"values", "upperValue", "lowerValue", "upperFalloffValue",
                                  "lowerFalloffValue"}},
                    AffectedCase{"upperValue", {"values", "middleValue", "upperFalloffValue"}},
                    AffectedCase{"lowerValue", {"values", "middleValue", "lowerFalloffValue"}},
                    AffectedCase{"upperFalloffValue", {"values"}},
                    AffectedCase{"lowerFalloffValue", {"values"}}, AffectedCase{"unknown", {}}));

struct PropagationCase {
    const char* key;
    std::vector<std::string> pushed;
};

class Propagation : public testing::TestWithParam<PropagationCase> {};

TEST_P(Propagation, SetterPushesItsKeyThenItsDependenciesAndSendsTheActionOnce)
{
    const PropagationCase& c = GetParam();
    KVCircularSliderModel ring(true);
    std::vector<std::string> pushed;
    for (const char* key : kAllKeys) {
        ring.bindings().bind(key, [&pushed, key] { pushed.push_back(key); });
    }
    int actions = 0;
    ring.bindings().setAction([&] { ++actions; });
    const std::string key = c.key;
    if (key == "values") {
        ring.setValues(KVSliderValues{0.25, 0.125, 0.0, -0.125, -0.25});
    } else if (key == "middleValue") {
        ring.setMiddleValue(0.25);
    } else if (key == "upperValue") {
        ring.setUpperValue(0.125);
    } else if (key == "lowerValue") {
        ring.setLowerValue(-0.125);
    } else if (key == "upperFalloffValue") {
        ring.setUpperFalloffValue(0.125);
    } else {
        ring.setLowerFalloffValue(-0.125);
    }
    EXPECT_EQ(pushed, c.pushed);
    EXPECT_EQ(actions, 1);
}

INSTANTIATE_TEST_SUITE_P(
    Setters, Propagation,
    testing::Values(PropagationCase{"values",
                                    {"values", "middleValue", "upperValue", "lowerValue",
                                     "upperFalloffValue", "lowerFalloffValue"}},
                    PropagationCase{"middleValue",
                                    {"middleValue", "values", "upperValue", "lowerValue"}},
                    PropagationCase{"upperValue", {"upperValue", "values", "middleValue"}},
                    PropagationCase{"lowerValue", {"lowerValue", "values", "middleValue"}},
                    PropagationCase{"upperFalloffValue",
                                    {"upperFalloffValue", "values", "middleValue", "upperValue"}},
                    PropagationCase{"lowerFalloffValue",
                                    {"lowerFalloffValue", "values", "middleValue", "lowerValue"}}));

TEST(Propagation, AffectedWalkUsesTheReverseTable)
{
    KVCircularSliderModel ring(true);
    std::set<std::string> pushed;
    for (const char* key : kAllKeys) {
        ring.bindings().bind(key, [&pushed, key] { pushed.insert(key); });
    }
    ring.propagateValuesAffectedByBinding("upperValue");
    EXPECT_EQ(pushed,
              (std::set<std::string>{"upperValue", "values", "middleValue", "upperFalloffValue"}));
}

TEST(Propagation, BoundObserverReadsTheNewValue)
{
    KVCircularSliderModel ring(true);
    KVValueDictionary observed;
    ring.bindings().bind("values", [&] { observed = ring.values(); });
    ring.setSpreadInDegrees(90.0);
    EXPECT_EQ(observed, dictionaryFromValues(KVSliderValues{0.25, 0.125, 0.0, -0.125, -0.25}));
}

TEST(Propagation, CallbackMayUnbindItself)
{
    KVCircularSliderModel ring(true);
    int calls = 0;
    ring.bindings().bind("values", [&] {
        ++calls;
        ring.bindings().unbind("values");
    });
    ring.setSpreadInDegrees(10.0);
    ring.setSpreadInDegrees(20.0);
    EXPECT_EQ(calls, 1);
    EXPECT_FALSE(ring.bindings().isBound("values"));
}

TEST(Propagation, CurveMinAndMaxDependOnEachOther)
{
    KVTenSegmentSliderModel curve;
    std::vector<std::string> pushed;
    for (const char* key : {"minValue", "maxValue", "values"}) {
        curve.bindings().bind(key, [&pushed, key] { pushed.push_back(key); });
    }
    curve.propagateValuesForBinding("minValue");
    curve.propagateValuesForBinding("values");
    EXPECT_EQ(pushed, (std::vector<std::string>{"minValue", "maxValue", "values"}));
}

TEST(Display, ChangesRequestARedisplay)
{
    KVCircularSliderModel ring(true);
    int displays = 0;
    ring.bindings().setDisplayHandler([&] { ++displays; });
    ring.takeMiddleValue(0.25);
    EXPECT_GE(displays, 1);
    displays = 0;
    (void)ring.values();
    EXPECT_EQ(displays, 0);
}

} // namespace
} // namespace tintorra
