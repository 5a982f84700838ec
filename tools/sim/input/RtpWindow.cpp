// SPDX-License-Identifier: MIT
#include "input/RtpWindow.h"

namespace zviptv::sim {

namespace {

// RFC 3550, A.1: a number that is farther from the previous packets belongs to another sequence.
constexpr int MaxDropout = 3000;
constexpr int MaxMisorder = 100;

} // namespace

void RtpWindow::Begin(RtpPacket const& packet)
{
    for (auto const& [number, payload] : m_held) {
        m_counters.lost += static_cast<std::uint64_t>(number - m_next);
        m_next = number + 1;
        m_deliver(payload);
    }
    m_held.clear();
    m_missed.clear();
    m_newNext.reset();
    m_hasBegun = true;
    m_source = packet.source;
    m_next = packet.sequence;
    m_latest = m_next - 1;
}

bool RtpWindow::Push(RtpPacket const& packet)
{
    bool const begins = !m_hasBegun || packet.source != m_source || m_newNext == packet.sequence;
    if (begins) {
        Begin(packet);
    }
    auto const ahead = static_cast<std::int16_t>(packet.sequence - static_cast<std::uint16_t>(m_next));
    if (ahead > MaxDropout || ahead < -MaxMisorder) {
        m_newNext = static_cast<std::uint16_t>(packet.sequence + 1);
        return false;
    }
    m_newNext.reset();
    Number const number = m_next + ahead;
    if (number < m_next) {
        m_counters.duplicated += m_missed.count(number) == 0 ? 1U : 0U; // otherwise it is too late, and lost
    } else if (m_held.count(number) != 0) {
        ++m_counters.duplicated;
    } else {
        Hold(number, packet.payload);
    }
    return begins;
}

void RtpWindow::Hold(Number number, ByteView payload)
{
    m_counters.reordered += number < m_latest ? 1U : 0U;
    m_latest = std::max(m_latest, number);
    if (number == m_next) { // the usual case
        ++m_next;
        m_deliver(payload);
    } else {
        m_held.emplace(number, payload.Copy());
    }
    DeliverHeld();
}

/// Delivers the packets that are in order, and gives up packets that are overdue.
void RtpWindow::DeliverHeld()
{
    while (!m_held.empty()) {
        auto const first = m_held.begin();
        if (first->first != m_next) {
            if (m_latest - m_next < Size) {
                return;
            }
            Skip(first->first);
        }
        ++m_next;
        m_deliver(first->second);
        m_held.erase(first);
    }
}

void RtpWindow::Skip(Number next)
{
    m_counters.lost += static_cast<std::uint64_t>(next - m_next);
    for (; m_next < next; ++m_next) {
        m_missed.insert(m_next);
    }
    m_missed.erase(m_missed.begin(), m_missed.lower_bound(m_next - MaxMisorder));
}

} // namespace zviptv::sim
