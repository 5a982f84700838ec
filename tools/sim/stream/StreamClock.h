// SPDX-License-Identifier: MIT
#pragma once

#include "stream/ClockPoint.h"

#include <optional>

namespace zviptv::sim {

/// Calculates the time of every packet of a stream from the clock samples (PCR, or time stamps) in some of
/// them.
/// Packets are numbered from 0, also across loops. Between two samples, time grows evenly with the packet
/// number. Where the samples jump, and after the last one, it continues at the last measured pace, or at the
/// pace of a 5 Mbit/s stream if none was measured.
class StreamClock
{
public:
    /// A packet with a clock value (27 MHz, modulo PcrModulus). `jump`: the value may be unrelated to the
    /// previous ones.
    /// @return whether At() now holds for the packets since the sample before, up to this one.
    bool Sample(std::uint64_t packet, std::uint64_t value, bool jump);

    /// The time of a packet after the last but one sample.
    ClockPoint At(std::uint64_t packet) const;

    /// Call it if no further sample follows: At() then holds for every packet after the last sample.
    void FinishLine();

    /// From this packet on, the clock values are unrelated to the previous ones. Time continues.
    void Restart(std::uint64_t packet);

    /// Whether the pace was measured.
    bool IsMeasured() const { return m_measured; }

    /// Whether there was a sample; without one, the STC of At() is meaningless.
    bool HasSamples() const { return m_hasSamples; }

private:
    struct Pace
    {
        std::int64_t ticks = 8122; // of 27 MHz: 188 bytes at 5 Mbit/s
        std::int64_t packets = 1;

        std::int64_t Over(std::int64_t count) const { return count * ticks / packets; }
    };

    struct Mark
    {
        std::uint64_t packet = 0;
        std::uint64_t value = 0;
    };

    bool First(Mark mark);
    void Next(Mark mark, bool jump);
    std::optional<Pace> Measure(Mark from, Mark to, bool jump);
    void AlignTo(Mark mark);
    void StartAt(Mark mark);

    // The present straight line: through one packet's time and STC, at a pace.
    std::uint64_t m_packet = 0;
    ClockPoint m_point;
    Pace m_linePace;

    Pace m_pace; // last measured pace
    bool m_measured = false;
    bool m_hasSamples = false;
    std::optional<Mark> m_waiting; // the first sample, until a pace is known
    std::optional<Mark> m_last;
};

} // namespace zviptv::sim
