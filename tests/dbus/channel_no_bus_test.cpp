// SPDX-License-Identifier: MIT
#include "ChannelFixture.h"
#include "FailureText.h"
#include "GLibObjects.h"

#include <zviptv/ConnectionHelperDBusClient.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <thread>

using namespace zviptv::test;
using testing::ElementsAre;

namespace {

/// No bus is at the address in the environment.
class ChannelWithoutBus : public testing::Test
{
protected:
    ChannelWithoutBus() { setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus", 1); }

    LogCapture m_log;
};

/// "[code] message" of the error that GIO reports when it cannot connect.
std::string ConnectFailure()
{
    GError* error = nullptr;
    EXPECT_EQ(g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, &error), nullptr);
    std::string const text = "[" + std::to_string(error->code) + "] " + error->message;
    g_error_free(error);
    return text;
}

TEST_F(ChannelWithoutBus, IsConstructedAndReportsWhy)
{
    CProxyDBusHelper channel("IPGUTIL");
    std::string const function = "CProxyDBusHelper";
    EXPECT_THAT(
        LoggedLines(m_log),
        ElementsAre(Info(function, "Constructor - IPGUTIL"), Info(function, "XML parsed"),
                    Info(function, "Getting connection to DBUS"),
                    Failed(function, "Error while connecting to system bus " + ConnectFailure() + "\n")));
}

constexpr char StartBus[] =
    "Could not connect: No such file or directory; start the bus, or set "
    "DBUS_SYSTEM_BUS_ADDRESS to one that runs, then destroy the object and create it again";

TEST_F(ChannelWithoutBus, FailureContainsTheConstructor)
{
    CProxyDBusHelper const channel("IPGUTIL");
    EXPECT_EQ(LastFailure(), std::string("no bus | CProxyDBusHelper |  |  | ") + StartBus);
    CConnectionHelperDBusClient const client;
    EXPECT_EQ(LastFailure(), std::string("no bus | CConnectionHelperDBusClient |  |  | ") + StartBus);
}

TEST_F(ChannelTest, ConstructorThatSucceedsEndsAnOldFailure)
{
    TestChannel channel;
    EXPECT_EQ(LastFailure(), NoFailure("CProxyDBusHelper"));
    EXPECT_EQ(channel->Connect("no bus name"), 0);
    CConnectionHelperDBusClient const client;
    EXPECT_EQ(LastFailure(), NoFailure("CConnectionHelperDBusClient"));
}

TEST_F(ChannelWithoutBus, FailureOfASendIsTheMissingBus)
{
    std::string const reason =
        " |  |  | the channel has no connection to the bus; create it again when the bus runs";
    CProxyDBusHelper channel("IPGUTIL");
    CMessageBuffer message;
    CMessageBuffer reply;
    for (int const async : {0, 1}) {
        channel.SendMessage(message, reply, async);
        EXPECT_EQ(LastFailure(), "no bus | SendMessage" + reason);
    }
    channel.SendNotification(message);
    EXPECT_EQ(LastFailure(), "no bus | SendNotification" + reason);
}

TEST_F(ChannelWithoutBus, EverythingFailsWithoutALog)
{
    {
        CProxyDBusHelper channel("IPGUTIL");
        EXPECT_EQ(channel.GetPublicName(), "");
        EXPECT_FALSE(channel.IsConnectionReady());
        m_log.Clear();
        EXPECT_EQ(channel.Connect(":1.1"), 0);
        EXPECT_THAT(LoggedLines(m_log),
                    ElementsAre(Info("Connect", ""),
                                Info("m_CreatePartnerProxy", "Monitor partner [:1.1] connection "),
                                Failed("m_CreatePartnerProxy", "Error while g_dbus_proxy_new_sync")));
        EXPECT_FALSE(channel.IsConnectionReady());
        m_log.Clear();
        CMessageBuffer message;
        CMessageBuffer reply;
        EXPECT_EQ(channel.SendMessage(message, reply, 0), 0);
        EXPECT_EQ(channel.SendMessage(message, reply, 1), 0);
        EXPECT_EQ(channel.SendNotification(message), 0);
        EXPECT_THAT(LoggedLines(m_log), ElementsAre(Failed("m_SendSyncMessage", "Connection not set."),
                                                    Failed("m_SendAsyncMessage", "Connection not set."),
                                                    Failed("SendNotification", "Connection not set.")));
        m_log.Clear();
    }
    EXPECT_THAT(LoggedLines(m_log), ElementsAre(Failed("~CProxyDBusHelper", "")));
    RunPending();
}

/// A bus that dies while the process continues.
class ChannelOfADyingBus : public ChannelTest
{
protected:
    void KillBus()
    {
        m_bus.Kill();
        ASSERT_TRUE(RunUntil([this] { return g_dbus_connection_is_closed(m_connection.get()) != FALSE; }));
    }

    ConnectionPtr m_connection = SharedConnection();
};

TEST_F(ChannelOfADyingBus, LossWithoutAConnectionLogsAnErrorAndCallsTheHandler)
{
    TestChannel channel;
    int losses = 0;
    channel.onDisconnect = [&](std::string const&, std::string const&) { ++losses; };
    ConnectAndSettle(channel);
    KillBus();
    ASSERT_TRUE(RunUntil([&] { return losses > 0; }));
    RunPending();
    std::string const function = "m_PartnerNameVanishedCallback";
    EXPECT_THAT(LoggedLines(m_log),
                ElementsAre(Info(function, "m_PartnerNameVanishedCallback name=" + m_partner.Name()),
                            Failed(function, "Empty user_data or connection not valid.")));
    EXPECT_TRUE(channel->IsConnectionReady());
    EXPECT_EQ(losses, 1);
}

TEST_F(ChannelOfADyingBus, SendsFailAndReportTheClosedConnection)
{
    TestChannel channel;
    ConnectAndSettle(channel);
    KillBus();
    m_log.Clear();
    CMessageBuffer message = Message({{"k", "v"}});
    CMessageBuffer reply = Message({{"kept", "as it was"}});
    EXPECT_EQ(channel->SendMessage(message, reply, 0), 0);
    EXPECT_TRUE(m_log.Has(ZV_LOG_ERROR, "Error while sending message [18] The connection is closed"));
    EXPECT_EQ(channel->SendNotification(message), 0);
    EXPECT_TRUE(m_log.Has(ZV_LOG_ERROR, "Error while sending signal [18] The connection is closed"));
    EXPECT_EQ(channel->SendMessage(message, reply, 1), 1);
    EXPECT_TRUE(RunUntilLogged(ZV_LOG_DEBUG, "Error received: 'The connection is closed'"));
    EXPECT_EQ(EntriesOf(reply), Entries({{"kept", "as it was"}}));
}

TEST_F(ChannelOfADyingBus, ConstructingAndConnectingIsHarmless)
{
    KillBus();
    {
        CProxyDBusHelper channel("IPGUTIL");
        channel.Connect(m_partner.Name());
        CMessageBuffer message;
        EXPECT_EQ(channel.SendNotification(message), 0);
        EXPECT_EQ(channel.Connect("org.corvel.test.Partner"), 0);
        EXPECT_FALSE(channel.IsConnectionReady());
        RunPending();
    }
    RunPending();
}

/// The shortest of a few rounds, because a busy machine may delay any of them.
TEST_F(ChannelOfADyingBus, ASyncSendEndsWithin50MillisecondsOfTheBus)
{
    using Clock = std::chrono::steady_clock;
    auto quickest = Clock::duration::max();
    for (int round = 0; round < 5; ++round) {
        m_bus.Restart();
        WirePeer partner;
        partner.SetHandler([](WireMessage const&) { return WireAnswer::Nothing(); });
        CProxyDBusHelper channel("IPGUTIL");
        ASSERT_EQ(channel.Connect(partner.Name()), 1);
        Clock::time_point killed;
        std::thread killer([&] {
            partner.WaitFor(IsCall("Send"));
            killed = Clock::now();
            m_bus.Kill();
        });
        CMessageBuffer message;
        CMessageBuffer reply;
        EXPECT_EQ(channel.SendMessage(message, reply, 0), 0);
        auto const returned = Clock::now();
        killer.join();
        quickest = std::min(quickest, returned - killed);
        EXPECT_TRUE(m_log.Has(ZV_LOG_ERROR, "Error while sending message [18] The connection is closed"));
        m_log.Clear();
    }
    EXPECT_LT(quickest, std::chrono::milliseconds(50));
}

} // namespace
