// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>

namespace zviptv::sim {

/// Time since the first packet, in ticks of 27 MHz. It never decreases, not even at wraps, splices and loops.
using StreamTime = std::chrono::duration<std::int64_t, std::ratio<1, 27'000'000>>;

/// PCR and STC count 27 MHz ticks modulo this; PTS and DTS count 90 kHz ticks modulo a 300th of it.
constexpr std::uint64_t PcrModulus = (std::uint64_t{1} << 33) * 300;

/// One moment on two clocks: the simulator's and the broadcaster's.
struct ClockPoint
{
    StreamTime time{};
    std::uint64_t stc = 0; ///< 27 MHz, below PcrModulus
};

/// `stc` moved by `ticks` of 27 MHz, forwards or backwards, around the wrap.
constexpr std::uint64_t MoveStc(std::uint64_t stc, std::int64_t ticks)
{
    auto const modulus = static_cast<std::int64_t>(PcrModulus);
    std::int64_t const step = ((ticks % modulus) + modulus) % modulus;
    return (stc % PcrModulus + static_cast<std::uint64_t>(step)) % PcrModulus;
}

} // namespace zviptv::sim
