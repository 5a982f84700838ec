// SPDX-License-Identifier: MIT
#pragma once

#include "../../sim/stream/StreamBuilder.h"

#include <string>

namespace zviptv::test {

/// Flags of a page header, to be combined.
enum class TeletextFlags : unsigned
{
    None = 0,
    Erase = 1,    ///< C4
    Subtitle = 2, ///< C6
    Serial = 4    ///< C11
};

constexpr TeletextFlags operator|(TeletextFlags one, TeletextFlags other)
{
    return static_cast<TeletextFlags>(static_cast<unsigned>(one) | static_cast<unsigned>(other));
}

/// Writes a data field of EN 300 472, bit by bit according to ETS 300 706. Pages are numbers such as 0x888.
class TeletextBuilder
{
public:
    TeletextBuilder& Header(unsigned page, TeletextFlags flags = TeletextFlags::None, unsigned subcode = 0,
                            unsigned charset = 0)
    {
        auto const has = [flags](TeletextFlags flag) {
            return (static_cast<unsigned>(flags) & static_cast<unsigned>(flag)) != 0 ? 1U : 0U;
        };
        Bytes data;
        for (unsigned const nibble : {page & 15U, page >> 4U & 15U, subcode & 15U,
                                      has(TeletextFlags::Erase) << 3U, 0U, has(TeletextFlags::Subtitle) << 3U,
                                      0U, has(TeletextFlags::Serial) | ReversedCharset(charset)}) {
            data.push_back(Hamming(nibble));
        }
        return Add(page >> 8U, 0, data + Characters("header", 32));
    }

    /// Codes below 32 are those of colours, boxes and sizes.
    TeletextBuilder& Row(unsigned magazine, unsigned row, std::string const& text)
    {
        return Add(magazine, row, Characters(text, 40));
    }

    /// The field with its data identifier.
    Bytes Field() const { return Bytes{0x10} + m_units; }

private:
    /// C12 is the most significant bit of the set's number.
    static unsigned ReversedCharset(unsigned charset)
    {
        return (charset & 1U) << 3U | (charset & 2U) << 1U | (charset & 4U) >> 1U;
    }

    static std::uint8_t Hamming(unsigned nibble)
    {
        unsigned const d1 = nibble & 1U;
        unsigned const d2 = nibble >> 1U & 1U;
        unsigned const d3 = nibble >> 2U & 1U;
        unsigned const d4 = nibble >> 3U & 1U;
        unsigned const p1 = 1U ^ d1 ^ d3 ^ d4;
        unsigned const p2 = 1U ^ d1 ^ d2 ^ d4;
        unsigned const p3 = 1U ^ d1 ^ d2 ^ d3;
        unsigned const p4 = 1U ^ p1 ^ d1 ^ p2 ^ d2 ^ p3 ^ d3 ^ d4;
        return static_cast<std::uint8_t>(p1 | d1 << 1U | p2 << 2U | d2 << 3U | p3 << 4U | d3 << 5U |
                                         p4 << 6U | d4 << 7U);
    }

    static Bytes Characters(std::string text, std::size_t size)
    {
        text.resize(size, ' ');
        Bytes bytes;
        for (char const character : text) {
            auto const code = static_cast<unsigned>(character) & 0x7FU;
            unsigned parity = 1;
            for (unsigned bit = 0; bit < 7; ++bit) {
                parity ^= code >> bit & 1U;
            }
            bytes.push_back(static_cast<std::uint8_t>(code | parity << 7U));
        }
        return bytes;
    }

    TeletextBuilder& Add(unsigned magazine, unsigned row, Bytes const& data)
    {
        unsigned const address = magazine % 8U | row << 3U;
        Bytes const packet = Bytes{Hamming(address & 15U), Hamming(address >> 4U)} + data;
        m_units = m_units + Bytes{0x03, 44, 0xE7, 0xE4};
        for (std::uint8_t const byte : packet) {
            unsigned mirrored = 0;
            for (unsigned bit = 0; bit < 8; ++bit) {
                mirrored |= (unsigned{byte} >> bit & 1U) << (7U - bit);
            }
            m_units.push_back(static_cast<std::uint8_t>(mirrored));
        }
        return *this;
    }

    Bytes m_units;
};

} // namespace zviptv::test
