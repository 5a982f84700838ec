// SPDX-License-Identifier: MIT
/// @file
/// The library's log lines, taken into the application.

#pragma once

#include <zviptv/Export.h>

/// Priorities of the library's log lines. Some lines have the error priority although all is well, the one
/// with the partner's name and the empty one at a channel's end among them: a threshold does not tell good
/// from bad.
enum EZVLogPriority
{
    ZV_LOG_DEBUG, ///< single messages and pushes
    ZV_LOG_INFO,  ///< steps of setting up and calling
    ZV_LOG_ERROR  ///< what failed, and a few that did not
};

/// Receives one log line.
///
/// `tag` is "ZV_IPTV_API"; `line` is the whole formatted line with its prefix "file: function(line) > ", as
/// long as it may be, with any line breaks that belong to its text. Both are valid during the call only.
/// Called on whichever thread logs, possibly on several at once, and sometimes while the library holds a
/// lock: a sink must not call the library nor take a lock that is held while something of the library is
/// destroyed.
using ZVLogSink = void (*)(EZVLogPriority priority, char const* tag, char const* line, void* userData);

/// Sends the library's log lines to `sink` instead of the default sink; null brings the default back.
///
/// The default is the system's own log: the journal, with structured fields, where one runs, else syslog(3).
/// Two environment variables, read at the first log line or the first ZVSetLogSink, change it:
///   ZV_IPTV_LOG        `system` (the default), `stderr` or `none`; a sink set here comes before it
///   ZV_IPTV_LOG_LEVEL  `debug` (the default: no line is lost), `info` or `error`; holds for every sink
///
/// Thread-safe. A line that another thread is writing at that moment may still reach the earlier sink, so its
/// `userData` has to stay valid until the other threads have left the library.
ZVIPTV_API void ZVSetLogSink(ZVLogSink sink, void* userData);
