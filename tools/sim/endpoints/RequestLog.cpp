// SPDX-License-Identifier: MIT
#include "RequestLog.h"

#include "RequestCheck.h"
#include "common/PrintableText.h"
#include "common/StandardStreams.h"

#include <zviptv/Protocol.h>

#include <json/value.h>
#include <json/writer.h>
#include <unistd.h>

#include <cstdio>

namespace zviptv::sim {

namespace key = protocol::key;

namespace {

/// The entries, except the keys that are shown separately.
std::string Entries(CMessageBuffer const& message)
{
    std::string text;
    for (int i = 0; i < message.Size(); ++i) {
        std::string const key = message.GetKey(i);
        if (key != key::FunctionName && key != key::HandleID && key != key::Result) {
            text += " " + Shown(key) + "=" + Shown(message.GetValue(i));
        }
    }
    return text;
}

Json::Value JsonEntries(CMessageBuffer const& message)
{
    Json::Value json(Json::objectValue);
    for (int i = 0; i < message.Size(); ++i) {
        Json::Value& value = json[EscapeText(message.GetKey(i))];
        if (value.isNull()) { // of several entries with the same key, the first counts
            value = Shown(message.GetValue(i));
        }
    }
    return json;
}

/// The warning about a request that differs from the protocol; otherwise empty.
std::string WarningLine(RequestLog::Entry const& entry)
{
    std::string text;
    for (std::string const& warning : WarningsOf(entry.endpoint, entry.request)) {
        text += (text.empty() ? "" : "; ") + warning;
    }
    return text.empty() ? ""
                        : "warning: " + entry.busName + " " + entry.endpoint + " " +
                              Shown(entry.request.GetValue(key::FunctionName)) + ": " + text + "\n";
}

void WriteJson(Json::Value const& json)
{
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    std::puts(Json::writeString(builder, json).c_str());
    std::fflush(stdout);
}

std::string Counted(std::size_t count, std::string const& what)
{
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

/// The counters of live input.
std::string Reception(InputCounters const& input)
{
    return input.isLive ? ", " + std::to_string(input.lost) + " lost, " + input.state : "";
}

/// Special states, at the end of the status line.
std::string Conditions(RequestLog::Status const& status)
{
    return std::string(status.audioMuted ? ", audio muted" : "") +
           (status.videoMuted ? ", video muted" : "") + (status.locked ? ", locked" : "");
}

Json::Value ToJson(RequestLog::Subscriber const& subscriber)
{
    Json::Value json;
    json["application"] = subscriber.busName;
    json["sent"] = Json::UInt64(subscriber.sent);
    json["dropped"] = Json::UInt64(subscriber.dropped);
    json["queued"] = Json::UInt64(subscriber.queued);
    return json;
}

Json::Value ToJson(InputCounters const& input)
{
    Json::Value json;
    json["url"] = Shown(input.url);
    json["state"] = input.state;
    json["error"] = input.error;
    json["live"] = input.isLive;
    for (InputNumber const& number : InputNumbers) {
        json[number.name] = Json::UInt64(input.*number.value);
    }
    return json;
}

} // namespace

std::string Shown(std::string const& value)
{
    constexpr std::size_t longest = 60;
    std::string const text = EscapeText(std::string_view(value).substr(0, longest));
    bool const isShort = value.size() <= longest && text.size() <= longest;
    return isShort ? text : "<" + Counted(value.size(), "byte") + ">";
}

RequestLog::~RequestLog()
{
    if (m_statusShown) {
        std::fputs("\n", stderr);
    }
}

void RequestLog::ClearStatus()
{
    if (m_statusShown) {
        std::fputs("\r\033[K", stderr);
        m_statusShown = false;
    }
}

void RequestLog::WriteLine(std::string const& text)
{
    ClearStatus();
    std::fprintf(stderr, "zviptv-sim: %s\n", EscapeText(text).c_str());
}

void RequestLog::Write(Entry const& entry)
{
    if (m_form == Form::Json) {
        Json::Value json;
        json["event"] = "request";
        json["endpoint"] = entry.endpoint;
        json["application"] = entry.busName;
        json["request"] = JsonEntries(entry.request);
        json["reply"] = entry.reply == nullptr ? Json::Value() : JsonEntries(*entry.reply);
        json["microseconds"] = Json::Int64(entry.took.count());
        json["fault"] = entry.note;
        json["replay"] = entry.replay;
        json["warnings"] = Json::Value(Json::arrayValue);
        for (std::string const& warning : WarningsOf(entry.endpoint, entry.request)) {
            json["warnings"].append(warning);
        }
        WriteJson(json);
    } else if (m_form == Form::Text) {
        ClearStatus();
        std::string const result =
            entry.reply == nullptr ? "no reply" : Shown(entry.reply->GetValue(key::Result));
        std::fprintf(stderr, "%s %s handle=%s %s%s -> %s%s (%.2f ms)%s%s%s%s\n%s", entry.busName.c_str(),
                     entry.endpoint.c_str(), Shown(entry.request.GetValue(key::HandleID)).c_str(),
                     Shown(entry.request.GetValue(key::FunctionName)).c_str(), Entries(entry.request).c_str(),
                     result.c_str(), entry.reply == nullptr ? "" : Entries(*entry.reply).c_str(),
                     static_cast<double>(entry.took.count()) / 1000,
                     entry.note.empty() ? "" : " fault: ", entry.note.c_str(),
                     entry.replay.empty() ? "" : " ", entry.replay.c_str(), WarningLine(entry).c_str());
    }
}

void RequestLog::WriteBus(std::string const& address)
{
    if (m_form == Form::Json) {
        Json::Value json;
        json["event"] = "bus";
        json["address"] = address;
        WriteJson(json);
    } else {
        std::printf("The service runs on a private bus until Ctrl-C. For applications in another terminal:\n"
                    "  export DBUS_SYSTEM_BUS_ADDRESS='%s'\n",
                    address.c_str());
    }
    RequireOutput();
}

void RequestLog::Write(Status const& status)
{
    if (m_form == Form::Json) {
        Json::Value json;
        json["event"] = "status";
        json["clients"] = Json::UInt64(status.clients);
        json["packetsPerSecond"] = Json::UInt64(status.packetsPerSecond);
        json["dropped"] = Json::UInt64(status.dropped);
        json["subscribers"] = Json::Value(Json::arrayValue);
        for (Subscriber const& subscriber : status.subscribers) {
            json["subscribers"].append(ToJson(subscriber));
        }
        json["appId"] = Shown(status.appId);
        json["audioMuted"] = status.audioMuted;
        json["videoMuted"] = status.videoMuted;
        json["locked"] = status.locked;
        json["input"] = ToJson(status.input);
        WriteJson(json);
        RequireOutput();
    } else if (m_form == Form::Text && isatty(STDERR_FILENO) != 0) {
        ClearStatus();
        std::fprintf(stderr, "%s, %s, %llu packets/s, %llu dropped%s%s",
                     Counted(status.clients, "client").c_str(),
                     Counted(status.subscribers.size(), "subscriber").c_str(),
                     static_cast<unsigned long long>(status.packetsPerSecond),
                     static_cast<unsigned long long>(status.dropped), Reception(status.input).c_str(),
                     Conditions(status).c_str());
        m_statusShown = true;
    }
}

} // namespace zviptv::sim
