// SPDX-License-Identifier: MIT
#pragma once

#include "Message.h"
#include "PesFilter.h"
#include "RequestLog.h"
#include "Subscriber.h"
#include "common/MainLoop.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace zviptv::sim {

/// Pushes PES packets and captions to the applications that asked for them.
class DataSubscriberService
{
public:
    DataSubscriberService(PesFilter filter, MainLoop& loop);
    ~DataSubscriberService();
    DataSubscriberService(DataSubscriberService const&) = delete;
    DataSubscriberService& operator=(DataSubscriberService const&) = delete;

    /// An application's channel, by its bus name, comes up or goes away.
    void Add(std::string const& busName);
    void Remove(std::string const& busName);

    /// Nothing when the function is not one of the subscriber.
    std::optional<CMessageBuffer> Answer(Request const& request);

    void Push(PesPacket const& pes);

    /// Ends all subscriptions; the channels stay.
    void Reset();

    struct Counts
    {
        std::uint64_t sent = 0;                          ///< notifications, to all applications together
        std::uint64_t dropped = 0;                       ///< notifications that found a queue full
        std::vector<RequestLog::Subscriber> subscribers; ///< applications that asked for data
    };
    Counts Count() const;

private:
    struct Client
    {
        bool wantsPes = false;
        bool wantsCaptions = false;
        std::unique_ptr<Subscriber> subscriber;
    };

    void Reap();
    void Leave(std::unique_ptr<Subscriber> subscriber);
    bool IsWanted(bool Client::*wants) const;
    void Offer(Subscriber::Notification const& notification, std::size_t size, bool Client::*wants);
    Reply Turn(Request const& request, bool Client::*wants);

    PesFilter m_filter;
    MainLoop& m_loop;
    std::map<std::string, Client> m_clients;
    std::vector<std::unique_ptr<Subscriber>> m_leaving; ///< stopping; nobody waits for them
    Counts m_gone;                                      ///< of those that left
};

} // namespace zviptv::sim
