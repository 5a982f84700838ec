// SPDX-License-Identifier: MIT
#pragma once

#include <glib.h>

#include <array>
#include <cstddef>
#include <string_view>

namespace zviptv {

/// One line of printable UTF-8 text in an array of fixed size. A text that does not fit is cut and ends in
/// "...". Bytes that are not printable are written as \x and two hexadecimal digits.
template <std::size_t Size>
class BoundedText
{
public:
    void Clear()
    {
        m_length = 0;
        m_isCut = false;
        m_text[0] = '\0';
    }

    void Append(std::string_view text)
    {
        while (!text.empty() && !m_isCut) {
            std::size_t const size = PrintableBytes(text);
            if (size > 0) {
                Add(text.substr(0, size));
            } else {
                AddEscaped(static_cast<unsigned char>(text.front()));
            }
            text.remove_prefix(size > 0 ? size : 1);
        }
    }

    char const* Text() const { return m_text.data(); }

private:
    static constexpr std::string_view Ellipsis = "...";

    /// The size of the first character, 0 if it is not printable.
    static std::size_t PrintableBytes(std::string_view text)
    {
        gunichar const character = g_utf8_get_char_validated(text.data(), static_cast<gssize>(text.size()));
        bool const isValid = character < static_cast<gunichar>(-2);
        return isValid && g_unichar_isprint(character) != FALSE
                   ? static_cast<std::size_t>(g_unichar_to_utf8(character, nullptr))
                   : 0;
    }

    void AddEscaped(unsigned char byte)
    {
        constexpr std::string_view digits = "0123456789abcdef";
        std::array<char, 4> const escape = {'\\', 'x', digits[byte >> 4U], digits[byte & 15U]};
        Add({escape.data(), escape.size()});
    }

    void Add(std::string_view piece)
    {
        m_isCut = m_length + piece.size() + Ellipsis.size() >= Size;
        for (char const character : m_isCut ? Ellipsis : piece) {
            m_text[m_length++] = character;
        }
        m_text[m_length] = '\0';
    }

    std::array<char, Size> m_text{};
    std::size_t m_length = 0;
    bool m_isCut = false;
};

} // namespace zviptv
