// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

namespace zviptv::test {

/// The sockets of the system's log, bound by this very process in a mount namespace of its own, so that it
/// reads what it logs itself.
class LogSockets
{
public:
    /// Throws std::runtime_error with the reason where the system permits no namespace.
    explicit LogSockets(bool withJournal);
    ~LogSockets();
    LogSockets(LogSockets const&) = delete;
    LogSockets& operator=(LogSockets const&) = delete;

    /// The datagrams that have come to /dev/log.
    std::vector<std::string> TakeSyslog();
    /// The entries that have come to the journal; what came as a sealed file instead of a datagram is read
    /// from it.
    std::vector<std::string> TakeJournal();

    /// The journal ends, and with it its socket.
    void EndJournal();
    /// A restarted journal, with another socket.
    void RenewJournal();

private:
    int m_syslog = -1;
    int m_journal = -1;
};

} // namespace zviptv::test
