// SPDX-License-Identifier: MIT
#pragma once

#include "log/Log.h"

namespace zviptv {

constexpr char LogTag[] = "ZV_IPTV_API";

/// The file name without its directories.
char const* BaseName(char const* path);

/// The system's log: the journal if one runs, otherwise syslog(3).
void WriteToSystemLog(EZVLogPriority priority, SourceLocation const& where, char const* line);

void WriteToStandardError(EZVLogPriority priority, char const* line);

} // namespace zviptv
