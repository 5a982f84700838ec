// SPDX-License-Identifier: MIT
#include "EventText.h"
#include "TraceSummary.h"
#include "common/PrintableText.h"
#include "output/Print.h"
#include "output/Table.h"
#include "output/Traffic.h"
#include "output/Words.h"

#include <array>
#include <cstdio>

namespace zviptv::ctl {

namespace {

std::string Decimal(double number)
{
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.1f", number);
    return text.data();
}

std::string Digits(std::uint64_t number)
{
    return std::to_string(number);
}

} // namespace

std::string TraceSummary::CallsText() const
{
    Table table({"endpoint", "function", "calls", "p50", "p99", "slowest", "refused", "errors", "open"});
    for (auto const& [name, calls] : m_calls) {
        Latencies const& times = calls.latencies;
        bool const hasTimes = times.Count() > 0;
        table.Add({EscapeText(name.first), EscapeText(name.second), Digits(calls.requests),
                   hasTimes ? LatencyText(times.Percentile(50)) : "-",
                   hasTimes ? LatencyText(times.Percentile(99)) : "-",
                   hasTimes ? LatencyText(times.Max()) : "-", Digits(calls.refused), Digits(calls.errors),
                   Digits(calls.Open())});
    }
    return table.Text("no calls");
}

std::string TraceSummary::PushesText() const
{
    Table table({"application", "pid", "packets", "packets/s", "bytes", "rate"});
    for (auto const& [name, pushes] : m_pushes) {
        table.Add({EscapeText(name.first), name.second, Digits(pushes.packets),
                   Decimal(pushes.PerSecond(pushes.packets)), Digits(pushes.bytes),
                   RateText(pushes.PerSecond(pushes.bytes))});
    }
    return table.Text("no pushes");
}

std::string TraceSummary::TextOf(Waits const& waits, char const* title)
{
    std::string text = title + std::string(": ") + Digits(waits.first) + "\n";
    for (Wait const& wait : waits.second) {
        text += "  " + ClockText(wait.time) + " " + wait.application + " " + EscapeText(wait.subject) + " " +
                LatencyText(wait.length) + "\n";
    }
    return text;
}

std::string TraceSummary::Text(trace::Counts const& counts) const
{
    std::string text;
    if (m_events > 0) {
        text = ClockText(m_first) + " to " + ClockText(m_last) + ", " +
               Decimal(static_cast<double>(m_last - m_first) / 1e6) + " s\n";
    }
    text += Counted(m_events, "event") + ", " + Counted(counts.messages, "message") + " on the bus\n\n";
    text += CallsText() + "\n" + PushesText() + "\n";
    text += TextOf(m_slow, "calls of 0.1 s or more");
    text += TextOf(m_gaps, "pauses between pushes of 1 s or more");
    text += "losses: " + Digits(m_losses) + "\n";
    text += "messages with problems: " + Digits(m_problems) + "\n";
    return m_firstProblem.empty() ? text : text + "  " + EscapeText(m_firstProblem) + "\n";
}

Json::Value TraceSummary::JsonOf(Waits const& waits)
{
    Json::Value json(Json::arrayValue);
    for (Wait const& wait : waits.second) {
        Json::Value entry(Json::objectValue);
        entry["time"] = ctl::ToJson(wait.time);
        entry["length"] = ctl::ToJson(wait.length);
        entry["application"] = ctl::ToJson(wait.application);
        entry["subject"] = ctl::ToJson(wait.subject);
        json.append(std::move(entry));
    }
    return json;
}

Json::Value TraceSummary::ToJson(trace::Counts const& counts) const
{
    Json::Value json(Json::objectValue);
    json["events"] = ctl::ToJson(m_events);
    json["messages"] = ctl::ToJson(counts.messages);
    json["foreign"] = ctl::ToJson(counts.foreign);
    json["malformed"] = ctl::ToJson(counts.malformed);
    json["losses"] = ctl::ToJson(m_losses);
    json["problems"] = ctl::ToJson(m_problems);
    json["calls"] = json["pushes"] = Json::Value(Json::arrayValue);
    for (auto const& [name, calls] : m_calls) {
        Json::Value entry(Json::objectValue);
        entry["endpoint"] = ctl::ToJson(name.first);
        entry["function"] = ctl::ToJson(name.second);
        entry["calls"] = ctl::ToJson(calls.requests);
        entry["p50"] = ctl::ToJson(calls.latencies.Percentile(50));
        entry["p99"] = ctl::ToJson(calls.latencies.Percentile(99));
        entry["slowest"] = ctl::ToJson(calls.latencies.Max());
        entry["refused"] = ctl::ToJson(calls.refused);
        entry["errors"] = ctl::ToJson(calls.errors);
        entry["open"] = ctl::ToJson(calls.Open());
        json["calls"].append(std::move(entry));
    }
    for (auto const& [name, pushes] : m_pushes) {
        Json::Value entry(Json::objectValue);
        entry["application"] = ctl::ToJson(name.first);
        entry["pid"] = ctl::ToJson(name.second);
        entry["packets"] = ctl::ToJson(pushes.packets);
        entry["bytes"] = ctl::ToJson(pushes.bytes);
        entry["first"] = ctl::ToJson(pushes.first);
        entry["last"] = ctl::ToJson(pushes.last);
        json["pushes"].append(std::move(entry));
    }
    json["slow"] = JsonOf(m_slow);
    json["pauses"] = JsonOf(m_gaps);
    return json;
}

} // namespace zviptv::ctl
