// SPDX-License-Identifier: MIT
#include "Print.h"

#include "glib/Owned.h"

namespace zviptv::ctl {

namespace {

// As HexEscape() writes them.
constexpr char LineBreak[] = "\\x0a";
constexpr char Tab[] = "\\x09";

std::string HexEscape(char character)
{
    return "\\x" + ToHex(static_cast<unsigned char>(character), 2).substr(2);
}

/// Takes the first character off the text; \xNN for the first byte of a control character or of no character.
std::string TakeCharacter(std::string_view& text)
{
    gunichar const code = g_utf8_get_char_validated(text.data(), static_cast<gssize>(text.size()));
    bool const isPrintable = g_unichar_validate(code) != FALSE && g_unichar_iscntrl(code) == FALSE;
    std::size_t const size = isPrintable ? static_cast<std::size_t>(g_unichar_to_utf8(code, nullptr)) : 1;
    std::string const character = isPrintable ? std::string(text.substr(0, size)) : HexEscape(text.front());
    text.remove_prefix(size);
    return character;
}

} // namespace

std::string ToHex(std::uint64_t number, unsigned digits)
{
    static constexpr char Digits[] = "0123456789abcdef";
    std::string text(digits, '0');
    for (auto digit = text.rbegin(); digit != text.rend(); ++digit) {
        *digit = Digits[number & 0xFU];
        number >>= 4U;
    }
    return "0x" + text;
}

std::string EscapeText(std::string_view text)
{
    std::string escaped;
    while (!text.empty()) {
        std::string const character = TakeCharacter(text);
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
        std::string const character = TakeCharacter(text);
        printable += character == LineBreak ? "\n" : character == Tab ? "\t" : character;
    }
    return printable;
}

std::string ToText(EnumInfo const& info, std::int32_t value)
{
    char const* const name = info.NameOf(value);
    std::string text = std::to_string(value);
    return name == nullptr || text == name ? text : text + " (" + name + ")";
}

std::string ToText(EZVLanguageCode language)
{
    std::string const code = ZVLanguageToISO639(language);
    return code.empty() ? ToText(InfoOf<EZVLanguageCode>(), language) : code;
}

std::string ToText(bool flag)
{
    return flag ? "true" : "false";
}

std::string ToText(char character)
{
    std::string_view text(&character, 1);
    return TakeCharacter(text);
}

std::string ToText(std::string const& text)
{
    return EscapeText(text);
}

Json::Value ToJson(std::string const& text)
{
    Owned<char> const valid(g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())));
    return Json::Value(valid.get());
}

Json::Value ToJson(char character)
{
    auto const code = static_cast<unsigned char>(character);
    std::string utf8;
    if (code < 0x80) {
        utf8 = std::string(1, character);
    } else {
        utf8 += static_cast<char>(0xC0U | (code >> 6U));
        utf8 += static_cast<char>(0x80U | (code & 0x3FU));
    }
    return Json::Value(utf8);
}

Json::Value ToJson(bool flag)
{
    return Json::Value(flag);
}

} // namespace zviptv::ctl
