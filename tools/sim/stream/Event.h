// SPDX-License-Identifier: MIT
#pragma once

#include "stream/ClockPoint.h"
#include "stream/Programme.h"

#include <memory>

namespace zviptv::sim {

/// A whole PES packet, head included, as the stream carries it.
struct PesPacket
{
    std::uint16_t pid = 0;
    StreamKind kind = StreamKind::Other;
    std::optional<std::uint64_t> pts; ///< 90 kHz, 33 bits
    std::optional<std::uint64_t> dts; ///< 90 kHz, 33 bits; only where it differs from the PTS
    std::vector<std::uint8_t> bytes;
};

enum class EventType
{
    Pes,              ///< `pes` has arrived
    ProgrammeChanged, ///< the programme being played is now `programme`
    Clock             ///< nothing but `at`: a PCR, or the end of a pass over the stream
};

/// Something that happens at `at`: when the last packet that it needs has arrived.
struct Event
{
    EventType type = EventType::Pes;
    ClockPoint at;
    PesPacket pes;
    std::shared_ptr<Programme const> programme; ///< null: it left the stream
};

} // namespace zviptv::sim
