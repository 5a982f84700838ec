// SPDX-License-Identifier: MIT
#pragma once

#include "ChildProcess.h"

#include <string>
#include <vector>

namespace zviptv::test {

/// A participant of the bus in a separate process; see PeerModes.h for its modes.
class PeerProcess
{
public:
    /// Returns when it is on the bus. Throws std::runtime_error if it does not get there.
    explicit PeerProcess(std::vector<std::string> const& mode = {"partner"});

    std::string const& Name() const { return m_name; }

    /// Sends SIGKILL. Returns when the process has ended.
    void Kill();
    /// Sends SIGSTOP. Returns when the process has stopped.
    void Stop();
    void Continue();

    /// The number of messages that a flood reports as sent.
    std::size_t Sent() const;
    /// Whether a stranger has finished.
    bool WaitForDone() const;

private:
    mutable ChildProcess m_process;
    std::string m_name;
};

} // namespace zviptv::test
