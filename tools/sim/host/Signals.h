// SPDX-License-Identifier: MIT
#pragma once

#include "input/LoopSource.h"
#include "process/FileHandle.h"

#include <chrono>

namespace zviptv::sim {

/// The signals of the supervisor: SIGINT, SIGTERM, SIGHUP and SIGCHLD. From now on they are blocked in this
/// process, and received one by one.
class Signals
{
public:
    using Clock = std::chrono::steady_clock;
    static constexpr Clock::time_point Never = Clock::time_point::max();

    struct Signal
    {
        int number = 0;
        bool fromProcess = false; ///< sent with kill(), not by the terminal or the kernel

        bool AsksToEnd() const;
    };

    /// @throws std::system_error
    Signals();

    /// Iterates the main context once, and returns the signal that has arrived. Its number is 0 if none has
    /// arrived before `deadline` or before another event was dispatched.
    Signal Next(Clock::time_point deadline) const;

private:
    FileHandle m_signals;
    FileHandle m_timer;
    LoopSource m_onSignal;
    LoopSource m_onTime;
};

} // namespace zviptv::sim
