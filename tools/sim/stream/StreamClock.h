// SPDX-License-Identifier: MIT
#pragma once

#include "stream/ClockPoint.h"

#include <optional>

namespace zviptv::sim {

/// Tells the time of every packet of a stream from the clock samples (PCR, or time stamps) in some of them.
///
/// Packets are numbered from 0, on through loops. Between two samples time grows evenly with the packet
/// number. Where the samples jump, and past the last one, it goes on at the pace measured last; before any
/// was measured at the pace of a 5 Mbit/s stream.
class StreamClock
{
public:
    /// A packet with a clock value (27 MHz, modulo PcrModulus). `jump`: the value may be off the ones before.
    /// @return whether At() now holds for the packets since the sample before, up to this one.
    bool Sample(std::uint64_t packet, std::uint64_t value, bool jump);

    /// Time of a packet after the last but one sample.
    ClockPoint At(std::uint64_t packet) const;

    /// No further sample is to be waited for: At() holds for every packet after the last sample.
    void Settle();

    /// From this packet on the clock values have nothing to do with those before. Time goes on.
    void Restart(std::uint64_t packet);

    /// The pace was measured.
    bool IsMeasured() const { return m_measured; }

    /// There was a sample; before, the STC of At() means nothing.
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

    // The straight line in force: through one packet's time and STC, at a pace.
    std::uint64_t m_packet = 0;
    ClockPoint m_point;
    Pace m_linePace;

    Pace m_pace; // measured last
    bool m_measured = false;
    bool m_hasSamples = false;
    std::optional<Mark> m_waiting; // the first sample, as long as no pace is known
    std::optional<Mark> m_last;
};

} // namespace zviptv::sim
