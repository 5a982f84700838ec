// SPDX-License-Identifier: MIT
#pragma once

#include "process/FileHandle.h"

#include <sys/types.h>

#include <array>
#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <optional>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

namespace zviptv::test {

/// How a process ended.
struct ExitStatus
{
    /// Exit code, or -1 if a signal ended it.
    int code = -1;
    /// The signal that ended it, else 0.
    int signal = 0;
};

bool operator==(ExitStatus const& left, ExitStatus const& right);
void PrintTo(ExitStatus const& status, std::ostream* out);

/// A running program with its standard streams caught. It is killed and reaped by the destructor, and
/// dies with the test process. All methods may be called from any thread.
class ChildProcess
{
public:
    /// `command` is the program (searched in PATH if it has no slash) and its arguments;
    /// `environment` is added to the test's own. Throws std::system_error if it cannot be run.
    explicit ChildProcess(std::vector<std::string> const& command,
                          std::map<std::string, std::string> const& environment = {});
    ~ChildProcess();
    ChildProcess(ChildProcess const&) = delete;
    ChildProcess& operator=(ChildProcess const&) = delete;

    pid_t Pid() const { return m_pid; }
    /// Empty if the process still runs after `timeout`. When it has ended, Output() and Errors() are
    /// complete (for what the process itself wrote).
    std::optional<ExitStatus> Wait(std::chrono::milliseconds timeout);
    /// No effect once the process has ended.
    void Signal(int number);

    /// The text so far in standard output and standard error.
    std::string Output() const { return Text(0); }
    std::string Errors() const { return Text(1); }
    /// True when the text is in the output (or the errors); false when the process has ended, or the
    /// time is over, without it.
    bool WaitForOutput(std::string const& text, std::chrono::milliseconds timeout)
    {
        return WaitForText(0, text, timeout);
    }
    bool WaitForErrors(std::string const& text, std::chrono::milliseconds timeout)
    {
        return WaitForText(1, text, timeout);
    }

    /// Writes to standard input; false if the process does not read it any more.
    bool WriteInput(std::string const& text);
    /// End of file for the process.
    void CloseInput();

private:
    struct Stream
    {
        FileHandle pipe;
        std::string text;
    };

    std::string Text(std::size_t stream) const;
    bool WaitForText(std::size_t stream, std::string const& text, std::chrono::milliseconds timeout);
    void AwaitEnd() const;
    void Watch();
    static void Drain(Stream& stream);
    ExitStatus Reap() const;

    pid_t m_pid = 0;
    FileHandle m_ended;
    std::array<Stream, 2> m_streams;

    std::mutex m_inputMutex;
    FileHandle m_input;

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::optional<ExitStatus> m_status;
    std::thread m_waiter;
    std::thread m_reader;
};

} // namespace zviptv::test
