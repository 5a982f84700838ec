// SPDX-License-Identifier: MIT
#pragma once

#include <sys/types.h>

#include <optional>

namespace zviptv {

/// A child process. Killed and reaped by the destructor.
class Process
{
public:
    /// The status of a program that cannot be run, as a shell has it.
    static constexpr int CannotRun = 127;

    /// Takes over a process that Spawn() has started.
    explicit Process(pid_t pid) : m_pid(pid) {}

    Process(Process&& other) noexcept;
    Process& operator=(Process&& other) noexcept;
    ~Process();

    pid_t Pid() const { return m_pid; }

    /// No effect once it has ended.
    void Signal(int number);

    /// Waits for the end. The exit status, or 128 plus the number of the signal that ended it, as a shell has
    /// it.
    int Wait();

    /// The same when it has ended already.
    std::optional<int> Poll();

private:
    pid_t m_pid;
    std::optional<int> m_status;
};

} // namespace zviptv
