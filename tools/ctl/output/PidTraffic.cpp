// SPDX-License-Identifier: MIT
#include "PidTraffic.h"

#include "Print.h"
#include "Words.h"

#include <cmath>
#include <cstdio>

namespace zviptv::ctl {

namespace {

void AddNumbers(Json::Value& object, Traffic const& traffic)
{
    object["packets"] = ToJson(traffic.Packets());
    object["bytes"] = ToJson(traffic.Bytes());
    object["bytesPerSecond"] = ToJson(std::llround(traffic.BytesPerSecond()));
}

} // namespace

PidTraffic::PidTraffic(Clock::time_point start) : m_measured(start), m_all(start) {}

void PidTraffic::Add(std::uint16_t pid, std::size_t bytes)
{
    m_all.Add(bytes);
    m_pids.try_emplace(pid, m_measured).first->second.Add(bytes);
}

void PidTraffic::Measure(Clock::time_point now)
{
    m_measured = now;
    m_all.Measure(now);
    for (auto& [pid, traffic] : m_pids) {
        traffic.Measure(now);
    }
}

std::string PidTraffic::Text() const
{
    std::string text = m_all.Now();
    for (auto const& [pid, traffic] : m_pids) {
        text += "; " + ToHex(pid, 4) + ": " + Counted(traffic.Packets(), "packet") + ", " +
                RateText(traffic.BytesPerSecond());
    }
    return text;
}

std::string PidTraffic::Total() const
{
    return Counted(m_all.Packets(), "packet") + ", " + RateText(m_all.BytesPerSecond());
}

std::vector<std::string> PidTraffic::Rates() const
{
    std::vector<std::string> rates;
    for (auto const& [pid, traffic] : m_pids) {
        char text[32];
        std::snprintf(text, sizeof text, " %.1f", traffic.BytesPerSecond() / 1000);
        rates.push_back((rates.empty() ? ": " : ", ") + ToHex(pid, 4) + text);
    }
    return rates;
}

void PidTraffic::AddTo(Json::Value& object) const
{
    AddNumbers(object, m_all);
    object["pids"] = Json::Value(Json::arrayValue);
    for (auto const& [pid, traffic] : m_pids) {
        Json::Value entry(Json::objectValue);
        entry["pid"] = pid;
        AddNumbers(entry, traffic);
        object["pids"].append(entry);
    }
}

} // namespace zviptv::ctl
