// SPDX-License-Identifier: MIT
#include "ChannelFixture.h"

using namespace zviptv::test;
using testing::ElementsAre;

namespace {

using Loss = std::pair<std::string, std::string>;

TEST_F(ChannelTest, LossIsLoggedStepByStep)
{
    TestChannel channel("IPGUTIL");
    ConnectAndSettle(channel);
    int losses = 0;
    channel.onDisconnect = [&](std::string const&, std::string const&) { ++losses; };
    m_partner.Disconnect();
    ASSERT_TRUE(RunUntil([&] { return losses > 0; }));
    std::string const name = m_partner.Name();
    std::string const function = "m_PartnerNameVanishedCallback";
    EXPECT_THAT(LoggedLines(m_log), ElementsAre(Info(function, "m_PartnerNameVanishedCallback name=" + name),
                                                Failed(function, "Connection lost with partner id=" + name)));
    EXPECT_EQ(losses, 1);
}

TEST_F(ChannelTest, HandlerReceivesTheLostNameAndTheChannelsName)
{
    TestChannel channel("BROADCASTDATA");
    ASSERT_EQ(channel->Connect(m_partner.Name()), 1);
    std::vector<Loss> losses;
    bool readyInHandler = true;
    int sentInHandler = 1;
    channel.onDisconnect = [&](std::string const& partner, std::string const& own) {
        losses.emplace_back(partner, own);
        readyInHandler = channel->IsConnectionReady();
        CMessageBuffer message;
        sentInHandler = channel->SendNotification(message);
    };
    m_partner.Disconnect();
    ASSERT_TRUE(RunUntil([&] { return !losses.empty(); }));
    EXPECT_EQ(losses, std::vector<Loss>({{m_partner.Name(), "BROADCASTDATA"}}));
    EXPECT_FALSE(readyInHandler);
    EXPECT_EQ(sentInHandler, 0);
    EXPECT_FALSE(channel->IsConnectionReady());
}

TEST_F(ChannelTest, WithoutHandlerLossOnlyLogsAndDisconnects)
{
    CProxyDBusHelper channel("IPGUTIL");
    ASSERT_EQ(channel.Connect(m_partner.Name()), 1);
    m_partner.Disconnect();
    EXPECT_TRUE(RunUntilLogged(ZV_LOG_ERROR, "Connection lost with partner id=" + m_partner.Name()));
    EXPECT_FALSE(channel.IsConnectionReady());
}

TEST_F(ChannelTest, ANullHandlerReplacesAnEarlierOne)
{
    TestChannel channel;
    int losses = 0;
    channel.onDisconnect = [&](std::string const&, std::string const&) { ++losses; };
    channel->SetDisconnectNotiCB(nullptr, nullptr);
    ASSERT_EQ(channel->Connect(m_partner.Name()), 1);
    m_partner.Disconnect();
    ASSERT_TRUE(RunUntil([&] { return !channel->IsConnectionReady(); }));
    RunPending();
    EXPECT_EQ(losses, 0);
}

TEST_F(ChannelTest, ANameWithoutAnOwnerIsLostAtOnce)
{
    TestChannel channel;
    std::vector<Loss> losses;
    channel.onDisconnect = [&](std::string const& partner, std::string const& own) {
        losses.emplace_back(partner, own);
    };
    EXPECT_EQ(channel->Connect("org.corvel.test.Nobody"), 1);
    EXPECT_TRUE(channel->IsConnectionReady());
    ASSERT_TRUE(RunUntil([&] { return !losses.empty(); }));
    EXPECT_EQ(losses, std::vector<Loss>({{"org.corvel.test.Nobody", "IPGUTIL"}}));
    EXPECT_FALSE(channel->IsConnectionReady());
}

TEST_F(ChannelTest, ANameThatPassesToAnotherOwnerIsLost)
{
    constexpr char name[] = "org.corvel.test.Partner";
    WirePeer successor;
    ASSERT_TRUE(m_partner.OwnName(name, WirePeer::AllowReplacement));
    TestChannel channel;
    std::vector<Loss> losses;
    channel.onDisconnect = [&](std::string const& partner, std::string const& own) {
        losses.emplace_back(partner, own);
    };
    ASSERT_EQ(channel->Connect(name), 1);
    ASSERT_TRUE(successor.OwnName(name, WirePeer::ReplaceExisting));
    ASSERT_TRUE(RunUntil([&] { return !losses.empty(); }));
    EXPECT_EQ(losses, std::vector<Loss>({{name, "IPGUTIL"}}));
    EXPECT_FALSE(channel->IsConnectionReady());
}

TEST_F(ChannelTest, LossOfAnotherNameChangesNothing)
{
    TestChannel channel;
    int losses = 0;
    channel.onDisconnect = [&](std::string const&, std::string const&) { ++losses; };
    ASSERT_EQ(channel->Connect(m_partner.Name()), 1);
    ASSERT_EQ(channel->Connect("undotted"),
              0); // the name is that of the channel's partner, but the watch is that of the former partner
    m_partner.Disconnect();
    ASSERT_TRUE(RunUntilLogged(ZV_LOG_INFO, "m_PartnerNameVanishedCallback name=" + m_partner.Name()));
    RunPending();
    EXPECT_EQ(losses, 0);
    EXPECT_TRUE(channel->IsConnectionReady());
    EXPECT_EQ(m_log.Messages(ZV_LOG_ERROR), std::vector<std::string>({"Error while g_dbus_proxy_new_sync"}));
}

TEST_F(ChannelTest, ALostChannelCanConnectAgain)
{
    TestChannel channel;
    int losses = 0;
    int notifications = 0;
    channel.onDisconnect = [&](std::string const&, std::string const&) { ++losses; };
    channel.onNotification = [&](CMessageBuffer&) { ++notifications; };
    for (int round = 1; round <= 3; ++round) {
        WirePeer partner;
        partner.SetHandler([](WireMessage const&) { return Entries({{"k", "v"}}); });
        ASSERT_EQ(channel->Connect(partner.Name()), 1);
        EXPECT_TRUE(channel->IsConnectionReady());
        CMessageBuffer message;
        CMessageBuffer reply;
        EXPECT_EQ(channel->SendMessage(message, reply, 0), 1);
        partner.Emit(channel.Target("SendSignal"), WireEntries());
        ASSERT_TRUE(RunUntil([&] { return notifications == round; }));
        partner.Disconnect();
        ASSERT_TRUE(RunUntil([&] { return losses == round; }));
        EXPECT_FALSE(channel->IsConnectionReady());
    }
}

TEST_F(ChannelTest, TheHandlerMayConnectAgain)
{
    WirePeer second;
    TestChannel channel;
    std::vector<Loss> losses;
    channel.onDisconnect = [&](std::string const& partner, std::string const& own) {
        losses.emplace_back(partner, own);
        if (losses.size() == 1) {
            EXPECT_EQ(channel->Connect(second.Name()), 1);
        }
    };
    ASSERT_EQ(channel->Connect(m_partner.Name()), 1);
    m_partner.Disconnect();
    ASSERT_TRUE(RunUntil([&] { return losses.size() == 1; }));
    EXPECT_TRUE(channel->IsConnectionReady());
    second.Disconnect();
    ASSERT_TRUE(RunUntil([&] { return losses.size() == 2; }));
    EXPECT_EQ(losses[1], Loss(second.Name(), "IPGUTIL"));
}

TEST_F(ChannelTest, AfterLossNoSignalArrivesButCallsAreAnswered)
{
    TestChannel channel;
    int notifications = 0;
    int calls = 0;
    channel.onNotification = [&](CMessageBuffer&) { ++notifications; };
    channel.onMessage = [&](CMessageBuffer&) {
        ++calls;
        return CMessageBuffer();
    };
    ASSERT_TRUE(m_partner.OwnName("org.corvel.test.Partner"));
    ASSERT_EQ(channel->Connect("org.corvel.test.Partner"), 1);
    ASSERT_TRUE(m_partner.ReleaseName("org.corvel.test.Partner"));
    ASSERT_TRUE(RunUntil([&] { return !channel->IsConnectionReady(); }));
    ASSERT_TRUE(m_partner.OwnName("org.corvel.test.Partner"));
    m_partner.Emit(channel.Target("SendSignal"), WireEntries());
    m_partner.CallWithoutReply(channel.Target("Send"), WireEntries());
    ASSERT_TRUE(RunUntil([&] { return calls == 1; }));
    EXPECT_EQ(notifications, 0);
    CMessageBuffer message;
    EXPECT_EQ(channel->SendNotification(message), 0);
    EXPECT_TRUE(m_log.Has(ZV_LOG_ERROR, "Connection not set."));
}

TEST_F(ChannelTest, DestructionReportsNoLoss)
{
    int losses = 0;
    {
        TestChannel channel;
        channel.onDisconnect = [&](std::string const&, std::string const&) { ++losses; };
        ASSERT_EQ(channel->Connect(m_partner.Name()), 1);
        RunPending();
    }
    m_partner.Disconnect();
    RunPending();
    EXPECT_EQ(losses, 0);
}

} // namespace
