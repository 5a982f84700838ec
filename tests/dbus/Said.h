// SPDX-License-Identifier: MIT
#pragma once

#include "LogCapture.h"

#include <ostream>
#include <string>
#include <vector>

namespace zviptv::test {

/// A log line: its priority, the function that wrote it, and the text after the prefix.
struct Said
{
    EZVLogPriority priority;
    std::string function;
    std::string message;
};

inline bool operator==(Said const& left, Said const& right)
{
    return left.priority == right.priority && left.function == right.function &&
           left.message == right.message;
}

inline void PrintTo(Said const& said, std::ostream* out)
{
    *out << '{' << said.priority << ", " << said.function << ", \"" << said.message << "\"}";
}

inline Said Debug(std::string function, std::string message)
{
    return {ZV_LOG_DEBUG, std::move(function), std::move(message)};
}

inline Said Info(std::string function, std::string message)
{
    return {ZV_LOG_INFO, std::move(function), std::move(message)};
}

inline Said Failed(std::string function, std::string message)
{
    return {ZV_LOG_ERROR, std::move(function), std::move(message)};
}

/// All captured lines, in order.
inline std::vector<Said> SaidIn(LogCapture const& log)
{
    std::vector<Said> said;
    for (LogLine const& line : log.Lines()) {
        std::string const origin = line.Origin();
        std::size_t const colon = origin.find(": ");
        said.push_back(
            {line.priority, colon == std::string::npos ? origin : origin.substr(colon + 2), line.Message()});
    }
    return said;
}

} // namespace zviptv::test
