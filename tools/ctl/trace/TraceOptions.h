// SPDX-License-Identifier: MIT
#pragma once

#include "trace/Event.h"

#include <chrono>
#include <optional>
#include <string>

namespace zviptv::ctl {

/// Which events are shown. An empty text lets all pass.
struct EventFilter
{
    std::string application; ///< bus name, name of the application, program or process id
    std::string endpoint;    ///< type word; upper and lower case are the same, as in the next one
    std::string function;

    bool Passes(trace::Event const& event) const;
};

/// What `zviptvctl trace` was asked for.
struct TraceOptions
{
    EventFilter filter;
    std::string in;  ///< capture file to read instead of watching the bus; "-" is standard input
    std::string out; ///< capture file to write; "-" is standard output
    std::string svg;
    std::string html;
    bool follows = false; ///< at the end of `in`, wait for more
    bool sumsUp = false;
    bool asJson = false;
    std::optional<std::chrono::milliseconds> duration; ///< after which watching ends
};

} // namespace zviptv::ctl
