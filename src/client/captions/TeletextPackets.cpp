// SPDX-License-Identifier: MIT
#include "TeletextPackets.h"

#include "mpegts/DataUnits.h"

#include <bitset>

namespace zviptv {

namespace {

// Places in a page header, after the two bytes of the address.
constexpr std::size_t PageUnits = 2;
constexpr std::size_t PageTens = 3;
constexpr std::size_t Subcode = 4; // four nibbles, with C4 in the second, C5 and C6 in the fourth
constexpr std::size_t SerialFlag = 9;
constexpr unsigned EraseFlag = 8;
constexpr unsigned SubtitleFlag = 8;

std::uint8_t Mirrored(std::uint8_t byte)
{
    unsigned mirrored = 0;
    for (unsigned bit = 0; bit < 8; ++bit) {
        mirrored |= (unsigned{byte} >> bit & 1U) << (7 - bit);
    }
    return static_cast<std::uint8_t>(mirrored);
}

/// Hamming 8/4.
std::uint8_t Protected(unsigned nibble)
{
    static constexpr std::uint8_t codes[] = {0x15, 0x02, 0x49, 0x5E, 0x64, 0x73, 0x38, 0x2F,
                                             0xD0, 0xC7, 0x8C, 0x9B, 0xA1, 0xB6, 0xFD, 0xEA};
    return codes[nibble & 0xF];
}

/// Corrects one wrong bit.
std::optional<unsigned> Nibble(std::uint8_t byte)
{
    for (unsigned nibble = 0; nibble < 16; ++nibble) {
        if (std::bitset<8>(byte ^ Protected(nibble)).count() <= 1) {
            return nibble;
        }
    }
    return std::nullopt;
}

/// The nibbles from `first` on; nothing if one is damaged.
template <std::size_t Count>
std::optional<std::array<unsigned, Count>> Nibbles(TeletextPacket const& packet, std::size_t first)
{
    std::array<unsigned, Count> nibbles{};
    for (std::size_t i = 0; i < Count; ++i) {
        auto const nibble = Nibble(packet[first + i]);
        if (!nibble) {
            return std::nullopt;
        }
        nibbles[i] = *nibble;
    }
    return nibbles;
}

std::optional<TeletextPacket> PacketIn(std::uint8_t id, ByteView unit)
{
    constexpr std::uint8_t Teletext = 0x02;
    constexpr std::uint8_t Subtitles = 0x03;
    constexpr std::size_t Head = 2; // line and framing code
    constexpr std::uint8_t FramingCode = 0xE4;
    TeletextPacket packet{};
    bool const isPacket = (id == Teletext || id == Subtitles) && unit.Size() == Head + packet.size();
    if (!isPacket || unit[1] != FramingCode) {
        return std::nullopt;
    }
    for (std::size_t i = 0; i < packet.size(); ++i) {
        packet[i] = Mirrored(unit[Head + i]);
    }
    return packet;
}

} // namespace

std::vector<TeletextPacket> TeletextPacketsIn(ByteView field)
{
    constexpr std::uint8_t FirstIdentifier = 0x10;
    constexpr std::uint8_t LastIdentifier = 0x1F;
    bool const hasIdentifier = field[0] >= FirstIdentifier && field[0] <= LastIdentifier;
    std::vector<TeletextPacket> packets;
    ForEachDataUnit(hasIdentifier ? field.Part(1) : field, [&](std::uint8_t id, ByteView unit, ByteView) {
        if (auto const packet = PacketIn(id, unit)) {
            packets.push_back(*packet);
        }
    });
    return packets;
}

std::optional<TeletextAddress> ReadAddress(TeletextPacket const& packet)
{
    auto const nibbles = Nibbles<2>(packet, 0);
    if (!nibbles) {
        return std::nullopt;
    }
    auto const [first, second] = *nibbles;
    unsigned const magazine = first & 7U;
    return TeletextAddress{magazine == 0 ? 8 : magazine, first >> 3U | second << 1U};
}

std::optional<TeletextHeader> ReadHeader(TeletextPacket const& packet, unsigned magazine)
{
    auto const nibbles = Nibbles<8>(packet, PageUnits);
    if (!nibbles) {
        return std::nullopt;
    }
    auto const [units, tens, s1, s2, s3, s4, control, national] = *nibbles;
    TeletextHeader header;
    header.page = units <= 9 && tens <= 9 ? magazine * 100 + tens * 10 + units : 0;
    header.subcode = s1 | (s2 & 7U) << 4U | s3 << 7U | (s4 & 3U) << 11U;
    header.isSubtitle = (s4 & SubtitleFlag) != 0;
    header.isSerial = (national & 1U) != 0;
    static_cast<void>(control);
    return header;
}

void MakeOnlySubpage(TeletextPacket& header, bool erases)
{
    unsigned const flags = Nibble(header[Subcode + 1]).value_or(0) & EraseFlag;
    unsigned const kinds = Nibble(header[Subcode + 3]).value_or(0) & 0xCU;
    header[Subcode] = header[Subcode + 2] = Protected(0);
    header[Subcode + 1] = Protected(erases ? EraseFlag : flags);
    header[Subcode + 3] = Protected(kinds);
}

TeletextPacket FillingHeader(unsigned magazine)
{
    TeletextPacket packet;
    packet.fill(' ');
    packet[0] = Protected(magazine & 7U);
    packet[1] = Protected(0);
    packet[PageUnits] = packet[PageTens] = Protected(0xF);
    for (std::size_t i = Subcode; i <= SerialFlag; ++i) {
        packet[i] = Protected(0);
    }
    return packet;
}

} // namespace zviptv
