#pragma once

#include "colour/ColorSpaceModel.h"
#include "controls/KVContextMenuItem.h"
#include "controls/KVSliderBindings.h"
#include "controls/KVSliderValues.h"

#include <cstdio>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tintorra {

// The parts of a range slider, as hit testing, dragging and the contextual menu number them.
enum KVCircularSliderPart : int {
    kCircularPartNone = 0,
    kCircularPartSlot = 1,
    kCircularPartMiddle = 2,
    kCircularPartLower = 3,
    kCircularPartUpper = 4,
    kCircularPartLowerFalloff = 5,
    kCircularPartUpperFalloff = 6,
};

// How offsets that no longer fit the scale are shrunk.
enum KVCollapseMethod : int {
    kCollapseProportionally = 0,
    kCollapseLowerSideFirst = 1, // after the minimum moved
    kCollapseUpperSideFirst = 2, // after the maximum moved, or wrapping was switched on
};

// The arrow-key commands of the value field.
enum class KVNudgeCommand { up, upLarge, down, downLarge };

// Binding keys of the range slider.
inline constexpr const char* kValuesBinding = "values";
inline constexpr const char* kMiddleValueBinding = "middleValue";
inline constexpr const char* kUpperValueBinding = "upperValue";
inline constexpr const char* kLowerValueBinding = "lowerValue";
inline constexpr const char* kUpperFalloffValueBinding = "upperFalloffValue";
inline constexpr const char* kLowerFalloffValueBinding = "lowerFalloffValue";

// The value model of the range slider: a middle with an upper and a lower bound and a fall-off
// beyond each, on a scale that either wraps (the hue ring) or has hard ends (the straight
// saturation and brightness sliders). Everything the user's hands do to the slider is expressed
// here in scale values; the widget only converts points to values, hit-tests its thumbs and
// paints.
class KVCircularSliderModel {
public:
    // Ring and straight sliders start differently; a ring wraps around.
    explicit KVCircularSliderModel(bool circular = true);

    // A frame is drawn as a ring when neither side exceeds 1.2 times the other.
    static bool isCircularFrame(double width, double height);
    static KVCircularSliderModel forFrameSize(double width, double height);

    // --- Scale and switches -------------------------------------------------------------------
    double minValue() const { return minValue_; }
    double maxValue() const { return maxValue_; }
    double wrapDist() const { return wrapDist_; }
    void setMinValue(double value);
    void setMaxValue(double value);
    bool isCircular() const { return circular_; }
    bool wrapsAround() const { return wrapsAround_; }
    void setWrapsAround(bool wraps);
    bool showsUpperLowerThumbs() const { return showsUpperLowerThumbs_; }
    void setShowsUpperLowerThumbs(bool shows);
    bool showsUpperLowerFalloffThumbs() const { return showsUpperLowerFalloffThumbs_; }
    void setShowsUpperLowerFalloffThumbs(bool shows);
    bool centerThumbWithinOffsets() const { return centerThumbWithinOffsets_; }
    void setCenterThumbWithinOffsets(bool centers);
    bool showsValueIndicator() const { return showsValueIndicator_; }
    void setShowsValueIndicator(bool shows);
    double indicatedValue() const { return indicatedValue_; }
    void setIndicatedValue(double value);
    bool isEnabled() const { return enabled_; }
    void setEnabled(bool enabled);
    bool isContinuous() const { return continuous_; }
    void setContinuous(bool continuous) { continuous_ = continuous; }
    double defaultValue() const { return defaultValue_; }
    void setDefaultValue(double value) { defaultValue_ = value; }
    ColorSpaceModel colorSpaceModel() const { return colorSpaceModel_; }
    void setColorSpaceModel(ColorSpaceModel model);
    const std::string& mouseMovedNotificationKey() const { return mouseMovedNotificationKey_; }
    void setMouseMovedNotificationKey(std::string key)
    {
        mouseMovedNotificationKey_ = std::move(key);
    }

    // --- Stored offsets and their conversions ---------------------------------------------------
    const KVSliderOffsets& offsets() const { return offsets_; }
    // Stores offsets as given, without any rule (restoring a state).
    void setOffsets(const KVSliderOffsets& offsets);

    // The largest value a range may reach: just under the maximum on a wrapping scale, so that a
    // full-circle range never quite meets its own start.
    double maxAllowableValue() const;
    // The most the four offsets may add up to (T).
    double maxAllowableTotalOffsets() const;

    KVSliderOffsets offsetsFromValues(const KVSliderValues& values) const;
    KVSliderOffsets clampedOffsets(const KVSliderOffsets& offsets) const;
    KVSliderOffsets
    offsetsWithMiddleValueCenteredWithinOffsets(const KVSliderOffsets& offsets) const;
    KVSliderOffsets collapsedOffsetsFromOffsets(const KVSliderOffsets& offsets, int method) const;

    // --- Values ---------------------------------------------------------------------------------
    // The range as read by bindings: always clamped, the stored offsets untouched.
    KVSliderValues sliderValues() const;
    KVValueDictionary values() const;
    // Stores the range without clamping.
    void takeValues(const KVSliderValues& values);
    void takeValues(const KVValueDictionary& dictionary);
    void setValues(const KVSliderValues& values);
    void setValues(const KVValueDictionary& dictionary);

    // Single values from the stored offsets, unwrapped.
    double middleValue() const;
    double upperValue() const;
    double lowerValue() const;
    double upperFalloffValue() const;
    double lowerFalloffValue() const;
    // The single value bound to a key ("middleValue", ...); NaN for any other key.
    double doubleValueForKey(std::string_view key) const;

    void takeMiddleValue(double value);
    void takeUpperValue(double value);
    void takeLowerValue(double value);
    void takeUpperFalloffValue(double value);
    void takeLowerFalloffValue(double value);
    void setMiddleValue(double value);
    void setUpperValue(double value);
    void setLowerValue(double value);
    void setUpperFalloffValue(double value);
    void setLowerFalloffValue(double value);

    // --- Spread and reset -----------------------------------------------------------------------
    void setSpreadInDegrees(double degrees);
    // The spread chosen by a segment whose tag is the spread in degrees.
    void setSpread(long segmentTag);
    static double spreadForSegmentTag(long segmentTag);
    void resetValues();
    void resetAllThumbs();
    void resetLowerThumb();
    void resetUpperThumb();
    // The step by which the fall-off resets move a bound's fall-off.
    double resetStep() const;

    // --- Mouse ----------------------------------------------------------------------------------
    // Pointer values come from the widget: on a ring the angle about the centre (0 to the right,
    // counter-clockwise, in [0, 2 pi)) mapped linearly onto [min, max]; on a straight slider the
    // long axis less 13 points at each end, mapped the same way.
    // The order in which the widget tests its parts (the first whose shape holds the point wins).
    std::vector<int> hitTestOrder() const;
    int hitTest(const std::function<bool(int part)>& partContainsPoint) const;
    double valueForControlPart(int part) const;

    // The press of a button over `part` with the pointer at `pointerValue`. Returns whether a
    // drag has started (the widget then hides the value field and opens an undo group).
    bool mouseDown(int part, double pointerValue);
    void mouseDragged(double pointerValue);
    // Returns whether a drag ended (the widget then shows the value field and closes the group).
    bool mouseUp(double pointerValue, int clickCount);

    int controlPart() const { return controlPart_; }
    bool mouseIsDown() const { return mouseIsDown_; }
    double mouseDownValue() const { return mouseDownValue_; }
    double mouseDownPointValueOffset() const { return mouseDownPointValueOffset_; }
    double lastMouseValue() const { return lastMouseValue_; }
    // The value drawn in the middle of the slider (as "%.1f°" of value × 360).
    double displayedValue() const;

    // --- Contextual menu ------------------------------------------------------------------------
    static std::vector<KVContextMenuItem> contextualMenuItems(int part);
    int controlPartUnderMenu() const { return controlPartUnderMenu_; }
    void setControlPartUnderMenu(int part) { controlPartUnderMenu_ = part; }
    // Runs the item of the menu over controlPartUnderMenu().
    void performContextualMenuItem();

    // --- Value field ----------------------------------------------------------------------------
    // An arrow key applied to a value read as single precision, wrapped into [0, 1).
    static double nudgedValue(double value, KVNudgeCommand command);
    void nudgeMiddleValue(KVNudgeCommand command);

    // --- Bindings and action --------------------------------------------------------------------
    // A copy of the model carries the same callbacks; rebind or clear them on copies.
    static const KVKeyDependencyTable& keyPathsForValuesAffectingValueForKey();
    static const KVKeyDependencyTable& keyPathsForValuesAffectedByValueForKey();
    KVSliderBindings& bindings() { return bindings_; }
    const KVSliderBindings& bindings() const { return bindings_; }
    void propagateValuesForBinding(std::string_view key) const;
    void propagateValuesAffectedByBinding(std::string_view key) const;
    void sendActionToTarget() const;

    // --- Diagnostics ----------------------------------------------------------------------------
    std::string debugDescription() const;
    void logValues(std::FILE* stream = stderr) const;

private:
    bool boundsShown() const { return showsUpperLowerThumbs_; }
    bool falloffsShown() const { return showsUpperLowerFalloffThumbs_; }
    double wrapOrClampIntoScale(double value) const;
    void takeUpperValueCentered(double value);
    void takeUpperValueFromMiddle(double value);
    void takeLowerValueCentered(double value);
    void takeLowerValueFromMiddle(double value);
    void limitUpperFalloffToRoomLeft();
    void limitLowerFalloffToRoomLeft();
    void applyPartValue(int part, double value);
    double unwrappedDragValue(double pointerValue) const;
    void didChange(std::string_view key);
    void display() const { bindings_.requestDisplay(); }

    KVSliderOffsets offsets_;
    double minValue_ = 0.0;
    double maxValue_ = 1.0;
    double wrapDist_ = 1.0;
    bool circular_ = true;
    bool wrapsAround_ = true;
    bool showsUpperLowerThumbs_ = true;
    bool showsUpperLowerFalloffThumbs_ = true;
    bool centerThumbWithinOffsets_ = true;
    bool showsValueIndicator_ = false;
    double indicatedValue_ = 0.0;
    bool enabled_ = true;
    bool continuous_ = true;
    double defaultValue_ = 0.0;
    ColorSpaceModel colorSpaceModel_ = ColorSpaceModel::LChuv;
    std::string mouseMovedNotificationKey_ = "value";

    int controlPart_ = kCircularPartNone;
    int controlPartUnderMenu_ = kCircularPartNone;
    bool mouseIsDown_ = false;
    double mouseDownValue_ = 0.0;
    double mouseDownPointValueOffset_ = 0.0;
    double lastMouseValue_ = 0.0;

    KVSliderBindings bindings_;
};

} // namespace tintorra
