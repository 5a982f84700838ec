// SPDX-License-Identifier: MIT
#pragma once

#include <sys/types.h>

#include <optional>

namespace zviptv {

/// A child process. Killed and reaped by the destructor.
class Process
{
public:
    /// The status of a program that cannot be run, as in a shell.
    static constexpr int CannotRun = 127;

    /// Takes over a process that Spawn() has started.
    explicit Process(pid_t pid) : m_pid(pid) {}

    Process(Process&& other) noexcept;
    Process& operator=(Process&& other) noexcept;
    ~Process();

    pid_t Pid() const { return m_pid; }

    /// Has no effect after the process has ended.
    void Signal(int number);

    /// Waits for the end. Returns the exit status, or 128 plus the number of the signal that ended the
    /// process, as in a shell.
    int Wait();

    /// The status, if the process has already ended.
    std::optional<int> Poll();

private:
    pid_t m_pid;
    std::optional<int> m_status;
};

} // namespace zviptv
