// SPDX-License-Identifier: MIT
#pragma once

#include "trace/Event.h"

#include <string>

namespace zviptv::ctl {

// Events as text on one line, without control characters.

/// "10:01:02.345678", local time
std::string ClockText(std::int64_t time);

/// "0.213 ms", "1.5 s"
std::string LatencyText(std::int64_t microseconds);

/// ":1.5 org.example zviptvctl[1234]"
std::string ApplicationText(trace::Application const& application);

/// What the message is: "MuteAudio", "announces IPGUTIL", "has left the bus"
std::string SubjectText(trace::Event const& event);

/// What it carries: "onoff=true", "false index=0", "pid=0x0101 pts=133200 size=2174"; at most `limit` bytes
/// of each value.
std::string DetailText(trace::Event const& event, std::size_t limit);

/// The whole event: time, application, direction, endpoint, subject, detail, latency and problems.
std::string LineText(trace::Event const& event);

} // namespace zviptv::ctl
