// SPDX-License-Identifier: MIT
#include "common/PrintableText.h"

#include <glib.h>

namespace zviptv {

namespace {

// The digits of HexEscape().
constexpr char LineBreak[] = "\\x0a";
constexpr char Tab[] = "\\x09";

std::string HexEscape(char character)
{
    static constexpr char Digits[] = "0123456789abcdef";
    auto const byte = static_cast<unsigned char>(character);
    return std::string("\\x") + Digits[byte >> 4U] + Digits[byte & 0xFU];
}

/// XML may not contain these two.
bool IsNoncharacter(gunichar code)
{
    return code == 0xFFFE || code == 0xFFFF;
}

} // namespace

std::string TakePrintable(std::string_view& text)
{
    gunichar const code = g_utf8_get_char_validated(text.data(), static_cast<gssize>(text.size()));
    bool const isPrintable =
        g_unichar_validate(code) != FALSE && g_unichar_iscntrl(code) == FALSE && !IsNoncharacter(code);
    std::size_t const size = isPrintable ? static_cast<std::size_t>(g_unichar_to_utf8(code, nullptr)) : 1;
    std::string const character = isPrintable ? std::string(text.substr(0, size)) : HexEscape(text.front());
    text.remove_prefix(size);
    return character;
}

std::string EscapeText(std::string_view text)
{
    std::string escaped;
    while (!text.empty()) {
        std::string const character = TakePrintable(text);
        if (character == "\\") {
            escaped += "\\\\";
        } else if (character == LineBreak) {
            escaped += "\\n";
        } else if (character == Tab) {
            escaped += "\\t";
        } else {
            escaped += character;
        }
    }
    return escaped;
}

std::string PrintableText(std::string_view text)
{
    std::string printable;
    while (!text.empty()) {
        std::string const character = TakePrintable(text);
        printable += character == LineBreak ? "\n" : character == Tab ? "\t" : character;
    }
    return printable;
}

} // namespace zviptv
