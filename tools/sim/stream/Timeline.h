// SPDX-License-Identifier: MIT
#pragma once

#include "stream/Event.h"
#include "stream/StreamClock.h"

#include <deque>

namespace zviptv::sim {

/// Sets the time of events. Holds back each event until the clock samples before and after it are known.
/// Without a PCR, the time stamps of one PID (video if there is any) replace it. The number of events that
/// are held back is limited: if there is no clock for long, events get their time from the pace so far.
class Timeline
{
public:
    enum class Order
    {
        Timed, ///< as described above
        AsIs   ///< for a live stream: events at once, with time 0 and the latest PCR as STC
    };

    explicit Timeline(Order order = Order::Timed) : m_order(order) {}

    static constexpr std::size_t MaxPendingBytes = 4 * 1024 * 1024;
    static constexpr std::uint64_t MaxPacketsWithoutClock = 40'000; // 7.5 MB

    void AddPcr(std::uint64_t packet, std::uint64_t pcr, bool jump);
    void AddPes(std::uint64_t packet, PesPacket pes);
    void AddProgramme(std::uint64_t packet, std::shared_ptr<Programme const> programme);

    /// Adds an event that contains only the time of this packet.
    void AddClock(std::uint64_t packet);

    /// Call it after every packet.
    void Advance(std::uint64_t packet);

    /// Call it if a pass over the stream ends before this packet; the clock of the next pass is independent.
    void EndPass(std::uint64_t packet);

    /// Drops all pending events.
    void Clear();

    /// Whether the stream has a clock: PCR, or time stamps in its place. Without a clock, the STC of events
    /// is meaningless.
    bool HasClock() const { return m_clock.HasSamples() || m_latestPcr; }

    /// The next event with a known time, in stream order; times never decrease.
    std::optional<Event> Take();

private:
    struct Pending
    {
        std::uint64_t packet = 0;
        Event event; ///< without its time
    };

    void Hold(std::uint64_t packet, Event event);
    void AddSample(std::uint64_t packet, std::uint64_t value, bool jump);
    void UseTimeStamps();
    void ReleaseUpTo(std::uint64_t packet);

    Order m_order;
    std::optional<std::uint64_t> m_latestPcr; ///< AsIs only
    StreamClock m_clock;
    StreamTime m_latest{};
    std::uint64_t m_lastSample = 0;
    std::optional<std::uint16_t> m_reference; ///< PID whose time stamps replace the PCR
    std::deque<Pending> m_pending;
    std::size_t m_pendingBytes = 0;
    std::deque<Event> m_ready;
};

} // namespace zviptv::sim
