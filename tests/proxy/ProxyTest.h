// SPDX-License-Identifier: MIT
#pragma once

#include "Bytes.h"
#include "FakeService.h"
#include "LogCapture.h"
#include "LoopRunner.h"
#include "PrivateBus.h"

#include <zviptv/IPTVServiceAPI.h>

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace zviptv::test {

/// Priorities and messages of log lines.
using Lines = std::vector<std::pair<EZVLogPriority, std::string>>;

/// The lines that `origin`, "PlayerControlProxy.cpp: MuteAudio" for example, wrote, in order.
inline Lines LinesOf(LogCapture const& log, std::string const& origin)
{
    Lines lines;
    for (LogLine const& line : log.Lines()) {
        if (line.Origin() == origin) {
            lines.emplace_back(line.priority, line.Message());
        }
    }
    return lines;
}

/// A test on a private bus on which no service runs yet.
class ProxyTest : public testing::Test
{
protected:
    static void SetUpTestSuite() { s_bus = std::make_unique<PrivateBus>(); }
    static void TearDownTestSuite() { s_bus.reset(); }

    void TearDown() override { DestroyAll(); }

    static void DestroyAll()
    {
        CIPTVServiceAPI::DestroyPlayerControl();
        CIPTVServiceAPI::DestroyBroadcastData();
        CIPTVServiceAPI::DestroyIPTVDataSubscriber();
        CIPTVServiceAPI::DestroyIPGUtil();
    }

    static IPlayerControl* CreatePlayer(int id = 0, IPTVProfile profile = IPTV_PROFILE_DEFAULT)
    {
        IPlayerControl* player = nullptr;
        EXPECT_EQ(CIPTVServiceAPI::CreatePlayerControl(profile, id, &player), 0);
        return player;
    }

    static IBroadcastData* CreateBroadcast(int id = 0, IPTVProfile profile = IPTV_PROFILE_DEFAULT)
    {
        IBroadcastData* broadcast = nullptr;
        EXPECT_EQ(CIPTVServiceAPI::CreateBroadcastData(profile, id, &broadcast), 0);
        return broadcast;
    }

    static IIPTVDataSubscriber* CreateSubscriber(int id = 0, IPTVProfile profile = IPTV_PROFILE_DEFAULT)
    {
        IIPTVDataSubscriber* subscriber = nullptr;
        EXPECT_EQ(CIPTVServiceAPI::CreateIPTVDataSubscriber(profile, id, &subscriber), 0);
        return subscriber;
    }

    static IIPGUtil* CreateGuide()
    {
        IIPGUtil* guide = nullptr;
        EXPECT_EQ(CIPTVServiceAPI::CreateIPGUtil(&guide), 0);
        return guide;
    }

    PrivateBus& m_bus = *s_bus;
    LogCapture m_log;

private:
    /// GIO has one connection to the system bus in a process, so the tests of a process share a bus.
    static inline std::unique_ptr<PrivateBus> s_bus;
};

/// A test with a service running.
class ServiceTest : public ProxyTest
{
protected:
    /// Makes the service call the client's channel, while the calling thread iterates the context. Messages
    /// keep their order: after the answer, all earlier messages of the service have been delivered.
    WireMessage CallClient(std::string const& type, WireEntries const& entries = {})
    {
        auto answer = std::async(std::launch::async, [&] {
            return m_service.CallClient(m_service.ClientOf(type), type, entries);
        });
        RunUntil([&] { return answer.wait_for(std::chrono::seconds(0)) == std::future_status::ready; });
        return answer.get();
    }

    FakeService m_service;
};

} // namespace zviptv::test
