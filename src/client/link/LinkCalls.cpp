// SPDX-License-Identifier: MIT
#include "client/link/Failures.h"
#include "client/link/Link.h"

#include <zviptv/Failure.h>

#include <algorithm>
#include <climits>

namespace zviptv::client {

Result<CMessageBuffer> Link::SendAndWait(Request& request)
{
    char const* const function = request.Function();
    if (request.Refusal()) {
        return *request.Refusal();
    }
    for (bool isFirst = true;; isFirst = false) {
        Result<std::shared_ptr<Attachment>> const attached = m_bus.AttachNow(function);
        if (!attached) {
            return attached.GetFailure();
        }
        Channel& channel = (*attached)->Get(request.Endpoint());
        bool const wasReady = channel.IsReady();
        if (!wasReady) {
            if (std::optional<Failure> failure = ConnectNow(request.Endpoint(), channel, function)) {
                return *failure;
            }
            Post([](Link& link) {
                if (std::shared_ptr<Attachment> const current = link.m_bus.Current()) {
                    link.Adopt(current);
                }
            });
        }
        std::string const partner = channel.Partner(); // another thread may connect to the next one meanwhile
        CMessageBuffer reply;
        if (channel.Helper().SendMessage(request.Message(), reply, 0) != 0) {
            return reply;
        }
        Failure const failure = LastFailure(function);
        if (IsNoReply(failure) && channel.HasLeft(partner)) {
            channel.Forget();
            return NoService(function, LeftUnanswered);
        }
        if (!IsUndelivered(failure) || !wasReady || !isFirst) {
            return failure;
        }
        channel.Forget(); // the service may have restarted: the new one is asked once
    }
}

Pending Link::Send(Request request, std::chrono::milliseconds timeout, CallTable::Done done)
{
    char const* const function = request.Function();
    std::optional<Failure> refusal = request.Refusal();
    if (m_isEnded) {
        return Pending();
    }
    CallTable::Id const id = m_calls.Add(std::move(request), std::move(done));
    timeout = std::min(timeout, std::chrono::milliseconds(INT_MAX));
    if (!refusal && timeout.count() <= 0) {
        refusal = TimedOut(function, timeout.count());
    }
    if (refusal) {
        FinishLater(id, *refusal);
        return Pending();
    }
    m_calls.Find(id)->timer = Timer(m_context.get(), timeout, [this, id, function, timeout] {
        Finish(id, TimedOut(function, timeout.count()));
    });
    Proceed(id);
    return Pending([weak = weak_from_this(), id, function] {
        std::shared_ptr<Link> const link = weak.lock();
        if (link != nullptr) {
            link->FinishLater(id, Cancelled(function));
        }
    });
}

void Link::Proceed(CallTable::Id id)
{
    std::shared_ptr<CallTable::Call> const call = m_calls.Find(id);
    std::shared_ptr<Attachment> const attachment = m_bus.Current();
    call->isSent = false;
    if (attachment == nullptr) {
        StartAttaching();
        return;
    }
    Adopt(attachment);
    EndpointId const endpoint = call->request.Endpoint();
    Channel& channel = attachment->Get(endpoint);
    if (!channel.IsReady()) {
        unsigned const mostAttempts = 2;
        if (call->attempt++ < mostAttempts) {
            StartAnnouncing(endpoint);
        } else {
            FinishLater(id,
                        NoService(call->request.Function(), "the service named an endpoint that has left"));
        }
        return;
    }
    using Ticket = UserData<std::pair<std::weak_ptr<Link>, std::pair<CallTable::Id, unsigned>>>;
    void* const ticket = Ticket::New({weak_from_this(), {id, call->attempt}});
    ContextScope const scope(m_context.get());
    call->isSent = channel.Helper().SendAsync(
                       call->request.Message(), INT_MAX, call->cancellable.get(),
                       [](CMessageBuffer* reply, void* data) {
                           auto const [weak, sent] = Ticket::Get(data);
                           Ticket::Release(data);
                           if (std::shared_ptr<Link> const link = weak.lock()) {
                               link->OnReply(sent.first, sent.second, reply);
                           }
                       },
                       ticket) != 0;
    if (!call->isSent) {
        Failure const failure = LastFailure(call->request.Function());
        Ticket::Release(ticket);
        if (IsUndelivered(failure)) { // the partner has left just now
            channel.Forget();
            Proceed(id);
        } else {
            FinishLater(id, failure);
        }
    }
}

void Link::OnReply(CallTable::Id id, unsigned attempt, CMessageBuffer* reply)
{
    std::shared_ptr<CallTable::Call> const call = m_calls.Find(id);
    if (call == nullptr || call->outcome || call->attempt != attempt) {
        return; // timed out, cancelled, or sent again
    }
    if (reply != nullptr) {
        Finish(id, std::move(*reply));
        return;
    }
    char const* const function = call->request.Function();
    Failure failure = LastFailure(function);
    std::shared_ptr<Attachment> const attachment = m_bus.Current();
    Channel* const channel = attachment == nullptr ? nullptr : &attachment->Get(call->request.Endpoint());
    if (channel != nullptr && IsUndelivered(failure) && attempt == 0) {
        channel->Forget(); // the service may have restarted: the new one is asked once
        Proceed(id);
        return;
    }
    if (channel != nullptr && IsNoReply(failure) && !channel->IsReady()) {
        failure = NoService(function, LeftUnanswered);
    }
    Finish(id, failure);
}

void Link::ProceedWaiting(std::optional<EndpointId> endpoint)
{
    for (CallTable::Id const id : m_calls.Open(false, endpoint)) {
        Proceed(id);
    }
}

void Link::FailWaiting(std::optional<EndpointId> endpoint, Failure failure)
{
    for (CallTable::Id const id : m_calls.Open(false, endpoint)) {
        if (auto const call = m_calls.Find(id)) { // a completion may have ended the television
            failure.function = call->request.Function();
            Finish(id, failure);
        }
    }
}

void Link::FailSent()
{
    for (CallTable::Id const id : m_calls.Open(true)) {
        if (auto const call = m_calls.Find(id)) {
            Finish(id, NoService(call->request.Function(), LeftUnanswered));
        }
    }
}

void Link::FinishLater(CallTable::Id id, Failure failure)
{
    std::shared_ptr<CallTable::Call> const call = m_calls.Find(id);
    if (call == nullptr || call->outcome) {
        return;
    }
    call->outcome = std::move(failure);
    g_cancellable_cancel(call->cancellable.get());
    call->timer = Timer(m_context.get(), std::chrono::milliseconds(0), [this, id] {
        if (auto const ended = m_calls.Find(id)) {
            Finish(id, *ended->outcome);
        }
    });
}

void Link::Finish(CallTable::Id id, Result<CMessageBuffer> const& outcome)
{
    std::shared_ptr<Link> const self = shared_from_this(); // the completion may drop the last other reference
    if (std::shared_ptr<CallTable::Call> const call = m_calls.Take(id)) {
        call->timer = Timer();
        Guard(call->request.Function(), [&] { call->done(outcome); });
    }
}

} // namespace zviptv::client
