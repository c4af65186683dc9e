#pragma once

#include <functional>
#include <string_view>

namespace tintorra::cli {

// A 3 x 5 pixel font, enough for a plot's numbers and labels: digits, ". % ( ) -" and the lower
// case letters a c d e g h i l m n o p r s t u x (others are drawn as gaps). The core has no
// text rendering, and a plot without labelled axes cannot be read.
inline constexpr int kPlotGlyphWidth = 3;
inline constexpr int kPlotGlyphHeight = 5;

// Calls `dot(x, y)` for every lit pixel of `text` drawn `scale` times enlarged with its top left
// corner at (left, top), y counted downwards; returns the text's width in pixels.
int drawPlotText(std::string_view text, int left, int top, int scale,
                 const std::function<void(int, int)>& dot);

// The width `text` takes at `scale`.
int plotTextWidth(std::string_view text, int scale);

} // namespace tintorra::cli
