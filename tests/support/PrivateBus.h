// SPDX-License-Identifier: MIT
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

namespace zviptv::test {

struct BusOptions
{
    /// XML put at the end of <busconfig>: limits, policies. Later policies win over earlier ones.
    std::string extraConfig;
    /// A configuration file to start with. Its address and its user are ignored.
    std::string baseConfig;
    /// Allows everybody to own, send and receive everything. Without it, only extraConfig allows
    /// anything, as on a stock system bus.
    bool openPolicy = true;
    /// Point DBUS_SYSTEM_BUS_ADDRESS at this bus; the destructor restores the former value.
    bool setEnvironment = true;
    /// Looked up in PATH.
    std::string program = "dbus-daemon";
};

/// A private system bus: a dbus-daemon of type "system" with a separate configuration and
/// socket in a temporary directory. The constructor returns when the bus accepts connections
/// and throws std::runtime_error when it cannot be started. The daemon dies with the test process,
/// also when that is killed.
///
/// Not thread-safe. Changes the environment in constructor and destructor, so create and destroy it
/// while no other thread reads the environment.
class PrivateBus
{
public:
    explicit PrivateBus(BusOptions options = {});
    ~PrivateBus();
    PrivateBus(PrivateBus const&) = delete;
    PrivateBus& operator=(PrivateBus const&) = delete;

    /// The same for the whole life of the object, across Restart().
    std::string const& Address() const { return m_address; }
    /// The temporary directory; files put here are removed with the bus.
    std::string const& Directory() const { return m_directory; }
    /// Process id of the daemon, 0 while it is dead.
    pid_t Pid() const { return m_pid; }

    /// The standard error of the daemon.
    std::string Log() const;

    /// SIGKILL and reap. Connections are closed when this returns. No effect on a dead bus.
    void Kill();
    /// Kill(), then a new daemon on the same address.
    void Restart();
    /// Sends SIGSTOP. Returns when the daemon has stopped.
    void Stop();
    /// Sends SIGCONT. Returns when the daemon runs again.
    void Continue();

private:
    void RemoveDirectory() const;
    void WriteConfig() const;
    void Start();
    std::string LogFile() const;

    BusOptions m_options;
    std::string m_directory;
    std::string m_address;
    std::optional<std::string> m_formerAddress;
    pid_t m_pid = 0;
};

} // namespace zviptv::test
