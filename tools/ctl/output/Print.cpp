// SPDX-License-Identifier: MIT
#include "Print.h"

#include "common/PrintableText.h"
#include "glib/Utf8.h"

namespace zviptv::ctl {

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
    return TakePrintable(text);
}

std::string ToText(std::string const& text)
{
    return EscapeText(text);
}

Json::Value ToJson(std::string const& text)
{
    return ValidUtf8(text);
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
