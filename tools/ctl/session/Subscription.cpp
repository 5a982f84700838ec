// SPDX-License-Identifier: MIT
#include "Subscription.h"

#include "Session.h"
#include "output/Failure.h"

#include <chrono>
#include <ctime>
#include <thread>
#include <utility>

namespace zviptv::ctl {

namespace {

constexpr int MaxTries = 3;

Subscription::Handler pesHandler;
Subscription::Handler captionHandler;

Subscription::Handler& HandlerOf(PacketKind kind)
{
    return kind == PacketKind::Pes ? pesHandler : captionHandler;
}

/// The handler may end its subscription, so it is kept while it runs.
void Deliver(PacketKind kind, Packet const& packet)
{
    Subscription::Handler const handler = HandlerOf(kind);
    if (handler) {
        handler(packet);
    }
}

// The interface's PID is signed.
void OnPes(ZVPESData& pes, void* /*userData*/)
{
    Deliver(PacketKind::Pes, {pes.type, static_cast<std::uint16_t>(pes.pid), pes.pts, pes.data});
}

void OnCaption(ZVCaption& caption, void* /*userData*/)
{
    Deliver(PacketKind::Caption, {caption.type, std::nullopt, std::nullopt, caption.data});
}

bool Subscribe(IIPTVDataSubscriber& subscriber, PacketKind kind, int& key)
{
    return kind == PacketKind::Pes ? subscriber.SubscribeForPES(OnPes, nullptr, key)
                                   : subscriber.SubscribeForCaption(OnCaption, nullptr, key);
}

} // namespace

Subscription::Subscription(IIPTVDataSubscriber& subscriber, PacketKind kind, Handler handler,
                           Wait const& waitForNextSecond)
    : m_kind(kind)
{
    HandlerOf(kind) = std::move(handler);
    for (int tries = 1; !Subscribe(subscriber, kind, m_key); ++tries) {
        if (tries == MaxTries) {
            HandlerOf(kind) = nullptr;
            throw Failure(ExitCode::NoAnswer,
                          "the library could not make a key for the subscription: try again");
        }
        waitForNextSecond();
    }
}

Subscription::~Subscription()
{
    HandlerOf(m_kind) = nullptr;
}

void Subscription::End(IIPTVDataSubscriber& subscriber)
{
    if (m_kind == PacketKind::Pes) {
        subscriber.UnSubscribeForPES(m_key);
    } else {
        subscriber.UnsubscribeForCaption(m_key);
    }
}

void Subscription::WaitForNextSecond()
{
    std::time_t const present = std::time(nullptr);
    std::this_thread::sleep_until(std::chrono::system_clock::from_time_t(present + 1));
    while (std::time(nullptr) == present) { // this clock may be late by some milliseconds
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

void Subscribe(Session& session, PacketKind kind, Subscription::Handler handler,
               std::optional<Subscription>& place)
{
    std::string const method = kind == PacketKind::Pes ? "SubscribeForPES" : "SubscribeForCaption";
    auto& subscriber = session.Get<IIPTVDataSubscriber>();
    bool const isAccepted = session.Ask(method, [&] {
        place.emplace(subscriber, kind, std::move(handler));
        return ZVGetLastFailure().kind == ZV_FAILURE_NONE;
    });
    if (!isAccepted) {
        throw Failure(ExitCode::Refused, method + ": " + ZVGetLastFailure().message);
    }
}

} // namespace zviptv::ctl
