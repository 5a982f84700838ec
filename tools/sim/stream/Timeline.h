// SPDX-License-Identifier: MIT
#pragma once

#include "stream/Event.h"
#include "stream/StreamClock.h"

#include <deque>

namespace zviptv::sim {

/// Gives events their time. Holds each back until the clock samples on both sides of it are known.
///
/// Without PCR the time stamps of one PID (video if there is any) take its place. What is held back is
/// bounded: when no clock shows up for long, events get the time that the pace so far suggests.
class Timeline
{
public:
    enum class Order
    {
        Timed, ///< as above
        AsIs   ///< of a live stream: events at once, their time 0, their STC the latest PCR
    };

    explicit Timeline(Order order = Order::Timed) : m_order(order) {}

    static constexpr std::size_t MaxPendingBytes = 4 * 1024 * 1024;
    static constexpr std::uint64_t MaxPacketsWithoutClock = 40'000; // 7.5 MB

    void AddPcr(std::uint64_t packet, std::uint64_t pcr, bool jump);
    void AddPes(std::uint64_t packet, PesPacket pes);
    void AddProgramme(std::uint64_t packet, std::shared_ptr<Programme const> programme);

    /// An event that tells nothing but the time of this packet.
    void AddClock(std::uint64_t packet);

    /// To be called after every packet.
    void Advance(std::uint64_t packet);

    /// A pass over the stream ends before this packet; the next one starts anew with its clock.
    void EndPass(std::uint64_t packet);

    /// Drops all events that were not taken.
    void Clear();

    /// The stream has shown a clock: PCR, or time stamps in its place. Without one the STC of events means
    /// nothing.
    bool HasClock() const { return m_clock.HasSamples() || m_latestPcr; }

    /// The next event whose time is known, in stream order; times never decrease.
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
    std::optional<std::uint16_t> m_reference; ///< whose time stamps stand in for the PCR
    std::deque<Pending> m_pending;
    std::size_t m_pendingBytes = 0;
    std::deque<Event> m_ready;
};

} // namespace zviptv::sim
