// SPDX-License-Identifier: MIT
#pragma once

#include "SimulatorTest.h"

namespace zviptv::test {

/// The simulator with faults; asks player control.
class FaultInjection : public Simulator
{
protected:
    void Begin(std::vector<std::string> const& faults)
    {
        std::vector<std::string> options{"--ts", ZVIPTV_SAMPLE_FILE, "--loop"};
        for (std::string const& fault : faults) {
            options.insert(options.end(), {"--fault", fault});
        }
        Start(options);
        m_application.Announce(Type);
    }

    WireMessage Ask(std::string const& function, std::string const& type = Type)
    {
        return m_application.Ask(type,
                                 {{"functionname", function}, {"onoff", "1"}, {"on", "1"}, {"index", "1"}});
    }

    /// For answers that do not come: waits a short time only.
    WireMessage AskWithShortTimeout(std::string const& function)
    {
        return m_application.Peer().Call(
            {m_watcher.GetNameOwner("org.corvel.zviptvapi.dbushelper"), ChannelPath(Type),
             "org.corvel.zviptvapi.DbusCommunication", "Send"},
            Entries({{"functionname", function}, {"onoff", "1"}, {"index", "1"}}),
            CallOptions{std::chrono::milliseconds(300), false});
    }

    static constexpr char Type[] = "PLAYERCONTROL";
    static constexpr char InjectedError[] = "org.corvel.zviptvapi.Error.Injected";
    static constexpr char NoReply[] = "org.freedesktop.DBus.Error.NoReply";

    Application m_application;
};

} // namespace zviptv::test
