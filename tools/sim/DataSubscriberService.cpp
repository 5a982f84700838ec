#include "DataSubscriberService.h"

#include <zviptv/IPTVTypes.h>

#include <algorithm>
#include <utility>

namespace zviptv::sim {

namespace function = protocol::function;
namespace key = protocol::key;

namespace {

EZVPESType TypeOf(StreamKind kind)
{
    switch (kind) {
    case StreamKind::Video:
        return ZV_PES_VIDEO;
    case StreamKind::Audio:
        return ZV_PES_AUDIO;
    case StreamKind::Subtitle:
        return ZV_PES_SUBTITLE;
    case StreamKind::Teletext:
        return ZV_PES_TELETEXT;
    case StreamKind::AribCaption:
    case StreamKind::AribSuperimpose:
        return ZV_PES_CAPTION;
    case StreamKind::Sections:
    case StreamKind::Other:
        break;
    }
    return ZV_PES_OTHER;
}

Subscriber::Notification ToNotification(PesPacket const& pes)
{
    auto notification = std::make_shared<CMessageBuffer>();
    auto const addNumber = [&notification](char const* key, auto number) {
        notification->AddValue(key, std::to_string(number).c_str());
    };
    notification->AddValue(key::FunctionName, function::PESCB);
    addNumber(key::PESDataSize, pes.bytes.size());
    addNumber(key::PESType, static_cast<int>(TypeOf(pes.kind)));
    addNumber(key::PESPID, pes.pid);
    addNumber(key::PESPTS, pes.pts.value_or(0));
    notification->AddValue(key::PESData, static_cast<int>(pes.bytes.size()),
                           reinterpret_cast<char const*>(pes.bytes.data()));
    return notification;
}

} // namespace

DataSubscriberService::DataSubscriberService(PesFilter filter) : m_filter(std::move(filter)) {}

DataSubscriberService::~DataSubscriberService()
{
    for (auto& [name, client] : m_clients) {
        client.subscriber->Stop();
    }
}

void DataSubscriberService::Add(std::string const& busName)
{
    Client client;
    client.subscriber = std::make_unique<Subscriber>(busName, [this, busName] { Remove(busName); });
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

/// Never waits: the application that goes away may itself be waiting for our answer.
void DataSubscriberService::Leave(std::unique_ptr<Subscriber> subscriber)
{
    subscriber->Stop();
    m_leaving.push_back(std::move(subscriber));
}

void DataSubscriberService::Reap()
{
    m_leaving.erase(std::remove_if(m_leaving.begin(), m_leaving.end(),
                                   [](auto const& subscriber) { return subscriber->HasStopped(); }),
                    m_leaving.end());
}

std::optional<CMessageBuffer> DataSubscriberService::Answer(Request const& request,
                                                            std::string const& busName)
{
    std::string const name = request.Function();
    if (name == function::RequestPESCB) {
        return Turn(request, busName, &Client::wantsPes);
    }
    if (name == function::RequestCaptionCB) {
        return Turn(request, busName, &Client::wantsCaptions);
    }
    return std::nullopt;
}

Reply DataSubscriberService::Turn(Request const& request, std::string const& busName, bool Client::*wants)
{
    std::optional<int> const on = request.Get<int>(key::On);
    auto const client = m_clients.find(busName);
    if (!on || client == m_clients.end()) {
        return Reply(false);
    }
    client->second.*wants = *on != 0;
    if (!client->second.wantsPes && !client->second.wantsCaptions) {
        client->second.subscriber->Discard();
    }
    return Reply(true);
}

void DataSubscriberService::Push(PesPacket const& pes)
{
    Reap();
    bool const wanted = std::any_of(m_clients.begin(), m_clients.end(),
                                    [](auto const& client) { return client.second.wantsPes; });
    if (!wanted || !m_filter.Passes(pes)) {
        return;
    }
    Subscriber::Notification const notification = ToNotification(pes);
    for (auto& [name, client] : m_clients) {
        if (client.wantsPes) {
            client.subscriber->Offer(notification, pes.bytes.size());
        }
    }
}

} // namespace zviptv::sim
