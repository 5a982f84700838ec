#include "Print.h"

#include <glib.h>

#include <memory>

namespace zviptv::ctl {

namespace {

bool IsControl(char character)
{
    auto const byte = static_cast<unsigned char>(character);
    return byte < 0x20 || byte == 0x7F;
}

std::string HexEscape(char character)
{
    return "\\x" + ToHex(static_cast<unsigned char>(character), 2).substr(2);
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
    for (char const character : text) {
        if (character == '\\') {
            escaped += "\\\\";
        } else if (character == '\n') {
            escaped += "\\n";
        } else if (character == '\t') {
            escaped += "\\t";
        } else {
            escaped += IsControl(character) ? HexEscape(character) : std::string(1, character);
        }
    }
    return escaped;
}

std::string PrintableText(std::string_view text)
{
    std::string printable;
    for (char const character : text) {
        bool const isLayout = character == '\n' || character == '\t';
        printable += IsControl(character) && !isLayout ? HexEscape(character) : std::string(1, character);
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
    bool const isAscii = static_cast<unsigned char>(character) < 0x80;
    return isAscii && !IsControl(character) ? std::string(1, character) : HexEscape(character);
}

std::string ToText(std::string const& text)
{
    return EscapeText(text);
}

Json::Value ToJson(std::string const& text)
{
    std::unique_ptr<char, decltype(&g_free)> const valid(
        g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())), g_free);
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
