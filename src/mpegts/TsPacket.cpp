// SPDX-License-Identifier: MIT
#include "mpegts/TsPacket.h"

namespace zviptv {

namespace {

constexpr std::size_t PcrFieldSize = 7; // the flags and the six bytes of the PCR

std::optional<std::uint64_t> ParsePcr(ByteView field)
{
    if (field.Size() < PcrFieldSize || !(field[0] & 0x10)) {
        return std::nullopt;
    }
    std::uint64_t const base = (std::uint64_t{field.U32(1)} << 1) | (field[5] >> 7);
    std::uint32_t const extension = field.U16(5) & 0x1FFu;
    if (extension >= 300) {
        return std::nullopt;
    }
    return base * 300 + extension;
}

/// Returns false if the field does not fit.
bool ReadAdaptationField(ByteView field, TsPacket& packet)
{
    std::size_t const length = field[0];
    if (length + 1 > field.Size() - (packet.hasPayload ? 1u : 0u)) {
        return false;
    }
    ByteView const content = field.Part(1, length);
    packet.discontinuity = (content[0] & 0x80) != 0;
    packet.pcr = ParsePcr(content);
    packet.payload = field.Part(1 + length);
    return true;
}

} // namespace

std::optional<TsPacket> ParseTsPacket(TsBytes const& bytes)
{
    ByteView const view(bytes.data(), bytes.size());
    if (view[0] != TsSyncByte) {
        return std::nullopt;
    }

    TsPacket packet;
    packet.transportError = (view[1] & 0x80) != 0;
    packet.unitStart = (view[1] & 0x40) != 0;
    packet.pid = view.U16(1) & 0x1FFFu;
    packet.scrambled = (view[3] & 0xC0) != 0;
    packet.continuity = view[3] & 0x0F;
    packet.hasPayload = (view[3] & 0x10) != 0;
    packet.payload = view.Part(TsHeadSize);
    if (packet.transportError) { // the rest of the packet is not reliable
        packet.hasPayload = false;
        packet.payload = {};
        return packet;
    }

    bool const hasField = (view[3] & 0x20) != 0;
    if (!hasField && !packet.hasPayload) {
        return std::nullopt;
    }
    if (hasField && !ReadAdaptationField(view.Part(TsHeadSize), packet)) {
        return std::nullopt;
    }
    if (!packet.hasPayload) {
        packet.payload = {};
    }
    return packet;
}

} // namespace zviptv
