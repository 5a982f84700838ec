// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/SystemLog.h>

#include <atomic>

namespace zviptv {

/// The place of a log line, which its prefix shows.
struct SourceLocation
{
    char const* file;
    char const* function;
    int line;

    /// As a default argument, this is the place of the call.
    static constexpr SourceLocation Here(char const* file = __builtin_FILE(),
                                         char const* function = __builtin_FUNCTION(),
                                         int line = __builtin_LINE())
    {
        return {file, function, line};
    }
};

/// The lowest priority that is logged; below all priorities until it is known.
extern std::atomic<int> leastLogPriority;

/// The only cost of a line that is filtered out. The macros below call it before they evaluate their
/// arguments.
inline bool IsLogWanted(EZVLogPriority priority)
{
    return priority >= leastLogPriority.load(std::memory_order_relaxed);
}

/// Writes one line, "file: function(line) > " and the formatted message, to the sink in force.
void WriteLog(EZVLogPriority priority, SourceLocation const& where, char const* format, ...)
    __attribute__((format(printf, 3, 4)));

/// Writes a line that contains only the prefix: a function was entered.
void WriteLogEntry(SourceLocation const& where, EZVLogPriority priority = ZV_LOG_INFO);

} // namespace zviptv

#define ZV_LOG_HERE (::zviptv::SourceLocation{__FILE__, static_cast<char const*>(__func__), __LINE__})
#define ZV_LOG_LINE(priority, ...)                                                                           \
    (::zviptv::IsLogWanted(priority) ? ::zviptv::WriteLog(priority, ZV_LOG_HERE, __VA_ARGS__) : void())
#define ZV_LOG_DEBUG_LINE(...) ZV_LOG_LINE(ZV_LOG_DEBUG, __VA_ARGS__)
#define ZV_LOG_INFO_LINE(...) ZV_LOG_LINE(ZV_LOG_INFO, __VA_ARGS__)
#define ZV_LOG_ERROR_LINE(...) ZV_LOG_LINE(ZV_LOG_ERROR, __VA_ARGS__)
#define ZV_LOG_ENTRY() ::zviptv::WriteLogEntry(ZV_LOG_HERE)
