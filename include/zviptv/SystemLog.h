// SPDX-License-Identifier: MIT
/// @file
/// Redirects the library's log lines to the application.

#pragma once

#include <zviptv/Export.h>

/// Priorities of the library's log lines. Some lines have the error priority although nothing failed, for
/// example the line with the partner's name and the empty line at a channel's end: a threshold does not
/// separate errors from normal lines.
enum EZVLogPriority
{
    ZV_LOG_DEBUG, ///< single messages and pushes
    ZV_LOG_INFO,  ///< steps of setting up and calling
    ZV_LOG_ERROR  ///< failures, and a few lines that report no failure
};

/// Receives one log line.
///
/// `tag` is "ZV_IPTV_API"; `line` is the whole formatted line with its prefix "file: function(line) > ", of
/// any length, including line breaks in its text. Both are valid only during the call. The sink runs on every
/// thread that logs, possibly on several at once, and sometimes while the library holds a lock: it must not
/// call the library, nor take a lock that is held while an object of the library is destroyed.
using ZVLogSink = void (*)(EZVLogPriority priority, char const* tag, char const* line, void* userData);

/// Sends the library's log lines to `sink` instead of the default sink; null restores the default.
/// The default is the system's log: the journal, with structured fields, if one runs, otherwise syslog(3).
/// Two environment variables, read at the first log line or the first ZVSetLogSink, change it:
///   ZV_IPTV_LOG        `system` (the default), `stderr` or `none`; a sink set here takes precedence
///   ZV_IPTV_LOG_LEVEL  `debug` (the default: all lines), `info` or `error`; applies to every sink
///
/// Thread-safe. A line that another thread is writing at that moment may still reach the previous sink, so
/// its `userData` must stay valid until the other threads have left the library.
ZVIPTV_API void ZVSetLogSink(ZVLogSink sink, void* userData);
