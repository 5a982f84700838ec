// SPDX-License-Identifier: MIT
#include "Traffic.h"

#include "glib/Utf8.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace zviptv::sim {

namespace {

using trace::Event;
using trace::EventKind;

constexpr std::size_t LongestValues = 300;
constexpr unsigned MaxPushes = 100;
constexpr std::chrono::milliseconds PushesEndAfter{400};

/// "onoff=true index=2", limited in length.
std::string ValuesOf(Event const& event)
{
    std::string text;
    for (trace::Value const& value : event.values) {
        text += (text.empty() ? "" : " ") + value.key + "=" + value.text;
        if (text.size() > LongestValues) {
            break;
        }
    }
    std::string const whole = ValidUtf8(text);
    if (whole.size() <= LongestValues) {
        return whole;
    }
    char const* const end = g_utf8_find_prev_char(whole.c_str(), whole.c_str() + LongestValues);
    return whole.substr(0, static_cast<std::size_t>(end - whole.c_str())) + "…";
}

Json::Value Short(Event const& event)
{
    Json::Value json(Json::objectValue);
    json["number"] = Json::UInt64{event.number};
    json["time"] = Json::Int64{event.time};
    json["kind"] = trace::NameOf(event.kind);
    json["fromService"] = event.isFromService;
    if (event.application) {
        json["application"] = event.application->busName;
        json["name"] = trace::TextToJson(event.application->name);
        json["program"] = trace::TextToJson(event.application->program);
        json["process"] = event.application->processId;
    }
    json["endpoint"] = trace::TextToJson(event.endpoint);
    json["function"] = trace::TextToJson(event.function);
    json["values"] = ValuesOf(event);
    if (event.request != 0) {
        json["request"] = Json::UInt64{event.request};
    }
    if (event.result) {
        json["result"] = *event.result;
    }
    if (event.latency) {
        json["latency"] = Json::Int64{*event.latency};
    }
    if (event.kind == EventKind::Error) {
        json["error"] = trace::TextToJson(event.errorName + ": " + event.errorText);
    }
    if (event.kind ==
        EventKind::Loss) { // of the service, or of an application that announced no end of its channels
        json["isAbrupt"] = !event.application || !event.application->channels.empty();
    }
    for (std::string const& problem : event.problems) {
        json["problems"].append(trace::TextToJson(problem));
    }
    return json;
}

std::string SystemBusText(std::string const& reason)
{
    return "the conversation cannot be shown: " + reason;
}

} // namespace

Traffic::Traffic(std::string const& address, Feed& feed, std::function<void()> onNews)
    : m_feed(feed), m_onNews(std::move(onNews)),
      m_names(std::make_unique<trace::ProcessNames>(
          address,
          [this](std::string const& name, int process, std::string const& program) {
              m_conversation.SetProcess(name, process, program);
          })),
      m_conversation([this](std::string const& name) { m_names->Ask(name); })
{
    Watch(address);
}

void Traffic::Watch(std::string const& address)
try {
    trace::Monitor::Handlers handlers;
    handlers.onMessage = [this](trace::Message const& message) { Take(message); };
    handlers.onPause = [this] { m_onNews(); };
    handlers.onEnd = [this](std::string const& reason) { ReportError(SystemBusText(reason)); };
    m_monitor = std::make_unique<trace::Monitor>(address, std::move(handlers));
    ReportError({});
} catch (trace::MonitorError const& failure) {
    ReportError(SystemBusText(failure.what()));
}

void Traffic::ReportError(std::string const& error)
{
    m_feed.Set("PanelConversation", trace::TextToJson(error));
    m_onNews();
}

void Traffic::Take(trace::Message const& message)
{
    std::optional<Event> const event = m_conversation.Add(message);
    if (!event) {
        return;
    }
    Keep(*event, message.bytes);
    if (event->kind == EventKind::Notification && event->problems.empty()) {
        AddPush(*event);
        return;
    }
    EndPushes();
    m_feed.Add(ToText(Short(*event)));
}

void Traffic::Keep(Event const& event, std::string const& bytes)
{
    m_kept.push_back({event, bytes});
    m_bytes += bytes.size();
    while (m_kept.size() > MaxKept || m_bytes > MaxBytes) {
        m_bytes -= m_kept.front().bytes.size();
        m_kept.pop_front();
    }
}

/// Collects the pushes to each application until another message arrives.
void Traffic::AddPush(Event const& event)
{
    std::string const application = event.application ? event.application->busName : "";
    auto found = m_pushes.find(application);
    if (found != m_pushes.end() && found->second["pushes"].size() == MaxPushes) {
        EndPushes();
        found = m_pushes.end();
    }
    if (m_pushes.empty()) {
        m_ending = LoopSource::Every(PushesEndAfter, [this] {
            EndPushes();
            m_onNews();
        });
    }
    if (found == m_pushes.end()) {
        found = m_pushes.emplace(application, Short(event)).first;
        found->second["values"] = "";
    }
    Json::Value push(Json::arrayValue);
    push.append(Json::UInt64{event.number});
    push.append(trace::TextToJson(event.function));
    push.append(Json::Int64{event.pid.value_or(-1)});
    push.append(Json::Int64{event.pts.value_or(-1)});
    push.append(Json::UInt64{event.size.value_or(0)});
    found->second["pushes"].append(push);
}

/// Pages expect the numbers of messages in ascending order.
void Traffic::EndPushes()
{
    std::map<Json::UInt64, Json::Value> ordered;
    for (auto& [application, pushes] : m_pushes) {
        ordered.emplace(pushes["number"].asUInt64(), std::move(pushes));
    }
    for (auto const& [number, pushes] : ordered) {
        m_feed.Add(ToText(pushes));
    }
    m_pushes.clear();
    m_ending.Stop();
}

std::optional<std::string> Traffic::Details(std::string const& number) const
{
    std::uint64_t wanted = 0;
    std::from_chars(number.data(), number.data() + number.size(), wanted);
    auto const found =
        std::lower_bound(m_kept.begin(), m_kept.end(), wanted,
                         [](Kept const& kept, std::uint64_t sought) { return kept.event.number < sought; });
    if (found == m_kept.end() || found->event.number != wanted) {
        return std::nullopt;
    }
    Json::Value json(Json::objectValue);
    json["event"] = trace::ToJson(found->event);
    auto const* const bytes = reinterpret_cast<unsigned char const*>(found->bytes.data());
    Owned<char> const raw(g_base64_encode(bytes, found->bytes.size()));
    json["raw"] = raw.get();
    return ToText(json);
}

} // namespace zviptv::sim
