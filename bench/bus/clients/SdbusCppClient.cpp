// SPDX-License-Identifier: MIT
#include "PlainClient.h"

#include <sdbus-c++/sdbus-c++.h>

#include <poll.h>

#include <deque>
#include <map>

namespace zviptv::bench {

namespace {

using Bytes = std::vector<std::uint8_t>;
using Dictionary = std::map<std::string, sdbus::Variant>;

void Read(Dictionary const& entries, EntryReader& reader)
{
    std::deque<Bytes> shown;
    for (auto const& [key, value] : entries) {
        if (value.containsValueOfType<Bytes>()) {
            Bytes const& bytes = shown.emplace_back(value.get<Bytes>());
            reader.Take(key, std::string_view(reinterpret_cast<char const*>(bytes.data()), bytes.size()));
        }
    }
    reader.Finish();
}

/// One proxy for each object of the service, as sdbus-c++ requires.
class SdbusCppClient final : public PlainClient
{
public:
    explicit SdbusCppClient(std::string const& service)
        : m_connection(sdbus::createSystemBusConnection()),
          m_player(sdbus::createProxy(*m_connection, service, wire::PlayerPath)),
          m_broadcast(sdbus::createProxy(*m_connection, service, wire::BroadcastPath)),
          m_subscriber(sdbus::createProxy(*m_connection, service, wire::SubscriberPath))
    {
        m_subscriber->uponSignal(wire::Signal)
            .onInterface(wire::Interface)
            .call([this](Dictionary const& entries) { OnSignal(entries); });
        m_subscriber->finishRegistration();
    }

    void Dispatch() override
    {
        while (!m_connection->processPendingRequest()) {
            auto const wanted = m_connection->getEventLoopPollData();
            pollfd polled{wanted.fd, wanted.events, 0};
            poll(&polled, 1, wanted.getPollTimeout());
        }
    }

private:
    void Exchange(char const* path, Entries request, EntryReader& reader) override
    {
        Dictionary entries;
        for (wire::Entry const& entry : request) {
            entries.emplace(entry.key, sdbus::Variant(Bytes(entry.value.begin(), entry.value.end())));
        }
        Dictionary answer;
        ProxyAt(path)
            .callMethod(wire::Method)
            .onInterface(wire::Interface)
            .withTimeout(std::chrono::milliseconds(wire::TimeoutMs))
            .withArguments(entries)
            .storeResultsTo(answer);
        Read(answer, reader);
    }

    sdbus::IProxy& ProxyAt(std::string_view path) const
    {
        if (path == wire::PlayerPath) {
            return *m_player;
        }
        return path == wire::BroadcastPath ? *m_broadcast : *m_subscriber;
    }

    void OnSignal(Dictionary const& entries) const
    {
        PesReader reader(m_receiver);
        Read(entries, reader);
    }

    std::unique_ptr<sdbus::IConnection> m_connection;
    std::unique_ptr<sdbus::IProxy> m_player;
    std::unique_ptr<sdbus::IProxy> m_broadcast;
    std::unique_ptr<sdbus::IProxy> m_subscriber;
};

} // namespace

std::unique_ptr<Client> NewClient(std::string const& service)
{
    return std::make_unique<SdbusCppClient>(service);
}

} // namespace zviptv::bench
