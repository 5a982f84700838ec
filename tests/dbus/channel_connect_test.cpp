// SPDX-License-Identifier: MIT
#include "BusMonitor.h"
#include "ChannelFixture.h"

#include <algorithm>

using namespace zviptv::test;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

TEST_F(ChannelTest, ConnectLogsEachStep)
{
    CProxyDBusHelper channel("PLAYERCONTROL");
    m_log.Clear();
    EXPECT_EQ(channel.Connect(m_partner.Name()), 1);
    std::vector<LoggedLine> lines = LoggedLines(m_log);
    ASSERT_EQ(lines.size(), 5U);
    std::string const partner = m_partner.Name();
    std::string const path = "/org/corvel/zviptvapi/DbusCommunication/PLAYERCONTROL";
    std::string const function = "m_CreatePartnerProxy";
    EXPECT_EQ(lines[0], Info("Connect", ""));
    EXPECT_EQ(lines[1], Info(function, "Monitor partner [" + partner + "] connection "));
    EXPECT_EQ(lines[2].priority, ZV_LOG_DEBUG);
    EXPECT_EQ(lines[2].function, function);
    std::string const dot = "\\.";
    EXPECT_THAT(
        lines[2].message,
        testing::MatchesRegex("Create proxy\\[0x[0-9a-f]+\\] and watch\\[[1-9][0-9]*\\] for .* on obj .*"));
    EXPECT_THAT(lines[2].message, testing::EndsWith(" for " + partner + " on obj " + path));
    EXPECT_EQ(lines[3], Info(function, "Subscribe for signals from " + partner + " on object " + path + "."));
    EXPECT_EQ(lines[4], Info("Connect", "handshake done"));
}

TEST_F(ChannelTest, ConnectMakesTheChannelReady)
{
    CProxyDBusHelper channel("IPGUTIL");
    EXPECT_FALSE(channel.IsConnectionReady());
    EXPECT_EQ(channel.Connect(m_partner.Name()), 1);
    EXPECT_TRUE(channel.IsConnectionReady());
    RunPending();
    EXPECT_TRUE(channel.IsConnectionReady());
}

TEST_F(ChannelTest, ConnectSendsNothingToThePartner)
{
    CProxyDBusHelper channel("IPGUTIL");
    ASSERT_EQ(channel.Connect(m_partner.Name()), 1);
    CMessageBuffer message;
    ASSERT_EQ(channel.SendNotification(message), 1);
    ASSERT_TRUE(m_partner.WaitFor(IsSignal("SendSignal")));
    auto const isFromTheChannel = [&](WireMessage const& seen) {
        return seen.sender == channel.GetPublicName();
    };
    EXPECT_EQ(m_partner.Received().Count(isFromTheChannel), 1U);
}

TEST_F(ChannelTest, APartnerMayHaveAWellKnownName)
{
    ASSERT_TRUE(m_partner.OwnName("org.corvel.test.Partner"));
    TestChannel channel;
    ASSERT_EQ(channel->Connect("org.corvel.test.Partner"), 1);
    int notifications = 0;
    channel.onNotification = [&](CMessageBuffer&) { ++notifications; };
    m_partner.Emit(channel.Target("SendSignal"), WireEntries());
    EXPECT_TRUE(RunUntil([&] { return notifications == 1; }));
    m_partner.ReleaseName("org.corvel.test.Partner");
    EXPECT_TRUE(RunUntilLogged(ZV_LOG_ERROR, "Connection lost with partner id=org.corvel.test.Partner"));
}

class BadPartnerName : public ChannelTest, public testing::WithParamInterface<std::string>
{
};

TEST_P(BadPartnerName, IsRefused)
{
    CProxyDBusHelper channel("IPGUTIL");
    BusMonitor monitor(m_bus.Address());
    m_log.Clear();
    EXPECT_EQ(channel.Connect(GetParam()), 0);
    EXPECT_THAT(LoggedLines(m_log),
                ElementsAre(Info("Connect", ""),
                            Info("m_CreatePartnerProxy", "Monitor partner [" + GetParam() + "] connection "),
                            Failed("m_CreatePartnerProxy", "Error while g_dbus_proxy_new_sync")));
    EXPECT_FALSE(channel.IsConnectionReady());
    CMessageBuffer message;
    CMessageBuffer reply;
    EXPECT_EQ(channel.SendMessage(message, reply, 0), 0);
    EXPECT_EQ(channel.SendMessage(message, reply, 1), 0);
    EXPECT_EQ(channel.SendNotification(message), 0);
    EXPECT_EQ(channel.Connect(m_partner.Name()), 1) << "a refused name does no harm";
    ASSERT_TRUE(monitor.WaitFor(IsCall("AddMatch")));
    auto const namesIt = [](WireMessage const& seen) {
        return seen.member == "AddMatch" &&
               seen.strings.at(0).find("arg0='" + GetParam() + "'") != std::string::npos;
    };
    EXPECT_EQ(monitor.Seen().Count(namesIt), 0U);
}

INSTANTIATE_TEST_SUITE_P(Channel, BadPartnerName,
                         testing::Values("", "undotted", std::string(252, 'a') + ".bcd",
                                         "org.corvel.\xff\xfe", ":1.", "org.corvel..x", "org.corvel.a b",
                                         "50%s%n.x", ".org.corvel"));

TEST_F(ChannelTest, ALongNameWithinTheLimitIsAccepted)
{
    CProxyDBusHelper channel("IPGUTIL");
    std::string const longest = std::string(251, 'a') + ".bcd";
    ASSERT_EQ(longest.size(), 255U);
    EXPECT_EQ(channel.Connect(longest), 1);
    EXPECT_TRUE(RunUntilLogged(ZV_LOG_ERROR, "Connection lost with partner id=" + longest));
}

TEST_F(ChannelTest, ARefusedNameLeavesAnEarlierConnectionReady)
{
    m_partner.SetHandler([](WireMessage const&) { return Entries({{"k", "v"}}); });
    CProxyDBusHelper channel("IPGUTIL");
    ASSERT_EQ(channel.Connect(m_partner.Name()), 1);
    EXPECT_EQ(channel.Connect(""), 0);
    EXPECT_TRUE(channel.IsConnectionReady());
    CMessageBuffer message;
    CMessageBuffer reply;
    EXPECT_EQ(channel.SendMessage(message, reply, 0), 1);
    EXPECT_EQ(reply.GetValue("k"), "v");
}

TEST_F(ChannelTest, ANotificationToARefusedNameIsNotBroadcast)
{
    BusMonitor monitor(m_bus.Address());
    CProxyDBusHelper channel("IPGUTIL");
    ASSERT_EQ(channel.Connect(m_partner.Name()), 1);
    for (std::string const& name : {std::string(), std::string("undotted")}) {
        EXPECT_EQ(channel.Connect(name), 0);
        m_log.Clear();
        CMessageBuffer message;
        EXPECT_EQ(channel.SendNotification(message), 0) << '"' << name << '"';
        EXPECT_THAT(m_log.Messages(ZV_LOG_ERROR),
                    ElementsAre(testing::StartsWith("Error while sending signal [")));
    }
    CMessageBuffer message;
    CMessageBuffer reply;
    channel.SendMessage(message, reply, 1);
    ASSERT_TRUE(monitor.WaitFor(IsCall("Send")));
    EXPECT_EQ(monitor.Seen().Count(IsSignal("SendSignal")), 0U);
}

std::vector<std::string> RulesOf(BusMonitor& monitor, char const* member)
{
    std::vector<std::string> rules;
    for (WireMessage const& seen : monitor.Seen().All()) {
        if (seen.kind == WireKind::Call && seen.member == member) {
            rules.push_back(seen.strings.at(0));
        }
    }
    std::sort(rules.begin(), rules.end());
    return rules;
}

TEST_F(ChannelTest, ConnectWatchesTheNameAndSubscribesToItsSignals)
{
    CProxyDBusHelper channel("IPGUTIL");
    BusMonitor monitor(m_bus.Address());
    ASSERT_EQ(channel.Connect(m_partner.Name()), 1);
    CMessageBuffer message;
    ASSERT_EQ(channel.SendNotification(message), 1);
    ASSERT_TRUE(monitor.WaitFor(IsSignal("SendSignal")));
    std::vector<std::string> const rules = RulesOf(monitor, "AddMatch");
    std::string const sender = "sender='" + m_partner.Name() + "'";
    EXPECT_THAT(rules, testing::Contains(testing::AllOf(HasSubstr("member='NameOwnerChanged'"),
                                                        HasSubstr("arg0='" + m_partner.Name() + "'"))));
    EXPECT_THAT(rules, testing::Contains(testing::AllOf(
                           HasSubstr("type='signal'"), HasSubstr(sender),
                           HasSubstr("interface='org.corvel.zviptvapi.DbusCommunication'"),
                           HasSubstr("path='/org/corvel/zviptvapi/DbusCommunication/IPGUTIL'"),
                           testing::Not(HasSubstr("member=")), testing::Not(HasSubstr("arg0")))));
    EXPECT_EQ(monitor.Seen().Count(IsCall("GetAll")), 0U) << "properties are not asked for";
}

/// The subscriptions since the start of the monitor.
bool AllRulesAreRemoved(BusMonitor& monitor)
{
    std::vector<std::string> const added = RulesOf(monitor, "AddMatch");
    return !added.empty() && RulesOf(monitor, "RemoveMatch") == added;
}

TEST_F(ChannelTest, PartnerLossReleasesWatchProxyAndSubscription)
{
    CProxyDBusHelper channel("IPGUTIL");
    BusMonitor monitor(m_bus.Address());
    ASSERT_EQ(channel.Connect(m_partner.Name()), 1);
    m_partner.Disconnect();
    ASSERT_TRUE(RunUntil([&] { return !channel.IsConnectionReady(); }));
    EXPECT_TRUE(RunUntil([&] { return AllRulesAreRemoved(monitor); }));
}

TEST_F(ChannelTest, DestructionReleasesWatchProxyAndSubscription)
{
    CProxyDBusHelper other("PLAYERCONTROL"); // keeps the connection
    BusMonitor monitor(m_bus.Address());
    {
        CProxyDBusHelper channel("IPGUTIL");
        ASSERT_EQ(channel.Connect(m_partner.Name()), 1);
    }
    EXPECT_TRUE(RunUntil([&] { return AllRulesAreRemoved(monitor); }));
}

TEST_F(ChannelTest, AFailedConnectReleasesTheWatch)
{
    CProxyDBusHelper channel("no-object-path");
    BusMonitor monitor(m_bus.Address());
    ASSERT_EQ(channel.Connect(m_partner.Name()), 0);
    EXPECT_TRUE(RunUntil([&] { return AllRulesAreRemoved(monitor); }));
}

} // namespace
