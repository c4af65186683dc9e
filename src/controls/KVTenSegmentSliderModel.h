#pragma once

#include "controls/KVContextMenuItem.h"
#include "controls/KVSliderBindings.h"
#include "controls/KVTenSegmentValues.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tintorra {

// One point of the curve. A locked thumb is an anchor: dragging another thumb never moves it.
struct KVSliderThumb {
    double doubleValue = 0.0;
    bool locked = false;

    friend constexpr bool operator==(const KVSliderThumb&, const KVSliderThumb&) = default;
};

// Parts of the curve slider: 0 none, 1 the slot, 2 to 12 the thumbs 0 to 10, 13 the last part
// the widget tests (not a thumb).
inline constexpr std::int32_t kTenSegmentPartNone = 0;
inline constexpr std::int32_t kTenSegmentPartSlot = 1;
inline constexpr std::int32_t kTenSegmentPartFirstThumb = 2;
inline constexpr std::int32_t kTenSegmentPartLastThumb = 12;
inline constexpr std::int32_t kTenSegmentPartLast = 13;

// The value model of the eleven-thumb curve slider: a monotone piecewise-linear curve whose free
// thumbs stretch and compress proportionally between the anchors when one thumb is dragged.
// Thumbs are addressed by index 0 to 10; the chain runs from index 0 (no previous thumb) to
// index 10 (no next thumb).
class KVTenSegmentSliderModel {
public:
    KVTenSegmentSliderModel();

    // The identity curve in dictionary form.
    static KVValueDictionary defaultValues();

    const KVSliderThumb& thumb(std::size_t index) const { return thumbs_.at(index); }
    static std::optional<std::size_t> previousThumb(std::size_t index);
    static std::optional<std::size_t> nextThumb(std::size_t index);
    void setThumbLocked(std::size_t index, bool locked);

    double minValue() const { return minValue_; }
    double maxValue() const { return maxValue_; }
    void setMinValue(double value);
    void setMaxValue(double value);
    bool isEnabled() const { return enabled_; }
    void setEnabled(bool enabled);
    bool isContinuous() const { return continuous_; }
    void setContinuous(bool continuous) { continuous_ = continuous; }
    bool showsValueIndicator() const { return showsValueIndicator_; }
    void setShowsValueIndicator(bool shows);
    double indicatedValue() const { return indicatedValue_; }
    void setIndicatedValue(double value);
    const std::string& mouseMovedNotificationKey() const { return mouseMovedNotificationKey_; }
    void setMouseMovedNotificationKey(std::string key)
    {
        mouseMovedNotificationKey_ = std::move(key);
    }

    // --- Values ---------------------------------------------------------------------------------
    KVTenSegmentValues tenSegmentValues() const;
    KVValueDictionary values() const;
    // Stores the eleven values as given; no order or range is enforced.
    void takeValues(const KVTenSegmentValues& values);
    void takeValues(const KVValueDictionary& dictionary);
    // As takeValues, but first unlocks every thumb whose value changes (NaN never equals).
    void setValues(const KVTenSegmentValues& values);
    void setValues(const KVValueDictionary& dictionary);

    // The proportional drag rule: thumb `index` moves to `value` (kept clear of its anchors) and
    // the free thumbs up to the nearest anchors follow linearly.
    void takeValue(double value, std::size_t index);
    void setValue(double value, std::size_t index);

    // Restores the order of the thumbs from the first to the last, within the scale.
    void sequenceValues();

    void resetAllThumbs();
    // Unlocks the thumb under the contextual menu.
    void unlockThumb();

    // --- Parts and mouse ------------------------------------------------------------------------
    static std::optional<std::size_t> sliderThumbForControlPart(std::int32_t part);
    // index + 2, or 0 for an index that is not a thumb.
    static std::int32_t controlPartForSliderThumb(std::size_t index);
    double valueForControlPart(std::int32_t part) const;

    // Parts are tried from the end of the scale that the pointer is nearer to: ascending from the
    // slot at or above the middle of the scale, descending below it.
    std::vector<std::int32_t> hitTestOrder(double pointerValue) const;
    std::int32_t hitTest(double pointerValue,
                         const std::function<bool(std::int32_t part)>& partContainsPoint) const;

    // Returns whether a drag started (the widget then opens an undo group).
    bool mouseDown(std::int32_t part, double pointerValue);
    void mouseDragged(double pointerValue);
    // Returns whether a drag ended (the widget then closes the undo group).
    bool mouseUp(double pointerValue, int clickCount);

    std::int32_t controlPart() const { return controlPart_; }
    bool mouseIsDown() const { return mouseIsDown_; }
    double mouseDownValue() const { return mouseDownValue_; }
    double mouseDownPointValueOffset() const { return mouseDownPointValueOffset_; }
    double lastMouseValue() const { return lastMouseValue_; }

    // --- Contextual menu ------------------------------------------------------------------------
    std::vector<KVContextMenuItem> contextualMenuItems(std::int32_t part) const;
    std::int32_t controlPartUnderMenu() const { return controlPartUnderMenu_; }
    void setControlPartUnderMenu(std::int32_t part) { controlPartUnderMenu_ = part; }

    // --- Bindings and action --------------------------------------------------------------------
    static const KVKeyDependencyTable& keyPathsForValuesAffectingValueForKey();
    KVSliderBindings& bindings() { return bindings_; }
    const KVSliderBindings& bindings() const { return bindings_; }
    void propagateValuesForBinding(std::string_view key) const;
    void sendActionToTarget() const;

    // --- Diagnostics ----------------------------------------------------------------------------
    std::string debugDescription() const;
    void logValues(std::FILE* stream = stderr) const;

private:
    void display() const { bindings_.requestDisplay(); }

    std::array<KVSliderThumb, kTenSegmentThumbCount> thumbs_{};
    double minValue_ = 0.0;
    double maxValue_ = 1.0;
    bool enabled_ = true;
    bool continuous_ = true;
    bool showsValueIndicator_ = false;
    double indicatedValue_ = 0.0;
    std::string mouseMovedNotificationKey_ = "value";

    std::int32_t controlPart_ = kTenSegmentPartNone;
    std::int32_t controlPartUnderMenu_ = kTenSegmentPartNone;
    bool mouseIsDown_ = false;
    double mouseDownValue_ = 0.0;
    double mouseDownPointValueOffset_ = 0.0;
    double lastMouseValue_ = 0.0;

    KVSliderBindings bindings_;
};

inline constexpr const char* kTenSegmentValuesBinding = "values";
inline constexpr const char* kTenSegmentMinValueBinding = "minValue";
inline constexpr const char* kTenSegmentMaxValueBinding = "maxValue";

} // namespace tintorra
