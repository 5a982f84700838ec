// SPDX-License-Identifier: MIT
#pragma once

#include "Signals.h"
#include "process/Process.h"
#include "process/Spawn.h"

#include <optional>
#include <string>
#include <vector>

namespace zviptv::sim {

/// The command that runs with the service, in the simulator's process group, so that the terminal's Ctrl-C
/// reaches it.
class CommandProcess
{
public:
    using Clock = Signals::Clock;

    /// @throws std::system_error if it cannot be run
    explicit CommandProcess(std::vector<std::string> const& words) : m_process(Spawn({words, {}, {}})) {}

    /// Its exit status after it has ended.
    std::optional<int> Ended() { return m_process.Poll(); }

    /// Passes on a request to end. If the command does not end after SIGTERM or SIGHUP, it gets the other one
    /// of the two, which a shell may obey, and is finally killed.
    void PassOn(Signals::Signal const& signal);

    /// Advance() is due.
    Clock::time_point Change() const { return m_nextAt; }
    void Advance();

private:
    Process m_process;
    int m_next = 0; ///< the signal to send at m_nextAt
    Clock::time_point m_nextAt = Signals::Never;
};

} // namespace zviptv::sim
