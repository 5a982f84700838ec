// SPDX-License-Identifier: MIT
#include <zviptv/client/Subscription.h>

#include "client/stream/PushHub.h"

#include <utility>

namespace zviptv {

Subscription::Subscription(std::weak_ptr<client::PushHub> hub, std::shared_ptr<client::Subscriber> subscriber)
    : m_hub(std::move(hub)), m_subscriber(std::move(subscriber))
{
}

Subscription::~Subscription()
{
    End();
}

Subscription::Subscription(Subscription&& other) noexcept = default;

Subscription& Subscription::operator=(Subscription&& other) noexcept
{
    if (this != &other) {
        End();
        m_hub = std::move(other.m_hub);
        m_subscriber = std::move(other.m_subscriber);
    }
    return *this;
}

bool Subscription::IsActive() const
{
    return m_subscriber && m_subscriber->isActive;
}

PushCounters Subscription::Counters() const
{
    return m_subscriber ? m_subscriber->counters : PushCounters();
}

void Subscription::End()
{
    if (!IsActive()) {
        return;
    }
    if (auto const hub = m_hub.lock()) {
        hub->End(*m_subscriber);
    }
    m_subscriber->isActive = false;
}

} // namespace zviptv
