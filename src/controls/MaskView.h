#pragma once

#include <cstdint>
#include <optional>

namespace tintorra {

// What the engine renders instead of the shifted image. The numbers are those of the parameter
// string, so they must not change.
enum class MaskView : int {
    shiftedImage = 0,
    selectionHighlight = 1,
    blackMask = 2,
    whiteMask = 3,
    // The highlight of the selected pixels whose lightness is the one hovered in the spectrogram.
    hoverHighlight = 4,
};

constexpr int maskViewNumber(MaskView view)
{
    return static_cast<int>(view);
}

// The view a stored number names; nothing for a number outside the enumeration.
constexpr std::optional<MaskView> maskViewFromNumber(std::int64_t number)
{
    if (number < maskViewNumber(MaskView::shiftedImage) ||
        number > maskViewNumber(MaskView::hoverHighlight)) {
        return std::nullopt;
    }
    return static_cast<MaskView>(number);
}

// The two views that show the selection's weights as grey.
constexpr bool showsGreyMask(MaskView view)
{
    return view == MaskView::blackMask || view == MaskView::whiteMask;
}

} // namespace tintorra
