#include "PidTraffic.h"

#include "Print.h"
#include "Words.h"

#include <cmath>

namespace zviptv::ctl {

namespace {

void AddNumbers(Json::Value& object, Traffic const& traffic)
{
    object["packets"] = ToJson(traffic.Packets());
    object["bytes"] = ToJson(traffic.Bytes());
    object["bytesPerSecond"] = ToJson(std::llround(traffic.BytesPerSecond()));
}

} // namespace

void PidTraffic::Add(std::uint16_t pid, std::size_t bytes)
{
    m_all.Add(bytes);
    m_pids[pid].Add(bytes);
}

void PidTraffic::Measure()
{
    Traffic::Clock::time_point const now = Traffic::Clock::now();
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
