#pragma once

#include <sys/types.h>

#include <chrono>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace zviptv::test {

struct SpawnRequest
{
    /// Program (searched in PATH if it has no slash) and arguments.
    std::vector<std::string> command;
    /// Added to the own environment.
    std::map<std::string, std::string> environment;
    /// Descriptor here, and the number it gets in the new process; all others are closed there if
    /// they are close-on-exec.
    std::vector<std::pair<int, int>> descriptors;
};

/// Starts a process that is killed when this one ends, however it ends. Returns when the program has
/// been executed; throws std::system_error with the reason if it could not be.
pid_t Spawn(SpawnRequest const& request);

} // namespace zviptv::test
