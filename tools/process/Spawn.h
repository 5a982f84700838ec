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
    /// Variables to add to the environment of this process.
    std::map<std::string, std::string> environment;
    /// Descriptors of this process, and their numbers in the new process; all others that are close-on-exec
    /// are closed there.
    std::vector<std::pair<int, int>> descriptors;
    /// Whether to start it in a separate process group, which a terminal's Ctrl-C does not reach.
    bool ownGroup = false;
    /// The file to execute, if it is not the first word of the command, which is then only the name.
    std::string program = {};
};

/// The process, or the reason why it could not be started.
struct SpawnOutcome
{
    pid_t pid = 0;
    int error = 0; ///< a value of errno
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
