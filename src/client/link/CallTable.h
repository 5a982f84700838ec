// SPDX-License-Identifier: MIT
#pragma once

#include "client/link/Context.h"
#include "client/message/Request.h"

#include <zviptv/client/Result.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace zviptv::client {

/// The asynchronous calls that are not done. For the context's thread.
class CallTable
{
public:
    using Id = std::uint64_t;
    using Done = std::function<void(Result<CMessageBuffer> const& outcome)>;

    struct Call
    {
        Call(Request r, Done d) : request(std::move(r)), done(std::move(d)) {}
        ~Call() { g_cancellable_cancel(cancellable.get()); }

        Request request;
        Done done;
        Owned<GCancellable> cancellable{g_cancellable_new()};
        bool isSent = false;              ///< otherwise it waits for a channel
        unsigned attempt = 0;             ///< how often it has waited for a channel
        std::optional<Failure> outcome{}; ///< its outcome, if that is decided
        Timer timer{};                    ///< its time-out, or its end after that is decided
    };

    Id Add(Request request, Done done)
    {
        m_calls.emplace(++m_lastId, std::make_shared<Call>(std::move(request), std::move(done)));
        return m_lastId;
    }

    /// Null for a call that is done.
    std::shared_ptr<Call> Find(Id id) const
    {
        auto const found = m_calls.find(id);
        return found == m_calls.end() ? nullptr : found->second;
    }

    /// Removes and returns a call; null if it is done.
    std::shared_ptr<Call> Take(Id id)
    {
        std::shared_ptr<Call> const call = Find(id);
        m_calls.erase(id);
        return call;
    }

    /// The undecided calls that have been sent, or that wait; oldest first.
    std::vector<Id> Open(bool areSent, std::optional<EndpointId> endpoint = std::nullopt) const
    {
        std::vector<Id> ids;
        for (auto const& [id, call] : m_calls) {
            if (!call->outcome && call->isSent == areSent &&
                (!endpoint || call->request.Endpoint() == *endpoint)) {
                ids.push_back(id);
            }
        }
        return ids;
    }

    std::optional<Id> First() const
    {
        return m_calls.empty() ? std::nullopt : std::optional<Id>(m_calls.begin()->first);
    }

private:
    std::map<Id, std::shared_ptr<Call>> m_calls;
    Id m_lastId = 0;
};

} // namespace zviptv::client
