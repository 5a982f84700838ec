// SPDX-License-Identifier: MIT
#pragma once

#include "LogCapture.h"

#include <ostream>
#include <string>
#include <vector>

namespace zviptv::test {

/// A log line: its priority, the function that wrote it, and the text after the prefix.
struct LoggedLine
{
    EZVLogPriority priority;
    std::string function;
    std::string message;
};

inline bool operator==(LoggedLine const& left, LoggedLine const& right)
{
    return left.priority == right.priority && left.function == right.function &&
           left.message == right.message;
}

inline void PrintTo(LoggedLine const& line, std::ostream* out)
{
    *out << '{' << line.priority << ", " << line.function << ", \"" << line.message << "\"}";
}

inline LoggedLine Debug(std::string function, std::string message)
{
    return {ZV_LOG_DEBUG, std::move(function), std::move(message)};
}

inline LoggedLine Info(std::string function, std::string message)
{
    return {ZV_LOG_INFO, std::move(function), std::move(message)};
}

inline LoggedLine Failed(std::string function, std::string message)
{
    return {ZV_LOG_ERROR, std::move(function), std::move(message)};
}

/// All captured lines, in order.
inline std::vector<LoggedLine> LoggedLines(LogCapture const& log)
{
    std::vector<LoggedLine> lines;
    for (LogLine const& line : log.Lines()) {
        std::string const origin = line.Origin();
        std::size_t const colon = origin.find(": ");
        lines.push_back(
            {line.priority, colon == std::string::npos ? origin : origin.substr(colon + 2), line.Message()});
    }
    return lines;
}

} // namespace zviptv::test
