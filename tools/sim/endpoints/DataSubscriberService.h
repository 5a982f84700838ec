// SPDX-License-Identifier: MIT
#pragma once

#include "Damage.h"
#include "Message.h"
#include "PesFilter.h"
#include "PushLine.h"
#include "RequestLog.h"
#include "Subscriber.h"
#include "common/MainLoop.h"

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace zviptv::sim {

/// Pushes PES packets and captions to the applications that subscribed to them.
class DataSubscriberService
{
public:
    /// The faults of a notification of the function to the application; for `followsHeld` see Faults.
    using Faulty = std::function<Damage(char const* function, std::string const& busName, bool followsHeld)>;

    DataSubscriberService(PesFilter filter, Faulty faulty, MainLoop& loop);
    ~DataSubscriberService();
    DataSubscriberService(DataSubscriberService const&) = delete;
    DataSubscriberService& operator=(DataSubscriberService const&) = delete;

    /// Adds or removes an application's channel, by its bus name.
    void Add(std::string const& busName);
    void Remove(std::string const& busName);

    /// Returns nullopt if the function is not one of the subscriber.
    std::optional<CMessageBuffer> Answer(Request const& request);

    void Push(PesPacket const& pes);

    /// From now on, Send() only, not Push(), sends notifications of this function.
    void AssignToReplay(std::string const& notification) { m_replayed.insert(notification); }

    /// Sends one notification to one application. Returns false if the application has not subscribed to this
    /// kind.
    bool Send(std::string const& busName, Subscriber::Notification const& notification);

    /// Sends the packets that are held until the next one: none follows for now.
    void Release();

    /// Ends all subscriptions; the channels stay.
    void Reset();

    struct Counts
    {
        std::uint64_t sent = 0;    ///< notifications, to all applications together
        std::uint64_t dropped = 0; ///< notifications that were dropped because a queue was full
        std::vector<RequestLog::Subscriber> subscribers; ///< applications that subscribed to data
    };
    Counts Count() const;

private:
    struct Client
    {
        PushLine pes;
        PushLine captions;
        std::unique_ptr<Subscriber> subscriber;

        bool IsOn() const { return pes.IsOn() || captions.IsOn(); }
    };

    void RemoveStopped();
    void Leave(std::unique_ptr<Subscriber> subscriber);
    bool IsWanted(PushLine Client::*line) const;
    void Offer(char const* function, PushLine::Push const& push, PushLine Client::*line);
    Reply Turn(Request const& request, PushLine Client::*line);

    PesFilter m_filter;
    Faulty m_faulty;
    MainLoop& m_loop;
    std::map<std::string, Client> m_clients;
    std::vector<std::unique_ptr<Subscriber>> m_leaving; ///< stopping; nothing waits for them
    Counts m_gone;                                      ///< counts of subscribers that have left
    std::set<std::string> m_replayed;                   ///< notifications that Push() does not send
};

} // namespace zviptv::sim
