// SPDX-License-Identifier: MIT
#pragma once

#include "Application.h"

#include "PrivateBus.h"
#include "Processes.h"

#include <gmock/gmock.h>

#include <optional>
#include <string>
#include <vector>

namespace zviptv::test {

constexpr std::chrono::seconds Patience{20};
constexpr std::uint64_t PtsSecond = 90'000;

constexpr char BroadcastWord[] = "BROADCASTDATA";
constexpr char GuideWord[] = "IPGUTIL";
constexpr char SubscriberWord[] = "IPTVDATASUBSCRIBER";

/// The simulator in a separate process, on the test's bus.
class Simulator : public testing::Test
{
protected:
    ChildProcess& Start(std::vector<std::string> options)
    {
        std::vector<std::string> command{ZVIPTV_SIM, "--bus", "system"};
        command.insert(command.end(), options.begin(), options.end());
        m_simulator.emplace(command);
        EXPECT_TRUE(m_watcher.WaitForOwner("org.corvel.zviptvapi.dbushelper", true));
        return *m_simulator;
    }

    /// Of the process that is on the bus.
    pid_t ServicePid() const { return OnlyChildOf(m_simulator->Pid()); }

    void StartSample() { Start({"--ts", ZVIPTV_SAMPLE_FILE, "--loop"}); }

    PrivateBus m_bus;
    WirePeer m_watcher;
    std::optional<ChildProcess> m_simulator;
};

/// The text of a reply's value, of a reply in the agreed form.
inline std::string Number(WireMessage const& reply, std::string const& key)
{
    EXPECT_EQ(reply.kind, WireKind::Reply) << testing::PrintToString(reply);
    EXPECT_TRUE(reply.HasOnlyByteArrays());
    return reply.Value(key);
}

} // namespace zviptv::test
