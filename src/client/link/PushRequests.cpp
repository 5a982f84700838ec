// SPDX-License-Identifier: MIT
#include "client/link/PushRequests.h"

#include "client/link/Link.h"

#include <cstring>

namespace zviptv::client {

namespace {

/// The pause before the next request to a service that did not answer.
constexpr std::chrono::milliseconds RetryInterval{500};
constexpr std::chrono::milliseconds AnswerTimeout{2000};

/// Failures that end without action when the service or the bus returns.
bool IsAbsence(Failure const& failure)
{
    return failure.kind == FailureKind::NoBus || failure.kind == FailureKind::NoService;
}

} // namespace

PushRequests::PushRequests(Link& link)
    : m_link(link), m_subjects{Subject{protocol::function::RequestPESCB},
                               Subject{protocol::function::RequestCaptionCB}}
{
}

void PushRequests::SetWanted(char const* function, bool isWanted)
{
    for (Subject& subject : m_subjects) {
        if (std::strcmp(subject.function, function) == 0) {
            subject.isWanted = isWanted;
            Ask(subject);
        }
    }
}

void PushRequests::Forget()
{
    for (Subject& subject : m_subjects) {
        subject.isRequested = false;
    }
}

void PushRequests::Resume()
{
    for (Subject& subject : m_subjects) {
        Ask(subject);
    }
}

void PushRequests::End()
{
    m_isEnded = true;
    m_retry = Timer();
}

void PushRequests::Ask(Subject& subject)
{
    bool const on = subject.isWanted;
    if (m_isEnded || subject.isUnderWay || subject.isRequested == on) {
        return;
    }
    subject.isUnderWay = true;
    Request request(EndpointId::DataSubscriber, subject.function, m_link.HandleNumber());
    request.Add(protocol::key::On, on);
    m_link.Send(std::move(request), AnswerTimeout, [this, &subject, on](Result<CMessageBuffer> const& reply) {
        OnAnswer(subject, on, reply ? nullptr : &reply.GetFailure());
    });
}

void PushRequests::OnAnswer(Subject& subject, bool on, Failure const* failure)
{
    subject.isUnderWay = false;
    if (failure == nullptr) {
        subject.isReported = false;
        subject.isRequested = on; // the loss of this service would have been noticed later
        Ask(subject);             // for changes in the meantime
        return;
    }
    if (!on) {
        subject.isRequested = false; // further pushes are ignored
        Ask(subject);                // what is wanted may have changed
        return;
    }
    if (!IsAbsence(*failure) && !std::exchange(subject.isReported, true)) {
        m_link.Report(*failure);
    }
    if (!m_isEnded && m_link.IsAvailable()) {
        m_retry = Timer(m_link.Context(), RetryInterval, [this] { Resume(); });
    }
}

} // namespace zviptv::client
