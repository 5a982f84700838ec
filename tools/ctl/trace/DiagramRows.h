// SPDX-License-Identifier: MIT
#pragma once

#include "trace/Event.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace zviptv::ctl {

/// A row of a sequence diagram.
struct DiagramRow
{
    enum class Kind
    {
        Head,    ///< an application appears in its lane
        Message, ///< an arrow between the application and the service
        Pushes,  ///< one arrow for several notifications in a row
        End,     ///< an application leaves its lane
        Service, ///< the service arrives or leaves
        Pause    ///< nothing happened for a while
    };

    Kind kind = Kind::Message;
    std::string style; ///< "request", "reply", "refused", "error", "push", "announcement"
    std::int64_t time = 0;
    std::size_t lane = 0;
    std::vector<bool> lanes; ///< which lanes have an application, before this row
    bool isFromService = false;
    std::string label;
    std::string latency;
    std::string detail;
    std::string full; ///< everything, on several lines

    // Of Pushes:
    std::uint64_t packets = 0;
    std::uint64_t bytes = 0;
    std::map<std::string, std::uint64_t> pids; ///< number of packets
};

/// Lays events out as rows. An application has a lane from its first message until it leaves the bus.
class DiagramRows
{
public:
    void Add(trace::Event const& event);

    std::vector<DiagramRow> const& Rows() const { return m_rows; }
    std::size_t Lanes() const { return m_maxLanes; }
    std::uint64_t LeftOut() const { return m_leftOut; } ///< events that came after the last row

private:
    void AddPause(std::int64_t time);
    void AddPush(trace::Event const& event, std::size_t lane);
    void AddMessage(trace::Event const& event, std::size_t lane);
    std::size_t LaneOf(trace::Event const& event);
    DiagramRow& NewRow(DiagramRow::Kind kind, trace::Event const& event, std::size_t lane);

    struct Lane
    {
        std::size_t lane;
        std::size_t head; ///< number of the row where it begins
    };

    std::vector<DiagramRow> m_rows;
    std::vector<bool> m_lanes;                  ///< which lanes have an application
    std::map<std::string, Lane> m_applications; ///< by bus name
    std::size_t m_maxLanes = 0;
    std::int64_t m_last = 0;
    std::uint64_t m_leftOut = 0;
};

} // namespace zviptv::ctl
