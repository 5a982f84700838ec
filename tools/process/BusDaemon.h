// SPDX-License-Identifier: MIT
#pragma once

#include "Spawn.h"

#include <chrono>
#include <string>

namespace zviptv {

/// A dbus-daemon that has been started.
struct BusDaemon
{
    pid_t pid = 0;
    std::string address; ///< empty if it ended, or did not listen in time
};

/// How to start a dbus-daemon.
struct BusStart
{
    std::string program = "dbus-daemon"; ///< looked up in PATH
    std::string config;                  ///< file
    std::string address;                 ///< address to listen at, which overrides that of the file
    /// Descriptors for its standard error (2) and other purposes; 3 is in use.
    std::vector<std::pair<int, int>> descriptors;
    pid_t (*spawn)(SpawnRequest const&) = Spawn;
};

/// Starts a dbus-daemon, in a separate process group, and returns when it listens. Throws std::system_error
/// if it cannot be run.
BusDaemon StartBusDaemon(BusStart start);

} // namespace zviptv
