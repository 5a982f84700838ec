// SPDX-License-Identifier: MIT
#pragma once

#include "stream/ClockPoint.h"
#include "stream/Programme.h"

#include <memory>

namespace zviptv::sim {

/// A whole PES packet, including its header, as in the stream.
struct PesPacket
{
    std::uint16_t pid = 0;
    StreamKind kind = StreamKind::Other;
    std::optional<std::uint64_t> pts; ///< 90 kHz, 33 bits
    std::optional<std::uint64_t> dts; ///< 90 kHz, 33 bits; only if it differs from the PTS
    std::vector<std::uint8_t> bytes;
};

enum class EventType
{
    Pes,              ///< `pes` has arrived
    ProgrammeChanged, ///< the programme being played is now `programme`
    Clock             ///< only `at`: a PCR, or the end of a pass over the stream
};

/// An event at the time `at`, when its last packet arrives.
struct Event
{
    EventType type = EventType::Pes;
    ClockPoint at;
    PesPacket pes;
    std::shared_ptr<Programme const> programme; ///< null if it left the stream
};

} // namespace zviptv::sim
