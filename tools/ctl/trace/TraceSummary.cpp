// SPDX-License-Identifier: MIT
#include "TraceSummary.h"

#include "EventText.h"
#include "output/Print.h"
#include "output/Words.h"

#include <zviptv/client/Subscription.h>

#include <algorithm>
#include <chrono>

namespace zviptv::ctl {

namespace {

using trace::Event;
using trace::EventKind;

constexpr std::int64_t SlowCall = 100'000; ///< microseconds
constexpr std::int64_t LongGap = std::chrono::microseconds(zviptv::Subscription::LongPause).count();
constexpr std::size_t MaxWaits = 10;

/// More rows than these are added up in one.
constexpr std::size_t MaxRows = 1'000;

template <typename Row>
Row& RowOf(std::map<std::pair<std::string, std::string>, Row>& rows,
           std::pair<std::string, std::string> const& name)
{
    bool const isNew = rows.size() >= MaxRows && rows.count(name) == 0;
    return rows[isNew ? std::pair<std::string, std::string>{"(others)", "(others)"} : name];
}

} // namespace

std::uint64_t TraceSummary::Calls::Open() const
{
    std::uint64_t const answered = latencies.Count();
    return requests > answered ? requests - answered : 0;
}

double TraceSummary::Pushes::PerSecond(std::uint64_t number) const
{
    return last > first ? static_cast<double>(number) * 1e6 / static_cast<double>(last - first) : 0;
}

void TraceSummary::Add(Event const& event)
{
    m_first = m_events == 0 ? event.time : m_first;
    m_last = event.time;
    ++m_events;
    if (!event.problems.empty() && ++m_problems == 1) {
        m_firstProblem = "message " + std::to_string(event.number) + ": " + Join(event.problems, "; ");
    }
    m_losses += event.kind == EventKind::Loss ? 1U : 0U;
    if (event.kind == EventKind::Notification) {
        AddPush(event);
    } else if (event.kind != EventKind::Loss && event.kind != EventKind::Arrival) {
        AddCall(event);
    }
}

void TraceSummary::AddCall(Event const& event)
{
    bool const isQuestion = event.function.empty();
    std::string const name = event.isOnHelperBus ? "(announcement)"
                             : isQuestion        ? "(keeps up?)"
                                                 : event.function;
    Calls& calls = RowOf(m_calls, {event.endpoint, name});
    if (event.kind == EventKind::Request || event.kind == EventKind::Announcement) {
        ++calls.requests;
        return;
    }
    calls.errors += event.kind == EventKind::Error ? 1U : 0U;
    calls.refused += event.result == false ? 1U : 0U;
    if (event.latency) {
        calls.latencies.Add(*event.latency);
        if (*event.latency >= SlowCall) {
            Keep(m_slow, {event.time - *event.latency, *event.latency, ApplicationText(*event.application),
                          event.endpoint + " " + name});
        }
    }
}

void TraceSummary::AddPush(Event const& event)
{
    std::string const application = ApplicationText(*event.application);
    std::string const pid = event.pid ? ToHex(static_cast<std::uint16_t>(*event.pid), 4) : SubjectText(event);
    Pushes& pushes = RowOf(m_pushes, {event.application->busName, pid});
    if (pushes.packets == 0) {
        pushes.first = event.time;
    } else if (event.time - pushes.last >= LongGap) {
        Keep(m_gaps, {pushes.last, event.time - pushes.last, application, pid});
    }
    pushes.last = event.time;
    ++pushes.packets;
    pushes.bytes += event.size.value_or(0);
}

/// The longest ones, the longest first.
void TraceSummary::Keep(Waits& waits, Wait wait)
{
    ++waits.first;
    auto const isLonger = [](Wait const& one, Wait const& other) { return one.length > other.length; };
    auto const place = std::upper_bound(waits.second.begin(), waits.second.end(), wait, isLonger);
    waits.second.insert(place, std::move(wait));
    if (waits.second.size() > MaxWaits) {
        waits.second.pop_back();
    }
}

} // namespace zviptv::ctl
