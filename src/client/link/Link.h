// SPDX-License-Identifier: MIT
#pragma once

#include "client/link/Bus.h"
#include "client/link/CallTable.h"
#include "client/link/Listeners.h"
#include "client/link/PushRequests.h"
#include "client/link/ServiceWatch.h"
#include "client/message/Request.h"

#include <zviptv/client/Pending.h>
#include <zviptv/client/Result.h>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace zviptv::client {

struct LinkOptions
{
    std::string busAddress;
    std::uint32_t handleNumber = 0;
    std::string applicationId;
};

/// The connection of a television to the service: the bus, the channels, the outstanding calls.
///
/// Functions are for the thread that iterates the context, unless they say otherwise. Callbacks run there.
class Link : public std::enable_shared_from_this<Link>
{
public:
    /// Uses the main context that is the calling thread's default.
    explicit Link(LinkOptions options);
    ~Link();

    /// Starts to connect. Call it once, before any other function.
    void Begin();
    /// Ends all calls with FailureKind::Gone, or with their decided outcome, and closes the connection. No
    /// callback runs afterwards.
    void End();
    bool IsEnded() const { return m_isEnded; }

    /// Any thread.
    std::uint32_t HandleNumber() const { return m_options.handleNumber; }

    /// Sends a request and waits for the reply, 2 s at most once connected. Any thread.
    Result<CMessageBuffer> SendAndWait(Request& request);

    /// Sends a request. `done` runs once, never inside Send; not at all for a call that is made after End.
    Pending Send(Request request, std::chrono::milliseconds timeout, CallTable::Done done);

    /// Any thread.
    bool IsAvailable() const { return m_isAvailable; }
    Listener OnAvailability(std::function<void(bool)> listener);

    /// Passes messages that the service pushes to `handler`. Null for none.
    void SetPushHandler(std::function<void(CMessageBuffer& message)> handler)
    {
        m_onPush = std::move(handler);
    }
    /// The requests for pushes.
    PushRequests& Pushes() { return m_pushes; }

    /// Failures that belong to no call. A handler that throws is ignored.
    void SetErrorHandler(std::function<void(Failure const&)> handler) { m_onError = std::move(handler); }
    void Report(Failure const& failure);
    /// Runs code of the application; an exception is reported as one of `function`.
    void Guard(char const* function, std::function<void()> const& code);

    GMainContext* Context() const { return m_context.get(); }

private:
    struct Token;

    // Connecting.
    void StartAttaching();
    void OnAttached(std::optional<Failure> const& failure);
    void Adopt(std::shared_ptr<Attachment> const& attachment);
    void OnOwner(std::string const& owner);
    void OnClosed();
    void OnPush(CMessageBuffer& message);
    void OnPusherLost();
    void SetAvailable(bool isAvailable);
    void Post(std::function<void(Link&)> work);

    // Announcing.
    void StartAnnouncing(EndpointId endpoint);
    void OnAnnounced(std::shared_ptr<Attachment> const& attachment, EndpointId endpoint,
                     std::string const& partner);
    /// Names the application to a service that has just named its endpoint.
    Request ApplicationIdRequest() const;
    std::optional<Failure> ConnectNow(EndpointId endpoint, Channel& channel, char const* function);

    // Calls.
    void Proceed(CallTable::Id id);
    void ProceedWaiting(std::optional<EndpointId> endpoint);
    void FailWaiting(std::optional<EndpointId> endpoint, Failure failure);
    void FailSent();
    void OnReply(CallTable::Id id, unsigned attempt, CMessageBuffer* reply);
    void FinishLater(CallTable::Id id, Failure failure);
    void Finish(CallTable::Id id, Result<CMessageBuffer> const& outcome);

    LinkOptions const m_options;
    Owned<GMainContext> const m_context{g_main_context_ref_thread_default()};
    Bus m_bus;
    std::atomic<bool> m_isAvailable{false};

    // Only for the context's thread.
    bool m_isEnded = false;
    std::shared_ptr<void> m_attaching;
    Timer m_retry;
    std::shared_ptr<Attachment> m_adopted;
    std::unique_ptr<ServiceWatch> m_watch;
    std::string m_owner;
    std::array<bool, EndpointCount> m_isAnnouncing{};
    CallTable m_calls;
    Listeners<bool> m_onAvailability;
    std::function<void(CMessageBuffer&)> m_onPush;
    PushRequests m_pushes{*this};
    std::function<void(Failure const&)> m_onError;
};

} // namespace zviptv::client
