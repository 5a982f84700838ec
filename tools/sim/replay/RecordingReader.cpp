// SPDX-License-Identifier: MIT
#include "RecordingReader.h"

#include "AnsweringServices.h"
#include "RecordedClock.h"
#include "RecordedMessage.h"
#include "RequestKey.h"
#include "SubscriptionReader.h"
#include "trace/CaptureReader.h"
#include "trace/Conversation.h"

#include <zviptv/Protocol.h>

#include <sys/stat.h>

#include <algorithm>
#include <set>
#include <stdexcept>
#include <utility>

namespace zviptv::sim {

namespace {

using std::chrono::microseconds;
using trace::EventKind;

constexpr std::string_view Bus = "org.freedesktop.DBus";
constexpr char NoReply[] = "org.freedesktop.DBus.Error.NoReply";

/// The time limit of applications for an answer.
constexpr microseconds AnswerTimeout = std::chrono::seconds(2);

/// A loss of the service within this time before the end of the recording is the end of the session.
constexpr microseconds EndOfSession = std::chrono::seconds(1);

class RecordingReader
{
public:
    std::unique_ptr<Recording> Read(std::string const& path);

private:
    struct Slot
    {
        std::string key;
        std::size_t index;
    };

    struct Awaited
    {
        std::vector<Slot> slots;
        microseconds time;
        std::optional<SubscriptionReader::Line> subscribes;
    };

    void Take(trace::Message const& message);
    void Take(trace::Event const& event, trace::ParsedMessage const& message, std::string_view bytes);
    void TakeCall(trace::Event const& event, trace::ParsedMessage const& message);
    void TakeAnswer(trace::Event const& event, trace::ParsedMessage const& message, std::string_view bytes);
    void TakeChange(trace::Event const& event);
    void Expect(std::uint64_t number, std::set<std::string> const& keys,
                std::optional<SubscriptionReader::Line> subscribes);
    void SetAnswer(Awaited const& awaited, RecordedAnswer::Kind kind, Spool::Piece piece);
    void Finish();
    void DropUnknown();
    std::size_t Life() const { return m_recording->lives.size() - 1; }

    std::unique_ptr<Recording> m_recording = std::make_unique<Recording>();
    trace::Conversation m_conversation;
    RecordedClock m_clock;
    microseconds m_now{0};                      ///< since the first message
    std::map<std::uint64_t, Awaited> m_awaited; ///< by the number of the request
    SubscriptionReader m_subscriptions{*m_recording};
    AnsweringServices m_services;
    bool m_hasAnswers = false;
};

std::unique_ptr<Recording> RecordingReader::Read(std::string const& path)
{
    trace::CaptureReader file(trace::CaptureInput{path});
    try {
        for (trace::Message message; file.Next(message);) {
            Take(message);
        }
    } catch (trace::CaptureError const& failure) {
        if (m_conversation.Count().messages == 0) {
            throw;
        }
        m_recording->warnings.push_back(std::string(failure.what()) + "; what comes before is replayed");
    }
    for (std::string const& warning : {file.Cut() != 0 ? file.CutText() : "", m_services.Warning()}) {
        if (!warning.empty()) {
            m_recording->warnings.push_back(warning);
        }
    }
    trace::Counts const& counts = m_conversation.Count();
    if (counts.messages == 0) {
        throw std::runtime_error(
            path + (file.Cut() != 0 ? " has no complete messages: " + file.CutText()
                                    : " has no messages: record while an application uses the service"));
    }
    if (!m_hasAnswers && !m_subscriptions.HasPushes()) {
        bool const isForeign = counts.foreign + counts.malformed == counts.messages;
        throw std::runtime_error(path +
                                 (isForeign ? " has no messages of the service and its applications"
                                            : " has no answer and no notification of the service") +
                                 ": record the system bus, as root, while an application uses the service");
    }
    Finish();
    return std::move(m_recording);
}

void RecordingReader::Take(trace::Message const& message)
{
    m_now = m_clock.Advance(message.time);
    auto const event = m_conversation.Add(message);
    if (!event) {
        return;
    }
    try {
        Take(*event, trace::ParseMessage(message.bytes), message.bytes);
    } catch (trace::Malformed const&) { // the message does not follow the protocol; the trace shows why
    }
}

void RecordingReader::Take(trace::Event const& event, trace::ParsedMessage const& message,
                           std::string_view bytes)
{
    switch (event.kind) {
    case EventKind::Request:
    case EventKind::Announcement:
        TakeCall(event, message);
        break;
    case EventKind::Reply:
    case EventKind::Error:
    case EventKind::Answer:
        TakeAnswer(event, message, bytes);
        break;
    case EventKind::Notification:
        m_subscriptions.TakePush({event.application->busName, event.function}, m_now, bytes);
        break;
    case EventKind::Loss:
    case EventKind::Arrival:
        TakeChange(event);
        break;
    }
}

void RecordingReader::TakeCall(trace::Event const& event, trace::ParsedMessage const& message)
{
    if (event.isFromService) {
        return;
    }
    auto& firstCall = m_recording->lives.back().firstCall;
    firstCall = firstCall.value_or(m_now);
    std::string const application(message.sender);
    if (event.kind == EventKind::Announcement) {
        auto const pairs = trace::ReadPairs(message);
        bool const comesUp = std::any_of(pairs.begin(), pairs.end(), [](trace::ParsedEntry const& pair) {
            return pair.key == protocol::key::Add && pair.value == "y";
        });
        if (event.endpoint == protocol::type::DataSubscriber) {
            m_subscriptions.End(application);
        }
        Expect(event.number, {AnnouncementKey(event.endpoint, comesUp)}, {});
        return;
    }
    CMessageBuffer const request = ToMessageBuffer(message);
    RequestKey const key = KeyOf(event.endpoint, request);
    std::optional<SubscriptionReader::Line> subscribes;
    if (SubscriptionReader::IsSubscription(event.function)) {
        SubscriptionReader::Line const line(application, event.function);
        m_subscriptions.TakeRequest(line);
        if (request.GetValue(protocol::key::On) != "0") {
            subscribes = line;
        }
    }
    Expect(event.number, {key.exact, key.anyHandle}, subscribes);
}

void RecordingReader::Expect(std::uint64_t number, std::set<std::string> const& keys,
                             std::optional<SubscriptionReader::Line> subscribes)
{
    Awaited awaited{{}, m_now, std::move(subscribes)};
    for (std::string const& key : keys) {
        auto& items = m_recording->answers[key].items;
        awaited.slots.push_back({key, items.size()});
        RecordedAnswer answer;
        answer.life = Life();
        items.push_back(answer);
    }
    m_awaited.emplace(number, std::move(awaited));
}

void RecordingReader::SetAnswer(Awaited const& awaited, RecordedAnswer::Kind kind, Spool::Piece piece)
{
    for (Slot const& slot : awaited.slots) {
        RecordedAnswer& answer = m_recording->answers[slot.key].items[slot.index];
        answer.kind = kind;
        answer.latency = m_now - awaited.time;
        answer.message = piece;
    }
}

/// Errors of the bus do not describe the service, except NoReply: the service received the request.
void RecordingReader::TakeAnswer(trace::Event const& event, trace::ParsedMessage const& message,
                                 std::string_view bytes)
{
    auto const found = m_awaited.extract(event.request);
    if (!found) {
        return;
    }
    Awaited const& awaited = found.mapped();
    if (message.sender == Bus) {
        if (message.errorName == NoReply) {
            SetAnswer(awaited, RecordedAnswer::Kind::Missing, {});
        }
        return;
    }
    if (event.kind == EventKind::Reply) {
        m_services.Note(event.endpoint, std::string(message.sender));
    }
    SetAnswer(awaited, RecordedAnswer::Kind::Message, m_recording->spool.Add(bytes));
    m_hasAnswers = true;
    if (awaited.subscribes && event.result.value_or(false)) {
        m_subscriptions.Begin(*awaited.subscribes, m_now);
    }
}

void RecordingReader::TakeChange(trace::Event const& event)
{
    if (!event.isFromService) {
        m_subscriptions.End(event.application->busName);
        return;
    }
    m_services.Change();
    RecordedLife& life = m_recording->lives.back();
    if (event.kind == EventKind::Loss) {
        life.death = life.death.value_or(m_now);
        m_subscriptions.EndAll();
        return;
    }
    bool const isFirst = !life.death && !life.firstCall;
    if (isFirst) {
        life.begin = m_now;
        return;
    }
    life.death = life.death.value_or(m_now); // one service took the name from another one
    life.comeBack = m_now;
    RecordedLife next;
    next.begin = m_now;
    m_recording->lives.push_back(next);
}

void RecordingReader::Finish()
{
    RecordedLife& last = m_recording->lives.back();
    if (last.death && m_now - *last.death < EndOfSession) {
        last.death.reset();
    }
    for (auto const& [number, awaited] : m_awaited) {
        if (m_now - awaited.time >= AnswerTimeout) {
            SetAnswer(awaited, RecordedAnswer::Kind::Missing, {});
        }
    }
    DropUnknown();
    m_subscriptions.Finish();
}

void RecordingReader::DropUnknown()
{
    auto& answers = m_recording->answers;
    for (auto entry = answers.begin(); entry != answers.end();) {
        auto& items = entry->second.items;
        items.erase(std::remove_if(items.begin(), items.end(),
                                   [](RecordedAnswer const& answer) {
                                       return answer.kind == RecordedAnswer::Kind::Unknown;
                                   }),
                    items.end());
        entry = items.empty() ? answers.erase(entry) : std::next(entry);
    }
}

} // namespace

std::unique_ptr<Recording> ReadRecording(std::string const& path)
{
    struct stat status
    {
    };
    if (path == "-" || (stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode))) {
        throw std::runtime_error("cannot replay " + path +
                                 ": it is not a regular file, and the service reads it again when it comes "
                                 "back; copy the recording to a file");
    }
    return RecordingReader().Read(path);
}

} // namespace zviptv::sim
