// SPDX-License-Identifier: MIT
#include "PushLine.h"

#include <algorithm>
#include <utility>

namespace zviptv::sim {

void PushLine::Turn(bool on)
{
    if (!on) {
        *this = PushLine();
    }
    m_isOn = on;
}

void PushLine::Pass(Push push, Damage const& damage, Time now, Send const& send)
{
    if (damage.IsDrop()) {
        return;
    }
    if (!damage.IsNone()) {
        push.notification = std::make_shared<CMessageBuffer>(damage.Corrupt(*push.notification));
    }
    Time const due = (damage.Burst() == 0 ? now : BurstDue(damage.Burst(), now)) + damage.Delay();
    std::uint16_t const stream = push.stream;
    Item const item{std::move(push), due, damage.IsDuplicate()};
    if (damage.IsReorder() && !Holds(stream)) {
        m_held.emplace(stream, item);
        return;
    }
    SendInOrder(item, send);
    if (auto const held = m_held.extract(stream)) {
        SendInOrder(held.mapped(), send);
    }
}

void PushLine::Release(Time now, Send const& send)
{
    for (auto& [stream, item] : std::exchange(m_held, {})) {
        item.due = std::max(item.due, now);
        SendInOrder(item, send);
    }
}

void PushLine::SendInOrder(Item const& item, Send const& send)
{
    m_last = std::max(m_last, item.due);
    for (int i = 0; i < (item.isTwice ? 2 : 1); ++i) {
        send(item.push, m_last);
    }
}

/// Notifications that arrive during a burst belong to it. The burst ends when it has sent all of them.
PushLine::Time PushLine::BurstDue(int factor, Time now)
{
    auto const dueFrom = [now, factor](Time begin) { return begin + BurstHold + (now - begin) / factor; };
    if (!m_burst || dueFrom(*m_burst) <= now) {
        m_burst = now;
    }
    return dueFrom(*m_burst);
}

} // namespace zviptv::sim
