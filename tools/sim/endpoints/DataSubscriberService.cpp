// SPDX-License-Identifier: MIT
#include "DataSubscriberService.h"

#include "playback/Captions.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace zviptv::sim {

namespace function = protocol::function;
namespace key = protocol::key;

namespace {

void AddNumber(CMessageBuffer& message, char const* key, std::uint64_t number)
{
    message.AddValue(key, std::to_string(number).c_str());
}

void AddBytes(CMessageBuffer& message, char const* key, std::vector<std::uint8_t> const& bytes)
{
    message.AddValue(key, static_cast<int>(bytes.size()), reinterpret_cast<char const*>(bytes.data()));
}

Subscriber::Notification ToNotification(PesPacket const& pes)
{
    auto notification = std::make_shared<CMessageBuffer>();
    notification->AddValue(key::FunctionName, function::PESCB);
    AddNumber(*notification, key::PESDataSize, pes.bytes.size());
    AddNumber(*notification, key::PESType, static_cast<std::uint64_t>(TypeOf(pes.kind)));
    AddNumber(*notification, key::PESPID, pes.pid);
    AddNumber(*notification, key::PESPTS, pes.pts.value_or(0));
    AddBytes(*notification, key::PESData, pes.bytes);
    return notification;
}

Subscriber::Notification ToNotification(ZVCaption const& caption)
{
    auto notification = std::make_shared<CMessageBuffer>();
    notification->AddValue(key::FunctionName, function::CaptionCB);
    AddNumber(*notification, key::CaptionDataSize, caption.data.size());
    AddNumber(*notification, key::CaptionType, static_cast<std::uint64_t>(caption.type));
    AddBytes(*notification, key::CaptionData, caption.data);
    return notification;
}

PushLine::Send SendTo(Subscriber& subscriber)
{
    return [&subscriber](PushLine::Push const& push, PushLine::Time due) {
        subscriber.Offer(push.notification, push.size, due);
    };
}

} // namespace

DataSubscriberService::DataSubscriberService(PesFilter filter, Faulty faulty, MainLoop& loop)
    : m_filter(std::move(filter)), m_faulty(std::move(faulty)), m_loop(loop)
{
}

DataSubscriberService::~DataSubscriberService()
{
    for (auto& [name, client] : m_clients) {
        client.subscriber->Stop();
    }
}

void DataSubscriberService::Add(std::string const& busName)
{
    Client client;
    client.subscriber = std::make_unique<Subscriber>(
        busName, [this, busName] { Remove(busName); },
        [this] { m_loop.After(std::chrono::milliseconds(0), [this] { RemoveStopped(); }); });
    Remove(busName);
    m_clients.emplace(busName, std::move(client));
}

void DataSubscriberService::Remove(std::string const& busName)
{
    auto const client = m_clients.find(busName);
    if (client != m_clients.end()) {
        Leave(std::move(client->second.subscriber));
        m_clients.erase(client);
    }
}

/// Does not wait, because the application that leaves may itself be waiting for an answer. The subscriber's
/// thread reports when it has stopped.
void DataSubscriberService::Leave(std::unique_ptr<Subscriber> subscriber)
{
    Subscriber::Counts const counts = subscriber->Count();
    m_gone.sent += counts.sent;
    m_gone.dropped += counts.dropped;
    subscriber->Stop();
    m_leaving.push_back(std::move(subscriber));
}

void DataSubscriberService::RemoveStopped()
{
    m_leaving.erase(std::remove_if(m_leaving.begin(), m_leaving.end(),
                                   [](auto const& subscriber) { return subscriber->HasStopped(); }),
                    m_leaving.end());
}

std::optional<CMessageBuffer> DataSubscriberService::Answer(Request const& request)
{
    std::string const name = request.Function();
    if (name == function::RequestPESCB) {
        return Turn(request, &Client::pes);
    }
    if (name == function::RequestCaptionCB) {
        return Turn(request, &Client::captions);
    }
    return std::nullopt;
}

Reply DataSubscriberService::Turn(Request const& request, PushLine Client::*line)
{
    std::optional<int> const on = request.Get<int>(key::On);
    auto const client = m_clients.find(request.Sender());
    if (!on || client == m_clients.end()) {
        return Reply(false);
    }
    (client->second.*line).Turn(*on != 0);
    if (!client->second.IsOn()) {
        client->second.subscriber->Discard();
    }
    return Reply(true);
}

void DataSubscriberService::Reset()
{
    for (auto& [name, client] : m_clients) {
        client.pes.Turn(false);
        client.captions.Turn(false);
        client.subscriber->Restart();
    }
    m_gone = Counts();
}

void DataSubscriberService::Push(PesPacket const& pes)
{
    if (m_replayed.count(function::PESCB) == 0 && IsWanted(&Client::pes) && m_filter.Passes(pes)) {
        Offer(function::PESCB, {ToNotification(pes), pes.bytes.size(), pes.pid}, &Client::pes);
    }
    if (m_replayed.count(function::CaptionCB) == 0 && IsWanted(&Client::captions)) {
        if (std::optional<ZVCaption> const caption = CaptionIn(pes)) {
            Offer(function::CaptionCB, {ToNotification(*caption), caption->data.size(), pes.pid},
                  &Client::captions);
        }
    }
}

bool DataSubscriberService::Send(std::string const& busName, Subscriber::Notification const& notification)
{
    std::string const name = notification->GetValue(key::FunctionName);
    bool const isPes = name == function::PESCB;
    PushLine Client::*const line = isPes ? &Client::pes : &Client::captions;
    auto const client = m_clients.find(busName);
    if (client == m_clients.end() || !(client->second.*line).IsOn()) {
        return false;
    }
    PushLine& own = client->second.*line;
    auto const stream = static_cast<std::uint16_t>(std::atoi(notification->GetValue(key::PESPID).c_str()));
    std::size_t const size = notification->GetValue(isPes ? key::PESData : key::CaptionData).size();
    own.Pass({notification, size, stream},
             m_faulty(isPes ? function::PESCB : function::CaptionCB, busName, own.Holds(stream)),
             Subscriber::Clock::now(), SendTo(*client->second.subscriber));
    return true;
}

bool DataSubscriberService::IsWanted(PushLine Client::*line) const
{
    return std::any_of(m_clients.begin(), m_clients.end(),
                       [line](auto const& client) { return (client.second.*line).IsOn(); });
}

void DataSubscriberService::Offer(char const* function, PushLine::Push const& push, PushLine Client::*line)
{
    auto const now = Subscriber::Clock::now();
    for (auto& [name, client] : m_clients) {
        PushLine& own = client.*line;
        if (own.IsOn()) {
            own.Pass(push, m_faulty(function, name, own.Holds(push.stream)), now, SendTo(*client.subscriber));
        }
    }
}

void DataSubscriberService::Release()
{
    auto const now = Subscriber::Clock::now();
    for (auto& [name, client] : m_clients) {
        client.pes.Release(now, SendTo(*client.subscriber));
        client.captions.Release(now, SendTo(*client.subscriber));
    }
}

DataSubscriberService::Counts DataSubscriberService::Count() const
{
    Counts counts = m_gone;
    for (auto const& [name, client] : m_clients) {
        Subscriber::Counts const own = client.subscriber->Count();
        counts.sent += own.sent;
        counts.dropped += own.dropped;
        if (client.IsOn()) {
            counts.subscribers.push_back(
                {name, own.sent, own.dropped, own.queued, client.pes.IsOn(), client.captions.IsOn()});
        }
    }
    return counts;
}

} // namespace zviptv::sim
