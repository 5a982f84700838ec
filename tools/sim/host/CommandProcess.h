// SPDX-License-Identifier: MIT
#pragma once

#include "Signals.h"
#include "process/Process.h"
#include "process/Spawn.h"

#include <optional>
#include <string>
#include <vector>

namespace zviptv::sim {

/// The command beside the service, in the simulator's own group, so that the terminal's Ctrl-C reaches it.
class CommandProcess
{
public:
    using Clock = Signals::Clock;

    /// @throws std::system_error when it cannot be run
    explicit CommandProcess(std::vector<std::string> const& words) : m_process(Spawn({words, {}, {}})) {}

    /// Its exit status once it has ended.
    std::optional<int> Ended() { return m_process.Poll(); }

    /// Passes a request to end on. After SIGTERM or SIGHUP a command that stays is sent the other one, which
    /// a shell may heed instead, and at last killed.
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
