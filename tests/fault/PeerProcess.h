// SPDX-License-Identifier: MIT
#pragma once

#include "ChildProcess.h"

#include <string>
#include <vector>

namespace zviptv::test {

/// A participant of the bus in a process of its own; see fault_peer.cpp for what it can be.
class PeerProcess
{
public:
    /// Returns when it is on the bus; throws std::runtime_error when it does not get there.
    explicit PeerProcess(std::vector<std::string> const& mode = {"partner"});

    std::string const& Name() const { return m_name; }

    /// SIGKILL; returns when the process is no more.
    void Kill();
    /// SIGSTOP; returns when the process stands still.
    void Stop();
    void Continue();

    /// How many messages a flood says that it has sent.
    std::size_t Sent() const;
    /// Whether a stranger is through.
    bool WaitForDone() const;

private:
    mutable ChildProcess m_process;
    std::string m_name;
};

} // namespace zviptv::test
