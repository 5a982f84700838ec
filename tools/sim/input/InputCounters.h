// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

namespace zviptv::sim {

/// What has become of an input since it was opened.
struct InputCounters
{
    std::string url;                ///< as it was given: a file's path, -, udp://…
    std::string state;              ///< waiting, receiving, stalled, reconnecting, ended or failed
    std::string error;              ///< why it failed or is reconnecting; else empty
    std::uint64_t packets = 0;      ///< transport packets
    std::uint64_t bytes = 0;        ///< received, with the heads of RTP packets
    std::uint64_t lost = 0;         ///< RTP packets that never came in time; datagrams without room, of UDP
    std::uint64_t duplicated = 0;   ///< RTP packets that came again
    std::uint64_t reordered = 0;    ///< RTP packets that came after a later one, and were put in their place
    std::uint64_t malformed = 0;    ///< datagrams that are not RTP
    std::uint64_t gaps = 0;         ///< continuity counters of live input that skip a number, in all PIDs
    std::uint64_t skippedBytes = 0; ///< out of step with the transport packets
    std::uint64_t stalls = 0;       ///< times that nothing came for Input::StallTime, this one included
    std::uint64_t jitter = 0;       ///< of RTP packets by RFC 3550, microseconds
    bool isLive = false;            ///< the sender sets the pace
};

/// The numbers among them by the names that the status line and the control interface use.
struct InputNumber
{
    char const* name;
    std::uint64_t InputCounters::*value;
};
constexpr InputNumber InputNumbers[] = {
    {"packets", &InputCounters::packets},     {"bytes", &InputCounters::bytes},
    {"lost", &InputCounters::lost},           {"duplicated", &InputCounters::duplicated},
    {"reordered", &InputCounters::reordered}, {"malformed", &InputCounters::malformed},
    {"gaps", &InputCounters::gaps},           {"skippedBytes", &InputCounters::skippedBytes},
    {"stalls", &InputCounters::stalls},       {"jitterMicroseconds", &InputCounters::jitter},
};

} // namespace zviptv::sim
