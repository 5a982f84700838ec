// SPDX-License-Identifier: MIT
#include "EventText.h"

#include "common/PrintableText.h"
#include "output/Print.h"
#include "output/Words.h"
#include "trace/Message.h"

#include <array>
#include <cstdio>
#include <ctime>

namespace zviptv::ctl {

namespace {

using trace::Event;
using trace::EventKind;

constexpr std::size_t LineLimit = 160;

/// Cut between characters, with three dots for the rest.
std::string Cut(std::string const& text, std::size_t limit)
{
    if (text.size() <= limit) {
        return text;
    }
    std::size_t end = limit;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80) {
        --end;
    }
    return text.substr(0, end) + "...";
}

void Append(std::string& text, std::string const& part)
{
    text += (text.empty() || part.empty() ? "" : " ") + part;
}

std::string ValuesText(Event const& event, std::size_t limit)
{
    std::string text;
    for (trace::Value const& value : event.values) {
        Append(text, EscapeText(value.key) + "=" + Cut(value.text, limit));
    }
    return text;
}

std::string PushText(Event const& event)
{
    std::string text;
    for (trace::Value const& value : event.values) {
        if (value.key == "pesType" || value.key == "captionType") {
            text = value.text;
        }
    }
    if (event.pid) {
        Append(text, "pid=" + ToHex(static_cast<std::uint16_t>(*event.pid), 4));
    }
    if (event.pts) {
        Append(text, "pts=" + std::to_string(*event.pts));
    }
    Append(text, "size=" + std::to_string(*event.size));
    return text;
}

char const* Direction(Event const& event)
{
    return event.kind == EventKind::Loss || event.kind == EventKind::Arrival ? "--"
           : event.kind == EventKind::Notification                           ? "<<"
           : event.isFromService                                             ? "<-"
                                                                             : "->";
}

} // namespace

std::string ClockText(std::int64_t time)
{
    auto const seconds = static_cast<std::time_t>(time / trace::MicrosecondsPerSecond);
    std::tm parts{};
    localtime_r(&seconds, &parts);
    std::array<char, 32> text{};
    std::size_t const size = std::strftime(text.data(), text.size(), "%H:%M:%S", &parts);
    std::array<char, 16> fraction{};
    std::snprintf(fraction.data(), fraction.size(), ".%06d",
                  static_cast<int>(time % trace::MicrosecondsPerSecond));
    return std::string(text.data(), size) + fraction.data();
}

std::string LatencyText(std::int64_t microseconds)
{
    std::array<char, 32> text{};
    bool const isLong = microseconds >= trace::MicrosecondsPerSecond;
    std::snprintf(text.data(), text.size(), isLong ? "%.3f s" : "%.3f ms",
                  static_cast<double>(microseconds) / (isLong ? 1e6 : 1e3));
    return text.data();
}

std::string ApplicationText(trace::Application const& application)
{
    std::string text = EscapeText(application.busName);
    Append(text, EscapeText(application.name));
    if (application.processId != 0) {
        Append(text, EscapeText(application.program) + "[" + std::to_string(application.processId) + "]");
    }
    return text;
}

std::string SubjectText(Event const& event)
{
    bool const isOfService = event.application == nullptr;
    switch (event.kind) {
    case EventKind::Loss:
        return isOfService ? "the service has left the bus" : "has left the bus";
    case EventKind::Arrival:
        return "the service has arrived";
    case EventKind::Announcement:
        for (trace::Value const& value : event.values) {
            if (value.key == "add") {
                return (value.text == "y" ? "announces " : "withdraws ") + EscapeText(event.endpoint);
            }
        }
        return "announces " + EscapeText(event.endpoint);
    default:
        break;
    }
    if (event.isOnHelperBus) {
        return "answers for " + EscapeText(event.endpoint);
    }
    if (!event.function.empty()) {
        return EscapeText(event.function);
    }
    if (event.kind == EventKind::Notification) {
        return "a notification";
    }
    bool const isRequest = event.kind == EventKind::Request;
    if (event.isFromService == isRequest) {
        return isRequest ? "does the application keep up?" : "the application keeps up";
    }
    return isRequest ? "a request" : "a reply";
}

std::string DetailText(Event const& event, std::size_t limit)
{
    if (event.kind == EventKind::Announcement) {
        return "";
    }
    if (event.kind == EventKind::Error) {
        return EscapeText(event.errorName) + (event.errorText.empty() ? "" : ": ") +
               Cut(EscapeText(event.errorText), limit);
    }
    if (event.size) {
        return PushText(event);
    }
    std::string text = event.result ? (*event.result ? "true" : "false") : "";
    Append(text, ValuesText(event, limit));
    if (event.kind == EventKind::Request && event.handle != 0 && event.handle != 256) {
        Append(text, "handle=" + std::to_string(event.handle)); // 256 is the default
    }
    return text;
}

std::string LineText(Event const& event)
{
    std::string line = ClockText(event.time);
    Append(line,
           event.application != nullptr ? ApplicationText(*event.application) : EscapeText(event.service));
    Append(line, Direction(event));
    Append(line, event.isOnHelperBus ? "" : EscapeText(event.endpoint));
    Append(line, SubjectText(event));
    Append(line, event.kind == EventKind::Error ? "error" : "");
    Append(line, DetailText(event, LineLimit));
    if (event.latency) {
        Append(line, "(" + LatencyText(*event.latency) + ")");
    }
    if (!event.problems.empty()) {
        line += " ! " + EscapeText(Join(event.problems, "; "));
    }
    return line;
}

} // namespace zviptv::ctl
