// SPDX-License-Identifier: MIT
#include "input/RtpPacket.h"

namespace zviptv::sim {

namespace {

constexpr std::size_t FixedHead = 12;
constexpr std::uint8_t Version = 2;

} // namespace

std::optional<RtpPacket> ParseRtpPacket(ByteView datagram)
{
    if (datagram.Size() < FixedHead || datagram[0] >> 6 != Version) {
        return std::nullopt;
    }
    bool const hasPadding = (datagram[0] & 0x20) != 0;
    bool const hasExtension = (datagram[0] & 0x10) != 0;
    std::size_t head = FixedHead + std::size_t{4} * (datagram[0] & 0x0F);
    if (hasExtension) {
        if (datagram.Size() < head + 4) {
            return std::nullopt;
        }
        head += 4 + std::size_t{4} * datagram.U16(head + 2);
    }
    if (datagram.Size() < head) {
        return std::nullopt;
    }
    std::size_t const padding = hasPadding ? datagram[datagram.Size() - 1] : 0;
    if (padding > datagram.Size() - head || (hasPadding && padding == 0)) {
        return std::nullopt;
    }
    return RtpPacket{datagram.U16(2), datagram.U32(4), datagram.U32(8),
                     datagram.Part(head, datagram.Size() - head - padding)};
}

} // namespace zviptv::sim
