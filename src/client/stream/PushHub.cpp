// SPDX-License-Identifier: MIT
#include "client/stream/PushHub.h"

#include <zviptv/Protocol.h>

#include <algorithm>
#include <utility>

namespace zviptv::client {

namespace {

namespace function = protocol::function;

bool Passes(Subscriber const& subscriber, PesPacket const& packet)
{
    return subscriber.filter.Passes(packet.Kind(), packet.Pid());
}

bool Passes(Subscriber const& /*subscriber*/, CaptionData const& /*data*/)
{
    return true;
}

} // namespace

void Subscriber::Count(std::uint16_t pid, std::size_t bytes, Clock::time_point now)
{
    auto const [entry, isFirst] = latest.try_emplace(pid, now);
    bool const isGap = !isFirst && now - entry->second >= Subscription::LongPause;
    entry->second = now;
    counters.gaps += isGap ? 1U : 0U;
    counters.bytes += bytes;
    ++counters.packets;
}

Subscription PushHub::Add(PesFilter filter, std::function<void(PesPacket const&)> callback)
{
    auto subscriber = std::make_shared<Subscriber>();
    subscriber->kind = PushKind::Pes;
    subscriber->filter = std::move(filter);
    subscriber->onPes = std::move(callback);
    subscriber->isActive = subscriber->onPes != nullptr;
    return Add(std::move(subscriber));
}

Subscription PushHub::Add(std::function<void(CaptionData const&)> callback)
{
    auto subscriber = std::make_shared<Subscriber>();
    subscriber->kind = PushKind::Caption;
    subscriber->onCaption = std::move(callback);
    subscriber->isActive = subscriber->onCaption != nullptr;
    return Add(std::move(subscriber));
}

Subscription PushHub::Add(std::shared_ptr<Subscriber> subscriber)
{
    subscriber->isActive = subscriber->isActive && m_link != nullptr;
    if (subscriber->isActive) {
        bool const isFirst = !Wants(subscriber->kind);
        m_subscribers.push_back(subscriber);
        if (isFirst) {
            m_link->Request(subscriber->kind, true);
        }
    }
    return {weak_from_this(), std::move(subscriber)};
}

void PushHub::Take(Push const& push, Subscriber::Clock::time_point now)
{
    std::string_view const name = push.field(protocol::key::FunctionName);
    bool const isPes = name == function::PESCB;
    bool const isCaption = name == function::CaptionCB;
    char const* const called = isPes ? function::PESCB : function::CaptionCB;
    try {
        if (isPes && Wants(PushKind::Pes)) {
            PesPacket const packet = ReadPes(push);
            Deliver(packet, packet.Pid(), &Subscriber::onPes, PushKind::Pes, called, now);
        } else if (isCaption && Wants(PushKind::Caption)) {
            CaptionData const data = ReadCaption(push);
            Deliver(data, 0, &Subscriber::onCaption, PushKind::Caption, called, now);
        }
    } catch (UnreadablePush const& error) {
        m_link->ReportUnreadable(called, error.Key(), error.what());
    }
}

/// A callback may end the hub, its subscription and thereby itself: hub and callback are held during the
/// call.
template <typename Item>
void PushHub::Deliver(Item const& item, std::uint16_t pid,
                      std::function<void(Item const&)> Subscriber::*callback, PushKind kind,
                      char const* function, Subscriber::Clock::time_point now)
{
    auto const self = shared_from_this();
    auto const subscribers = m_subscribers;
    for (auto const& subscriber : subscribers) {
        if (subscriber->isActive && subscriber->kind == kind && Passes(*subscriber, item)) {
            subscriber->Count(pid, item.Data().Size(), now);
            m_link->Guard(function, [&] { ((*subscriber).*callback)(item); });
        }
    }
}

bool PushHub::Wants(PushKind kind) const
{
    return std::any_of(m_subscribers.begin(), m_subscribers.end(),
                       [kind](auto const& subscriber) { return subscriber->kind == kind; });
}

void PushHub::End(Subscriber& subscriber)
{
    bool const wasActive = std::exchange(subscriber.isActive, false);
    m_subscribers.erase(std::remove_if(m_subscribers.begin(), m_subscribers.end(),
                                       [](auto const& one) { return !one->isActive; }),
                        m_subscribers.end());
    if (wasActive && m_link != nullptr && !Wants(subscriber.kind)) {
        m_link->Request(subscriber.kind, false);
    }
}

void PushHub::Close()
{
    m_link = nullptr;
    for (auto const& subscriber : std::exchange(m_subscribers, {})) {
        subscriber->isActive = false;
    }
}

} // namespace zviptv::client
