// SPDX-License-Identifier: MIT
#include "PesPacket.h"

#include <algorithm>

namespace zviptv::ctl {

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t ShortHeader = 6; ///< start code, stream id, length
constexpr std::size_t LongHeader = 9;  ///< flags and their length, too

unsigned At(Bytes const& bytes, std::size_t index)
{
    return bytes[index];
}

/// Streams whose packets have no flags and no time stamps: maps, padding, private stream 2, control streams.
bool IsShort(unsigned streamId)
{
    static constexpr unsigned ids[] = {0xBC, 0xBE, 0xBF, 0xF0, 0xF1, 0xF2, 0xF8, 0xFF};
    return std::find(std::begin(ids), std::end(ids), streamId) != std::end(ids);
}

std::uint64_t TimeStamp(Bytes const& bytes, std::size_t offset)
{
    std::uint64_t const high = At(bytes, offset) >> 1U & 7U;
    std::uint64_t const middle = (At(bytes, offset + 1) << 8U | At(bytes, offset + 2)) >> 1U;
    std::uint64_t const low = (At(bytes, offset + 3) << 8U | At(bytes, offset + 4)) >> 1U;
    return high << 30U | middle << 15U | low;
}

} // namespace

std::optional<PesHeader> ReadPesHeader(Bytes const& packet)
{
    if (packet.size() < ShortHeader || packet[0] != 0 || packet[1] != 0 || packet[2] != 1) {
        return std::nullopt;
    }
    PesHeader header;
    header.streamId = packet[3];
    std::size_t const length = At(packet, 4) << 8U | At(packet, 5);
    header.end = length == 0 ? packet.size() : std::min(packet.size(), ShortHeader + length);
    header.payload = ShortHeader;
    if (IsShort(header.streamId)) {
        return header;
    }
    if (packet.size() < LongHeader || (packet[6] & 0xC0U) != 0x80U) {
        return std::nullopt;
    }
    header.payload = LongHeader + packet[8];
    if (header.payload > header.end) {
        return std::nullopt;
    }
    bool const hasPts = (packet[7] & 0x80U) != 0 && packet[8] >= 5;
    bool const hasDts = (packet[7] & 0xC0U) == 0xC0U && packet[8] >= 10;
    if (hasPts) {
        header.pts = TimeStamp(packet, LongHeader);
        header.dts = hasDts ? TimeStamp(packet, LongHeader + 5) : *header.pts;
    }
    return header;
}

} // namespace zviptv::ctl
