// SPDX-License-Identifier: MIT
#pragma once

#include <sys/types.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace zviptv {

struct SpawnRequest
{
    /// Program (searched in PATH if it has no slash) and arguments.
    std::vector<std::string> command;
    /// Added to the environment of this process.
    std::map<std::string, std::string> environment;
    /// Descriptor here, and the number it gets in the new process; all others are closed there if
    /// they are close-on-exec.
    std::vector<std::pair<int, int>> descriptors;
    /// In a process group of its own, which a terminal's Ctrl-C does not reach.
    bool ownGroup = false;
    /// What to execute, if that is not the first word of the command, which then is only its name.
    std::string program = {};
};

/// The process, or why there is none.
struct SpawnOutcome
{
    pid_t pid = 0;
    int error = 0; ///< as errno
    char const* what = "";

    /// The process. Throws std::system_error with the reason, and the name of `program`, if there is none.
    pid_t Pid(std::string const& program) const;
};

/// Starts a process that is killed when the calling thread ends, however it ends. Returns when the program
/// has been executed.
SpawnOutcome TrySpawn(SpawnRequest const& request);

/// The same. Throws std::system_error if there is no process.
pid_t Spawn(SpawnRequest const& request);

} // namespace zviptv
