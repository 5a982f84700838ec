// SPDX-License-Identifier: MIT
#include "DiagramRows.h"

#include "EventText.h"
#include "common/PrintableText.h"
#include "output/Print.h"
#include "output/Words.h"

#include <algorithm>

namespace zviptv::ctl {

namespace {

using trace::Event;
using trace::EventKind;

constexpr std::size_t MaxDiagramRows = 5'000;
constexpr std::int64_t LongPause = 1'000'000; ///< microseconds
constexpr std::size_t ValueLimit = 80;        ///< of a value, in bytes
constexpr std::size_t FullLimit = 2'000;

std::string StyleOf(Event const& event)
{
    if (!event.problems.empty() || event.kind == EventKind::Error) {
        return "error";
    }
    if (event.kind == EventKind::Reply) {
        return event.result == false ? "refused" : "reply";
    }
    return event.kind == EventKind::Request ? "request" : "announcement";
}

/// "org.example :1.5", "zviptvctl :1.5"
std::string HeadText(trace::Application const& application)
{
    std::string const& name = application.name.empty() ? application.program : application.name;
    return EscapeText(name) + (name.empty() ? "" : " ") + EscapeText(application.busName);
}

std::string FullText(Event const& event)
{
    std::string text =
        "message " + std::to_string(event.number) + ", " + NameOf(event.kind) + ", " + ClockText(event.time);
    if (event.application != nullptr) {
        text += "\n" + ApplicationText(*event.application);
    }
    text += "\n" + EscapeText(event.endpoint) + (event.endpoint.empty() ? "" : " ") + SubjectText(event);
    text += "\n" + DetailText(event, FullLimit);
    if (event.latency) {
        text += "\nlatency " + LatencyText(*event.latency);
    }
    for (std::string const& problem : event.problems) {
        text += "\nproblem: " + EscapeText(problem);
    }
    return text;
}

} // namespace

void DiagramRows::Add(Event const& event)
{
    bool const isQuestion = event.function.empty() &&
                            (event.kind == EventKind::Request || event.kind == EventKind::Reply) &&
                            event.isFromService == (event.kind == EventKind::Request);
    if (isQuestion) {
        return; // whether the application keeps up is not part of what it does
    }
    if (m_rows.size() >= MaxDiagramRows) {
        ++m_leftOut;
        return;
    }
    AddPause(event.time);
    if (event.application == nullptr) {
        DiagramRow& row = NewRow(DiagramRow::Kind::Service, event, 0);
        row.style = event.kind == EventKind::Loss ? "error" : "announcement";
        row.label = SubjectText(event);
        return;
    }
    std::size_t const lane = LaneOf(event);
    if (event.kind == EventKind::Notification && event.problems.empty()) {
        AddPush(event, lane);
    } else if (event.kind == EventKind::Loss) {
        NewRow(DiagramRow::Kind::End, event, lane).label = SubjectText(event);
        m_lanes[lane] = false;
        m_applications.erase(event.application->busName);
    } else {
        AddMessage(event, lane);
    }
}

void DiagramRows::AddPause(std::int64_t time)
{
    if (!m_rows.empty() && time - m_last >= LongPause) {
        DiagramRow row;
        row.kind = DiagramRow::Kind::Pause;
        row.time = m_last;
        row.lanes = m_lanes;
        row.label = LatencyText(time - m_last) + " without a message";
        m_rows.push_back(std::move(row));
    }
    m_last = time;
}

std::size_t DiagramRows::LaneOf(Event const& event)
{
    auto const known = m_applications.find(event.application->busName);
    std::string const name = HeadText(*event.application);
    if (known != m_applications.end()) {
        m_rows[known->second.head].label = name; // more of it may be known by now
        return known->second.lane;
    }
    auto const lane =
        static_cast<std::size_t>(std::find(m_lanes.begin(), m_lanes.end(), false) - m_lanes.begin());
    NewRow(DiagramRow::Kind::Head, event, lane).label = name;
    if (lane == m_lanes.size()) {
        m_lanes.push_back(true);
    }
    m_lanes[lane] = true;
    m_maxLanes = std::max(m_maxLanes, m_lanes.size());
    m_applications[event.application->busName] = {lane, m_rows.size() - 1};
    return lane;
}

DiagramRow& DiagramRows::NewRow(DiagramRow::Kind kind, Event const& event, std::size_t lane)
{
    DiagramRow row;
    row.kind = kind;
    row.time = event.time;
    row.lane = lane;
    row.lanes = m_lanes;
    row.isFromService = event.isFromService;
    row.full = FullText(event);
    m_rows.push_back(std::move(row));
    return m_rows.back();
}

void DiagramRows::AddMessage(Event const& event, std::size_t lane)
{
    DiagramRow& row = NewRow(DiagramRow::Kind::Message, event, lane);
    row.style = StyleOf(event);
    row.label = SubjectText(event);
    row.detail = DetailText(event, ValueLimit);
    row.latency = event.latency ? LatencyText(*event.latency) : "";
    if (!event.problems.empty()) {
        row.detail += " ! " + EscapeText(Join(event.problems, "; "));
    }
}

/// Pushes to several applications take turns: those after the last other message share a row for each.
void DiagramRows::AddPush(Event const& event, std::size_t lane)
{
    auto row = m_rows.rbegin();
    while (row != m_rows.rend() && row->kind == DiagramRow::Kind::Pushes && row->lane != lane) {
        ++row;
    }
    bool const continues = row != m_rows.rend() && row->kind == DiagramRow::Kind::Pushes;
    DiagramRow& pushes = continues ? *row : NewRow(DiagramRow::Kind::Pushes, event, lane);
    pushes.style = "push";
    ++pushes.packets;
    pushes.bytes += event.size.value_or(0);
    ++pushes.pids[event.pid ? ToHex(static_cast<std::uint16_t>(*event.pid), 4) : SubjectText(event)];
    pushes.label = pushes.packets == 1 ? SubjectText(event) : Counted(pushes.packets, "packet");
    pushes.detail.clear();
    for (auto const& [pid, count] : pushes.pids) {
        pushes.detail += pid + (count == 1 ? "" : " x " + std::to_string(count)) + ", ";
    }
    pushes.detail += Counted(pushes.bytes, "byte");
    if (pushes.packets > 1) {
        pushes.full = pushes.label + " from " + ClockText(pushes.time) + " to " + ClockText(event.time) +
                      "\n" + ApplicationText(*event.application) + "\n" + pushes.detail;
    }
}

} // namespace zviptv::ctl
