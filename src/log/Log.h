#pragma once

#include <zviptv/SystemLog.h>

namespace zviptv {

/// Where a log line is written: what its prefix names.
struct SourceLocation
{
    char const* file;
    char const* function;
    int line;

    /// As a default argument: the place of the call.
    static constexpr SourceLocation Here(char const* file = __builtin_FILE(),
                                         char const* function = __builtin_FUNCTION(),
                                         int line = __builtin_LINE())
    {
        return {file, function, line};
    }
};

/// Writes one line, "file: function(line) > " and the formatted message, to the sink in force.
void WriteLog(EZVLogPriority priority, SourceLocation const& where, char const* format, ...)
    __attribute__((format(printf, 3, 4)));

/// Writes a line that is the prefix alone: a function was entered.
void WriteLogEntry(SourceLocation const& where, EZVLogPriority priority = ZV_LOG_INFO);

} // namespace zviptv

#define ZV_LOG_HERE (::zviptv::SourceLocation{__FILE__, static_cast<char const*>(__func__), __LINE__})
#define ZV_LOG_DEBUG_LINE(...) ::zviptv::WriteLog(ZV_LOG_DEBUG, ZV_LOG_HERE, __VA_ARGS__)
#define ZV_LOG_INFO_LINE(...) ::zviptv::WriteLog(ZV_LOG_INFO, ZV_LOG_HERE, __VA_ARGS__)
#define ZV_LOG_ERROR_LINE(...) ::zviptv::WriteLog(ZV_LOG_ERROR, ZV_LOG_HERE, __VA_ARGS__)
#define ZV_LOG_ENTRY() ::zviptv::WriteLogEntry(ZV_LOG_HERE)
