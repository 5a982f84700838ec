// SPDX-License-Identifier: MIT
#include "CaptionText.h"

#include <array>
#include <bitset>
#include <stdexcept>

namespace zviptv::test {

namespace {

constexpr std::size_t UnitSize = 46;
constexpr std::size_t RowSize = 42;

void Require(bool isTrue, char const* what)
{
    if (!isTrue) {
        throw std::runtime_error(what);
    }
}

std::uint8_t Mirror(std::uint8_t byte)
{
    unsigned mirrored = 0;
    for (unsigned bit = 0; bit < 8; ++bit) {
        mirrored |= (unsigned{byte} >> bit & 1u) << (7 - bit);
    }
    return static_cast<std::uint8_t>(mirrored);
}

/// Four bits of a Hamming 8/4 byte, whose four parity sums must be odd.
unsigned Nibble(std::uint8_t byte)
{
    for (unsigned const sum : {0xA3u, 0x8Eu, 0x3Au, 0xFFu}) {
        Require(std::bitset<8>(byte & sum).count() % 2 == 1, "wrong Hamming code");
    }
    return (byte >> 1 & 1u) | (byte >> 2 & 2u) | (byte >> 3 & 4u) | (byte >> 4 & 8u);
}

std::string Character(unsigned code, bool german)
{
    static std::map<unsigned, std::string> const umlauts{{'[', "Ä"}, {'\\', "Ö"}, {']', "Ü"}, {'{', "ä"},
                                                         {'|', "ö"}, {'}', "ü"},  {'~', "ß"}};
    auto const umlaut = umlauts.find(code);
    return german && umlaut != umlauts.end() ? umlaut->second : std::string(1, static_cast<char>(code));
}

std::string Text(Bytes const& row, std::size_t from, bool german)
{
    std::string text;
    for (std::size_t i = from; i < row.size(); ++i) {
        Require(std::bitset<8>(row[i]).count() % 2 == 1, "wrong parity");
        unsigned const code = row[i] & 0x7Fu;
        text += Character(code < 0x20 ? ' ' : code, german);
    }
    std::size_t const begin = text.find_first_not_of(' ');
    return begin == std::string::npos ? "" : text.substr(begin, text.find_last_not_of(' ') + 1 - begin);
}

/// Gathers rows; each magazine has the page of its last header.
class Reader
{
public:
    TeletextRow Read(Bytes const& packet)
    {
        unsigned const address = Nibble(packet[0]) | Nibble(packet[1]) << 4;
        unsigned const magazine = (address & 7) == 0 ? 8 : address & 7;
        Page& page = m_pages.at(magazine);
        TeletextRow row;
        row.row = address >> 3;
        if (row.row == 0) {
            page.number = magazine << 8 | Nibble(packet[3]) << 4 | Nibble(packet[2]);
            page.german = (Nibble(packet[9]) >> 1) == 4;
        }
        row.page = page.number;
        row.text = Text(packet, row.row == 0 ? 10 : 2, page.german);
        return row;
    }

private:
    struct Page
    {
        unsigned number = 0;
        bool german = false;
    };
    std::array<Page, 9> m_pages{};
};

} // namespace

bool operator==(TeletextRow const& left, TeletextRow const& right)
{
    return left.page == right.page && left.row == right.row && left.text == right.text;
}

std::vector<TeletextRow> ReadTeletext(Bytes const& units)
{
    Require(units.size() % UnitSize == 0, "units of another length");
    Reader reader;
    std::vector<TeletextRow> rows;
    for (std::size_t at = 0; at < units.size(); at += UnitSize) {
        Require(units[at + 1] == UnitSize - 2, "wrong unit length");
        if (units[at] == 0xFF) {
            continue;
        }
        Require(units[at + 3] == 0xE4, "wrong framing code");
        Bytes packet;
        for (std::size_t i = 0; i < RowSize; ++i) {
            packet.push_back(Mirror(units[at + 4 + i]));
        }
        rows.push_back(reader.Read(packet));
    }
    return rows;
}

std::pair<unsigned, Bytes> ReadAribGroup(Bytes const& field)
{
    constexpr std::size_t head = 8;
    constexpr std::size_t checkSum = 2;
    Require(field.size() >= head + checkSum && field[0] == 0x80 && field[1] == 0xFF, "no caption");
    Require(field[6] * 256u + field[7] == field.size() - head - checkSum, "wrong group size");
    unsigned crc = 0;
    for (std::size_t i = 3; i < field.size(); ++i) {
        crc ^= static_cast<unsigned>(field[i] << 8);
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc << 1 ^ (crc & 0x8000 ? 0x1021u : 0u)) & 0xFFFF;
        }
    }
    Require(crc == 0, "wrong check sum");
    return {field[3] >> 2, Bytes(field.begin() + head, field.end() - checkSum)};
}

Bytes PesPayload(Bytes const& pes)
{
    return Bytes(pes.begin() + 9 + pes.at(8), pes.end());
}

} // namespace zviptv::test
