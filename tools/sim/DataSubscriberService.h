#pragma once

#include "Message.h"
#include "PesFilter.h"
#include "Subscriber.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace zviptv::sim {

/// Pushes PES packets to the applications that asked for them.
class DataSubscriberService
{
public:
    explicit DataSubscriberService(PesFilter filter);
    ~DataSubscriberService();
    DataSubscriberService(DataSubscriberService const&) = delete;
    DataSubscriberService& operator=(DataSubscriberService const&) = delete;

    /// An application's channel, by its bus name, comes up or goes away.
    void Add(std::string const& busName);
    void Remove(std::string const& busName);

    /// Answers a request of the application `busName`; nothing when the function is not one of the
    /// subscriber.
    std::optional<CMessageBuffer> Answer(Request const& request, std::string const& busName);

    void Push(PesPacket const& pes);

private:
    struct Client
    {
        bool wantsPes = false;
        bool wantsCaptions = false;
        std::unique_ptr<Subscriber> subscriber;
    };

    void Reap();
    void Leave(std::unique_ptr<Subscriber> subscriber);
    Reply Turn(Request const& request, std::string const& busName, bool Client::*wants);

    PesFilter m_filter;
    std::map<std::string, Client> m_clients;
    std::vector<std::unique_ptr<Subscriber>> m_leaving; ///< stopping; nobody waits for them
};

} // namespace zviptv::sim
