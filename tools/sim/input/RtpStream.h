// SPDX-License-Identifier: MIT
#pragma once

#include "input/RtpJitter.h"
#include "input/RtpWindow.h"

namespace zviptv::sim {

/// The transport stream that RTP packets carry. Not thread-safe.
class RtpStream
{
public:
    explicit RtpStream(std::function<void(ByteView payload)> deliver) : m_window(std::move(deliver)) {}

    /// `arrival`: microseconds of any clock.
    void Push(ByteView datagram, std::int64_t arrival)
    {
        auto const packet = ParseRtpPacket(datagram);
        if (!packet) {
            ++m_malformed;
            return;
        }
        if (m_window.Push(*packet)) {
            m_jitter.Restart();
        }
        m_jitter.Add(arrival, packet->timestamp);
    }

    RtpWindow::Counters const& Count() const { return m_window.Count(); }
    std::uint64_t Malformed() const { return m_malformed; }
    RtpJitter const& Jitter() const { return m_jitter; }

private:
    RtpWindow m_window;
    RtpJitter m_jitter;
    std::uint64_t m_malformed = 0;
};

} // namespace zviptv::sim
