// SPDX-License-Identifier: MIT
#include "Replay.h"

#include "FailureReply.h"
#include "RecordedMessage.h"
#include "RecordingReader.h"
#include "RequestKey.h"

#include <zviptv/Protocol.h>

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <stdexcept>

namespace zviptv::sim {

namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;

/// Timers of the main loop hold at most 49 days.
constexpr milliseconds LongestDelay = std::chrono::hours(24 * 49);

constexpr char NotRecorded[] = "org.corvel.zviptvapi.Error.NotRecorded";
constexpr char NoMessage[] = "org.corvel.zviptvapi.Error.MalformedReply";

ReplayedAnswer ToAnswer(std::string const& bytes)
{
    ReplayedAnswer answer;
    trace::ParsedMessage const message = trace::ParseMessage(bytes);
    try {
        if (message.type == trace::ParsedMessage::Type::Error) {
            auto const texts = trace::ReadTexts(message);
            answer.errorName = message.errorName;
            answer.errorText = texts.empty() ? std::string_view() : texts.front();
        } else if (message.signature == "a(ss)") {
            for (trace::ParsedEntry const& pair : trace::ReadPairs(message)) {
                answer.reply.AddValue(std::string(pair.key).c_str(), std::string(pair.value).c_str());
            }
        } else {
            answer.reply = ToMessageBuffer(message);
        }
    } catch (trace::Malformed const& failure) {
        answer.errorName = NoMessage;
        answer.errorText = std::string("The recorded reply is malformed: ") + failure.what();
    }
    return answer;
}

} // namespace

Replay::Replay(ReplayOptions const& options, MainLoop& loop)
    : m_options(options), m_loop(loop), m_recording(ReadRecording(options.file))
{
}

void Replay::Begin(std::size_t life)
{
    auto const& lives = m_recording->lives;
    m_life = std::min(life, lives.size() - 1);
    for (auto& [key, answers] : m_recording->answers) {
        answers.Restart();
    }
    for (auto& [function, pushes] : m_recording->pushes) {
        pushes.Restart();
    }
    ++m_plan;
    m_isPlanned = false;
    if (!lives[m_life].firstCall) {
        PlanDeath(lives[m_life].begin);
    }
}

/// Plans the death at the recorded time after the first call.
void Replay::NoteCall()
{
    auto const& firstCall = m_recording->lives[m_life].firstCall;
    if (firstCall && !m_isPlanned) {
        PlanDeath(*firstCall);
    }
}

void Replay::PlanDeath(microseconds since)
{
    m_isPlanned = true;
    RecordedLife const& life = m_recording->lives[m_life];
    if (!life.death) {
        return;
    }
    auto const scaled = [this](microseconds time) {
        return std::min<std::chrono::duration<double>>(time / m_options.speed, LongestDelay);
    };
    std::optional<double> const comeBack =
        life.comeBack ? std::optional(scaled(*life.comeBack - *life.death).count()) : std::nullopt;
    auto const delay = std::chrono::round<milliseconds>(scaled(*life.death - since));
    if (delay == LongestDelay) {
        return;
    }
    m_loop.After(delay, [this, comeBack, plan = m_plan] {
        if (plan == m_plan && m_onDeath) {
            m_onDeath(comeBack);
        }
    });
}

std::optional<ReplayedAnswer> Replay::Take(std::string const& key)
{
    auto const found = m_recording->answers.find(key);
    if (found == m_recording->answers.end()) {
        return std::nullopt;
    }
    RecordedAnswer const& recorded = found->second.Take(m_life);
    ReplayedAnswer answer;
    if (recorded.kind == RecordedAnswer::Kind::Message) {
        answer = ToAnswer(m_recording->spool.Read(recorded.message));
    } else if (recorded.kind == RecordedAnswer::Kind::Granted) {
        answer.reply.SetResult(1);
    }
    answer.isRecorded = true;
    answer.isMissing = recorded.kind == RecordedAnswer::Kind::Missing;
    answer.delay = answer.isMissing
                       ? milliseconds(0)
                       : std::min(std::chrono::duration_cast<milliseconds>(recorded.latency), LongestDelay);
    return answer;
}

std::optional<ReplayedAnswer> Replay::TakeFor(std::string const& endpoint, CMessageBuffer const& request)
{
    RequestKey const key = KeyOf(endpoint, request);
    std::optional<ReplayedAnswer> const answer = Take(key.exact);
    return answer ? answer : Take(key.anyHandle);
}

void Replay::List(CMessageBuffer const& request) const
{
    std::string const line = Described(request) + "\n";
    if (m_list >= 0 && write(m_list, line.data(), line.size()) < 0) {
        throw std::runtime_error(std::string("cannot list a request that was not recorded: ") +
                                 std::strerror(errno) + "; free some memory");
    }
}

std::optional<ReplayedAnswer> Replay::Answer(std::string const& endpoint, CMessageBuffer const& request)
{
    NoteCall();
    if (std::optional<ReplayedAnswer> recorded = TakeFor(endpoint, request)) {
        return recorded;
    }
    List(request);
    if (m_options.unrecorded == ReplayOptions::Unrecorded::Stream) {
        return std::nullopt;
    }
    ReplayedAnswer answer;
    if (m_options.unrecorded == ReplayOptions::Unrecorded::Error) {
        answer.errorName = NotRecorded;
        answer.errorText =
            "Not in the recording: " + Described(request) + "; record this request, or see --unrecorded";
    } else {
        answer.reply = FailureReply(endpoint, request.GetValue(protocol::key::FunctionName));
    }
    return answer;
}

std::optional<ReplayedAnswer> Replay::Announce(std::string const& type, bool comesUp,
                                               std::string const& partner)
{
    NoteCall();
    std::optional<ReplayedAnswer> answer = Take(AnnouncementKey(type, comesUp));
    if (answer && !answer->reply.GetValue(protocol::key::DBusName).empty()) {
        answer->reply = CMessageBuffer();
        answer->reply.AddValue(protocol::key::DBusName, partner.c_str());
    }
    return answer;
}

bool Replay::HasPushes(std::string const& function) const
{
    return m_recording->pushes.count(function) != 0;
}

} // namespace zviptv::sim
