// SPDX-License-Identifier: MIT
#include "client/link/PushRequests.h"

#include "client/link/Link.h"

#include <cstring>

namespace zviptv::client {

namespace {

/// The pause before a service that did not answer is asked again.
constexpr std::chrono::milliseconds RetryInterval{500};
constexpr std::chrono::milliseconds AnswerTimeout{2000};

/// Failures that end by themselves when the service, or the bus, is there again.
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
        subject.isTold = false;
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
    if (m_isEnded || subject.isUnderWay || subject.isTold == on) {
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
        subject.isTold = on; // the loss of this service would have been noticed later
        Ask(subject);        // for what has changed meanwhile
        return;
    }
    if (!on) {
        subject.isTold = false; // what it still pushes is ignored
        Ask(subject);           // for what is wanted meanwhile
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
