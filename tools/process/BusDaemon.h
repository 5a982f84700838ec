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
    std::string address; ///< empty if it ended, or kept silent for too long, instead of listening
};

/// How to start one.
struct BusStart
{
    std::string program = "dbus-daemon"; ///< looked up in PATH
    std::string config;                  ///< file
    std::string address;                 ///< where to listen, whatever the file says
    /// For its standard error (2) and what else it needs; 3 is taken.
    std::vector<std::pair<int, int>> descriptors;
    pid_t (*spawn)(SpawnRequest const&) = Spawn;
};

/// Starts a dbus-daemon, in a process group of its own, and returns when it listens. Throws std::system_error
/// if it cannot be run.
BusDaemon StartBusDaemon(BusStart start);

} // namespace zviptv
