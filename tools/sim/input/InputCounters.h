// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

namespace zviptv::sim {

/// The state and the counters of an input since it was opened.
struct InputCounters
{
    std::string url;                ///< input as it was given: a file's path, -, udp://…
    std::string state;              ///< waiting, receiving, stalled, reconnecting, ended or failed
    std::string error;              ///< why it failed or is reconnecting; otherwise empty
    std::uint64_t packets = 0;      ///< transport packets
    std::uint64_t bytes = 0;        ///< bytes received, including the headers of RTP packets
    std::uint64_t lost = 0;         ///< RTP packets not received in time; UDP datagrams that did not fit
    std::uint64_t duplicated = 0;   ///< RTP packets that arrived again
    std::uint64_t reordered = 0;    ///< RTP packets that arrived after a later one, and were put in order
    std::uint64_t malformed = 0;    ///< datagrams that are not RTP
    std::uint64_t gaps = 0;         ///< gaps in the continuity counters of live input, in all PIDs
    std::uint64_t skippedBytes = 0; ///< bytes outside transport packets
    std::uint64_t stalls = 0;       ///< times without data for Input::StallTime, including the present one
    std::uint64_t jitter = 0;       ///< jitter of RTP packets by RFC 3550, microseconds
    bool isLive = false;            ///< the sender sets the pace
};

/// The numbers among them, with their names in the status line and the control interface.
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
