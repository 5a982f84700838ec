// SPDX-License-Identifier: MIT
#include "mpegts/PesHeader.h"

namespace zviptv {

namespace {

constexpr std::size_t StampSize = 5;

/// Streams whose packets have no header after the length: maps, padding, private 2, ECM, EMM, DSM-CC, …
bool HasLongHead(std::uint8_t streamId)
{
    switch (streamId) {
    case 0xBC:
    case 0xBE:
    case 0xBF:
    case 0xF0:
    case 0xF1:
    case 0xF2:
    case 0xF8:
    case 0xFF:
        return false;
    default:
        return true;
    }
}

/// `mark` is the required upper half of the first byte.
std::optional<std::uint64_t> ParseStamp(ByteView field, std::uint8_t mark)
{
    bool const markers = (field[0] & 0x01) && (field[2] & 0x01) && (field[4] & 0x01);
    if (field.Size() < StampSize || (field[0] >> 4) != mark || !markers) {
        return std::nullopt;
    }
    std::uint64_t const high = (field[0] >> 1) & 0x07u;
    std::uint64_t const middle = field.U16(1) >> 1;
    std::uint64_t const low = field.U16(3) >> 1;
    return (high << 30) | (middle << 15) | low;
}

} // namespace

std::optional<PesHeader> ParsePesHeader(ByteView pes)
{
    constexpr std::size_t ShortHead = 6;
    constexpr std::size_t LongHead = 9;
    if (pes.Size() < ShortHead || pes.U16(0) != 0 || pes[2] != 1) {
        return std::nullopt;
    }

    PesHeader header;
    header.streamId = pes[3];
    header.length = pes.U16(4);
    ByteView const packet = header.length == 0 ? pes : pes.Part(0, ShortHead + header.length);
    header.payload = packet.Part(ShortHead);
    if (!HasLongHead(header.streamId)) {
        header.isWhole = true;
        return header;
    }
    if (pes.Size() < LongHead || (pes[6] & 0xC0) != 0x80) {
        return header;
    }

    ByteView const options = pes.Part(LongHead, pes[8]);
    header.payload = packet.Part(LongHead + options.Size());
    header.isWhole = LongHead + pes[8] <= packet.Size();
    unsigned const stamps = pes[7] >> 6;
    if (stamps == 2) {
        header.pts = ParseStamp(options.Part(0, StampSize), 0x2);
    }
    if (stamps == 3) {
        header.pts = ParseStamp(options.Part(0, StampSize), 0x3);
        header.dts = ParseStamp(options.Part(StampSize, StampSize), 0x1);
    }
    return header;
}

} // namespace zviptv
