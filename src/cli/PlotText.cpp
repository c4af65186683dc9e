#include "cli/PlotText.h"

#include <array>
#include <utility>

namespace tintorra::cli {

namespace {

// Rows top to bottom, three bits each, the left pixel the highest bit.
struct Glyph {
    char character;
    std::array<unsigned char, kPlotGlyphHeight> rows;
};

constexpr std::array<Glyph, 38> kGlyphs{{
    {'0', {7, 5, 5, 5, 7}}, {'1', {2, 6, 2, 2, 7}}, {'2', {7, 1, 7, 4, 7}}, {'3', {7, 1, 7, 1, 7}},
    {'4', {5, 5, 7, 1, 1}}, {'5', {7, 4, 7, 1, 7}}, {'6', {7, 4, 7, 5, 7}}, {'7', {7, 1, 1, 1, 1}},
    {'8', {7, 5, 7, 5, 7}}, {'9', {7, 5, 7, 1, 7}}, {'.', {0, 0, 0, 0, 2}}, {'%', {5, 1, 2, 4, 5}},
    {'(', {1, 2, 2, 2, 1}}, {')', {4, 2, 2, 2, 4}}, {'-', {0, 0, 7, 0, 0}}, {' ', {0, 0, 0, 0, 0}},
    {'a', {2, 5, 7, 5, 5}}, {'c', {7, 4, 4, 4, 7}}, {'d', {6, 5, 5, 5, 6}}, {'e', {7, 4, 6, 4, 7}},
    {'g', {7, 4, 5, 5, 7}}, {'h', {5, 5, 7, 5, 5}}, {'i', {7, 2, 2, 2, 7}}, {'l', {4, 4, 4, 4, 7}},
    {'m', {5, 7, 7, 5, 5}}, {'n', {6, 5, 5, 5, 5}}, {'o', {0, 7, 5, 5, 7}}, {'p', {7, 5, 7, 4, 4}},
    {'r', {6, 5, 6, 5, 5}}, {'s', {3, 4, 2, 1, 6}}, {'t', {7, 2, 2, 2, 2}}, {'u', {5, 5, 5, 5, 7}},
    {'x', {5, 5, 2, 5, 5}}, {'k', {5, 5, 6, 5, 5}}, {'b', {6, 5, 6, 5, 6}}, {'f', {7, 4, 6, 4, 4}},
    {'v', {5, 5, 5, 5, 2}}, {'y', {5, 5, 2, 2, 2}},
}};

const Glyph* glyphFor(char c)
{
    for (const Glyph& glyph : kGlyphs) {
        if (glyph.character == c) {
            return &glyph;
        }
    }
    return nullptr;
}

constexpr int kAdvance = kPlotGlyphWidth + 1;

} // namespace

int plotTextWidth(std::string_view text, int scale)
{
    return text.empty() ? 0 : (static_cast<int>(text.size()) * kAdvance - 1) * scale;
}

int drawPlotText(std::string_view text, int left, int top, int scale,
                 const std::function<void(int, int)>& dot)
{
    int x = left;
    for (const char c : text) {
        if (const Glyph* glyph = glyphFor(c)) {
            for (int row = 0; row < kPlotGlyphHeight; ++row) {
                for (int column = 0; column < kPlotGlyphWidth; ++column) {
                    if ((glyph->rows[static_cast<std::size_t>(row)] >>
                         (kPlotGlyphWidth - 1 - column)) &
                        1) {
                        for (int dy = 0; dy < scale; ++dy) {
                            for (int dx = 0; dx < scale; ++dx) {
                                dot(x + column * scale + dx, top + row * scale + dy);
                            }
                        }
                    }
                }
            }
        }
        x += kAdvance * scale;
    }
    return plotTextWidth(text, scale);
}

} // namespace tintorra::cli
