// SPDX-License-Identifier: MIT
#pragma once

#include "StreamBuilder.h"

namespace zviptv::test {

/// The fields of an RTP packet, in the order of RFC 3550, 5.1.
struct RtpParts
{
    std::uint16_t sequence = 0;
    std::uint32_t timestamp = 0;
    std::uint32_t source = 0x11223344;
    Bytes payload;
    std::vector<std::uint32_t> contributors; ///< CSRC
    std::optional<Bytes> extension;          ///< whole words, without their head
    std::uint8_t padding = 0;                ///< bytes, the last of them included
};

inline void AddNumber(Bytes& bytes, std::uint32_t number, int size)
{
    for (int shift = 8 * (size - 1); shift >= 0; shift -= 8) {
        bytes.push_back(static_cast<std::uint8_t>(number >> shift));
    }
}

inline Bytes MakeRtp(RtpParts const& parts)
{
    Bytes bytes;
    unsigned const first = 0x80U | (parts.padding > 0 ? 0x20U : 0U) | (parts.extension ? 0x10U : 0U);
    AddNumber(bytes, first | static_cast<unsigned>(parts.contributors.size()), 1);
    AddNumber(bytes, 33, 1); // MP2T
    AddNumber(bytes, parts.sequence, 2);
    AddNumber(bytes, parts.timestamp, 4);
    AddNumber(bytes, parts.source, 4);
    for (std::uint32_t const contributor : parts.contributors) {
        AddNumber(bytes, contributor, 4);
    }
    if (parts.extension) {
        AddNumber(bytes, 0xBEDE, 2);
        AddNumber(bytes, static_cast<std::uint32_t>(parts.extension->size() / 4), 2);
        bytes = bytes + *parts.extension;
    }
    bytes = bytes + parts.payload;
    if (parts.padding > 0) {
        bytes.resize(bytes.size() + parts.padding - 1U);
        bytes.push_back(parts.padding);
    }
    return bytes;
}

} // namespace zviptv::test
