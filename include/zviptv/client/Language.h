// SPDX-License-Identifier: MIT
/// @file
/// Languages.

#pragma once

#include <zviptv/Export.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace zviptv {

/// A language by its ISO 639-2 code of three lower-case letters, or no language.
class Language
{
public:
    /// No language.
    constexpr Language() = default;

    /// The language of a code such as "eng", in upper or lower case. A code that is not three letters gives
    /// no language.
    constexpr explicit Language(std::string_view code) : m_number(Pack(code)) {}

    /// The language that has this number in the protocol: the first letter in bits 16 to 23, the last in bits
    /// 0 to 7.
    static constexpr Language FromNumber(std::int32_t number)
    {
        Language language;
        language.m_number = number;
        return language;
    }
    /// Its number in the protocol; 0 for no language.
    constexpr std::int32_t Number() const { return m_number; }

    /// Whether it is a language: false for the number 0.
    constexpr explicit operator bool() const { return m_number != 0; }

    friend constexpr bool operator==(Language left, Language right)
    {
        return left.m_number == right.m_number;
    }
    friend constexpr bool operator!=(Language left, Language right)
    {
        return left.m_number != right.m_number;
    }
    friend constexpr bool operator<(Language left, Language right) { return left.m_number < right.m_number; }

private:
    static constexpr std::int32_t Pack(std::string_view code)
    {
        if (code.size() != 3) {
            return 0;
        }
        std::int32_t number = 0;
        for (char const given : code) {
            char const letter = given >= 'A' && given <= 'Z' ? static_cast<char>(given - 'A' + 'a') : given;
            if (letter < 'a' || letter > 'z') {
                return 0;
            }
            number = number * 256 + letter;
        }
        return number;
    }

    std::int32_t m_number = 0;
};

/// The three letters of its code, "eng". Empty for no language, and the number in hexadecimal digits, "0x1a",
/// for a number that is not made of three letters.
ZVIPTV_API std::string ToString(Language language);

} // namespace zviptv
