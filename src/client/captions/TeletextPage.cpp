// SPDX-License-Identifier: MIT
#include "TeletextPage.h"

#include "CaptionText.h"

namespace zviptv {

namespace {

/// The right and lower parts of a large character are characters of the page, too.
bool IsContinuation(vbi_char const& character)
{
    return character.size >= VBI_OVER_TOP;
}

bool IsVisible(vbi_char const& character)
{
    return character.opacity != VBI_TRANSPARENT_SPACE && character.conceal == 0;
}

/// Block graphics and characters of a page's private set are not text.
std::string TextOf(vbi_char const& character)
{
    return vbi_is_print(character.unicode) != 0 ? ToUtf8(character.unicode) : " ";
}

Colour ColourOf(vbi_page const& page, unsigned index)
{
    constexpr unsigned Colours = sizeof page.color_map / sizeof page.color_map[0];
    vbi_rgba const rgba = page.color_map[index % Colours];
    auto const part = [rgba](unsigned shift) { return static_cast<std::uint8_t>(rgba >> shift & 0xFF); };
    return {part(0), part(8), part(16)};
}

CaptionRun LookOf(vbi_page const& page, vbi_char const& character)
{
    CaptionRun look;
    look.foreground = ColourOf(page, character.foreground);
    look.background = ColourOf(page, character.background);
    look.isDoubleWidth = character.size == VBI_DOUBLE_WIDTH || character.size == VBI_DOUBLE_SIZE;
    look.isDoubleHeight = character.size == VBI_DOUBLE_HEIGHT || character.size == VBI_DOUBLE_SIZE;
    look.isFlashing = character.flash != 0;
    return look;
}

} // namespace

std::vector<CaptionLine> LinesOf(vbi_page const& page)
{
    std::vector<CaptionLine> lines;
    LineBuilder line;
    for (int row = 1; row < page.rows; ++row) {
        CaptionRun look;
        for (int column = 0; column < page.columns; ++column) {
            vbi_char const& character = page.text[row * page.columns + column];
            bool const isShown = IsVisible(character) && !IsContinuation(character);
            std::string const text = isShown ? TextOf(character) : " ";
            // A space keeps the look of its neighbour, so that runs are as long as they can be.
            look = text != " " ? LookOf(page, character) : look;
            if (!IsVisible(character) || !IsContinuation(character)) {
                line.Add(text, look);
            }
        }
        line.EndLine(lines);
    }
    return lines;
}

} // namespace zviptv
