// SPDX-License-Identifier: MIT
#include "BusMonitor.h"
#include "Bytes.h"
#include "PrivateBus.h"
#include "WirePeer.h"

#include <gtest/gtest.h>

#include <stdexcept>

using namespace zviptv::test;
using namespace std::chrono_literals;

TEST(BusMonitorTest, SeesCallsRepliesAndSignalsOfOthers)
{
    PrivateBus const bus;
    WirePeer one;
    WirePeer two;
    BusMonitor monitor(bus.Address());
    two.SetHandler([](WireMessage const&) { return Entries({{"answer", "42"}}); });
    one.Call({two.Name(), "/p", "a.b", "Ask"}, Entries({{"question", "?"}}));
    two.Emit({one.Name(), "/p", "a.b", "Tell"});

    auto const call = monitor.WaitFor(IsCall("Ask"));
    ASSERT_TRUE(call);
    EXPECT_EQ(call->sender, one.Name());
    EXPECT_EQ(call->Value("question"), "?");
    auto const reply = monitor.WaitFor([&](WireMessage const& message) {
        return message.kind == WireKind::Reply && message.replySerial == call->serial &&
               message.sender == two.Name();
    });
    ASSERT_TRUE(reply);
    EXPECT_EQ(reply->Value("answer"), "42");
    EXPECT_TRUE(monitor.WaitFor(IsSignal("Tell")));
}

TEST(BusMonitorTest, SeesMatchRulesAndNameRequests)
{
    PrivateBus const bus;
    WirePeer peer;
    BusMonitor monitor(bus.Address());
    peer.AddMatch("type='signal',interface='a.b'");
    peer.OwnName("org.corvel.name");
    auto const match = monitor.WaitFor(IsCall("AddMatch"));
    ASSERT_TRUE(match);
    EXPECT_EQ(match->strings, std::vector<std::string>{"type='signal',interface='a.b'"});
    auto const request = monitor.WaitFor(IsCall("RequestName"));
    ASSERT_TRUE(request);
    EXPECT_EQ(request->signature, "su");
    EXPECT_EQ(request->strings, std::vector<std::string>{"org.corvel.name"});
}

TEST(BusMonitorTest, IgnoresPingsToOthers)
{
    PrivateBus const bus;
    WirePeer one;
    WirePeer two;
    BusMonitor monitor(bus.Address());
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(one.Call({two.Name(), "/", "org.freedesktop.DBus.Peer", "Ping"}).kind, WireKind::Reply);
    }
    one.Call({two.Name(), "/p", "a.b", "Unknown"});
    EXPECT_TRUE(monitor.Seen().WaitForCount(IsCall("Ping"), 3));
    EXPECT_TRUE(monitor.WaitFor(IsCall("Unknown")));
    EXPECT_EQ(monitor.Seen().Count(IsSignal("Disconnected")), 0U);
}

TEST(BusMonitorTest, RulesSelectMessages)
{
    PrivateBus const bus;
    WirePeer one;
    WirePeer two;
    BusMonitor monitor(bus.Address(), {"type='signal',member='Wanted'"});
    one.Emit({two.Name(), "/p", "a.b", "Other"});
    one.Emit({two.Name(), "/p", "a.b", "Wanted"});
    EXPECT_TRUE(monitor.WaitFor(IsSignal("Wanted")));
    EXPECT_EQ(monitor.Seen().Count(IsSignal("Other")), 0U);
}

TEST(BusMonitorTest, ThrowsForABadRule)
{
    PrivateBus const bus;
    EXPECT_THROW(BusMonitor(bus.Address(), {"not a rule"}), std::runtime_error);
}
