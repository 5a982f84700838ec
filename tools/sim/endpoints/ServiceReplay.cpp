// SPDX-License-Identifier: MIT
#include "Service.h"

#include "common/PrintableText.h"

#include <memory>
#include <utility>

// The replay of the service.

namespace zviptv::sim {

namespace function = protocol::function;

namespace {

constexpr std::pair<char const*, char const*> Subscriptions[] = {
    {function::RequestPESCB, function::PESCB}, {function::RequestCaptionCB, function::CaptionCB}};

Delivery DeliveryOf(ReplayedAnswer const& answer)
{
    return {answer.delay, answer.isMissing, answer.errorName, answer.errorText};
}

/// For the log.
std::string NoteOf(ReplayedAnswer const& answer)
{
    if (!answer.isRecorded) {
        return RequestLog::NotRecorded;
    }
    return answer.isMissing            ? "recorded: no answer"
           : !answer.errorName.empty() ? "recorded: the error " + EscapeText(answer.errorName)
                                       : "";
}

} // namespace

void Service::BeginReplay()
{
    if (m_options.replay.file.empty()) {
        return;
    }
    m_replay = std::make_unique<Replay>(m_options.replay, m_loop);
    m_replay->Begin(0);
    for (std::string const& warning : m_replay->Recorded().warnings) {
        m_log.WriteLine(warning);
    }
    m_pushReplay = std::make_unique<PushReplay>(
        *m_replay, m_loop, [this](std::string const&, std::string const& application, CMessageBuffer push) {
            return m_subscribers.Send(application, std::make_shared<CMessageBuffer>(std::move(push)));
        });
    for (auto const& [request, notification] : Subscriptions) {
        if (m_replay->HasPushes(request)) {
            m_subscribers.AssignToReplay(notification);
        }
    }
}

std::optional<CMessageBuffer> Service::AnswerFromRecording(Call& call)
{
    if (!m_replay) {
        return std::nullopt;
    }
    NoteId(Request(call.message, call.busName));
    std::optional<ReplayedAnswer> const answer = m_replay->Answer(call.type, call.message);
    if (!answer) {
        call.replayNote = RequestLog::NotRecorded;
        return std::nullopt;
    }
    call.delivery = DeliveryOf(*answer);
    call.replayNote = NoteOf(*answer);
    FollowSubscription(call, *answer);
    return answer->reply;
}

/// An application whose subscription the recording accepts gets the recorded pushes.
void Service::FollowSubscription(Call const& call, ReplayedAnswer const& answer)
{
    Request const request(call.message, call.busName);
    for (auto const& [subscribing, notification] : Subscriptions) {
        if (request.Function() != subscribing || !call.delivery.IsAnswer() ||
            answer.reply.GetValue(protocol::key::Result) == "0") {
            continue;
        }
        m_subscribers.Answer(request);
        if (request.Flag(protocol::key::On).value_or(false)) {
            m_pushReplay->Start(subscribing, call.busName, call.delivery.delay);
        } else {
            m_pushReplay->Stop(subscribing, call.busName);
        }
    }
}

std::optional<Delivery> Service::AnnounceFromRecording(std::string const& type, bool comesUp,
                                                       std::string& partner)
{
    std::optional<ReplayedAnswer> const answer =
        m_replay ? m_replay->Announce(type, comesUp, partner) : std::nullopt;
    if (!answer) {
        return std::nullopt;
    }
    partner = answer->reply.GetValue(protocol::key::DBusName);
    return DeliveryOf(*answer);
}

} // namespace zviptv::sim
