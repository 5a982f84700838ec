// SPDX-License-Identifier: MIT
#include "GLibObjects.h"
#include "HelperFixture.h"

#include <cstdlib>

using namespace zviptv::test;

namespace {

/// A process that survives the end of its bus: it has switched off exit-on-close.
class BusRestart : public ChannelTest
{
protected:
    /// Nothing iterates the context here: the next object must detect that the bus has died.
    static void ExpectAnswered(WirePeer& partner)
    {
        partner.SetHandler([](WireMessage const&) { return WireAnswer(Entries({{"said", "yes"}})); });
        CProxyDBusHelper channel("IPGUTIL");
        EXPECT_EQ(channel.Connect(partner.Name()), 1);
        CMessageBuffer request;
        CMessageBuffer reply;
        EXPECT_EQ(channel.SendMessage(request, reply, 0), 1);
        EXPECT_EQ(reply.GetValue("said"), "yes");
    }

    ConnectionPtr m_connection = SharedConnection();
    CProxyDBusHelper m_former{"PLAYERCONTROL"}; // keeps the former connection
};

TEST_F(BusRestart, ANewChannelWorksAtTheSameAddress)
{
    for (int i = 0; i < 3; ++i) {
        m_bus.Restart();
        WirePeer partner;
        ExpectAnswered(partner);
    }
}

TEST_F(BusRestart, ANewChannelUsesTheCurrentAddress)
{
    std::string const former = m_bus.Address();
    BusOptions elsewhere;
    elsewhere.setEnvironment = false;
    PrivateBus const other(elsewhere);
    m_bus.Kill();
    setenv("DBUS_SYSTEM_BUS_ADDRESS", other.Address().c_str(), 1);
    WirePeer partner;
    ExpectAnswered(partner);
    setenv("DBUS_SYSTEM_BUS_ADDRESS", former.c_str(), 1);
}

/// Only objects that are created after the end of the bus use another bus.
TEST_F(BusRestart, TheOwnerCheckUsesTheCurrentAddressWhileTheFormerBusRuns)
{
    std::string const former = m_bus.Address();
    BusOptions elsewhere;
    elsewhere.setEnvironment = false;
    PrivateBus const other(elsewhere);
    WirePeer service(other.Address());
    ASSERT_TRUE(service.OwnName(HelperName));
    EXPECT_FALSE(CConnectionHelperDBusClient::CheckConnection());
    setenv("DBUS_SYSTEM_BUS_ADDRESS", other.Address().c_str(), 1);
    EXPECT_TRUE(CConnectionHelperDBusClient::CheckConnection());
    ExpectAnswered(m_partner);
    setenv("DBUS_SYSTEM_BUS_ADDRESS", former.c_str(), 1);
}

TEST_F(BusRestart, LaterObjectsShareOneConnection)
{
    m_bus.Restart();
    CProxyDBusHelper first("IPGUTIL");
    CProxyDBusHelper second("BROADCASTDATA");
    EXPECT_EQ(first.GetPublicName(), second.GetPublicName());
}

TEST_F(BusRestart, AChannelMadeWithoutABusUsesTheDeadConnection)
{
    m_bus.Kill();
    CProxyDBusHelper channel("IPGUTIL");
    EXPECT_EQ(channel.GetPublicName(), m_former.GetPublicName());
    CMessageBuffer message;
    EXPECT_EQ(channel.SendNotification(message), 0);
}

TEST_F(BusRestart, TheOwnerCheckFindsTheOwnerAgain)
{
    EXPECT_FALSE(CConnectionHelperDBusClient::CheckConnection());
    m_bus.Restart();
    WirePeer partner;
    ASSERT_TRUE(partner.OwnName(HelperName));
    EXPECT_TRUE(CConnectionHelperDBusClient::CheckConnection());
}

TEST_F(BusRestart, TheDisconnectHandlerRunsOnce)
{
    TestChannel lost;
    int losses = 0;
    lost.onDisconnect = [&](std::string const&, std::string const&) { ++losses; };
    ConnectAndSettle(lost);
    m_bus.Restart();
    ASSERT_TRUE(RunUntil([&] { return losses == 1; }));
    CMessageBuffer message;
    EXPECT_EQ(lost->SendNotification(message), 0);
    WirePeer partner;
    ExpectAnswered(partner);
    RunPending();
    EXPECT_EQ(losses, 1);
}

TEST_F(BusRestart, ANewHelperServerOwnsItsNameAgain)
{
    ServerEnd const end;
    CConnectionHelperDBusServer::Instance();
    m_bus.Restart();
    WirePeer observer;
    CConnectionHelperDBusServer::Destroy();
    CConnectionHelperDBusServer::Instance();
    EXPECT_TRUE(RunUntil([&] { return !observer.GetNameOwner(HelperName).empty(); }));
}

/// If exit-on-close were set, the end of the first bus would end the process.
class ExitOnClose : public ChannelTest
{
protected:
    static ConnectionPtr Connection()
    {
        return ConnectionPtr(g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, nullptr));
    }

    static bool IsSet() { return g_dbus_connection_get_exit_on_close(Connection().get()) != FALSE; }
    static void Set(bool on) { g_dbus_connection_set_exit_on_close(Connection().get(), on ? TRUE : FALSE); }

    /// Runs `use` while an object exists. Returns when the connection has ended with the object.
    void WithObject(std::function<void()> const& use)
    {
        std::string name;
        {
            CProxyDBusHelper channel("IPGUTIL");
            name = channel.GetPublicName();
            use();
        }
        ASSERT_TRUE(RunUntil([&] { return m_partner.GetNameOwner(name).empty(); }));
    }

    /// Returns when the loss of the bus has been handled.
    void LoseBus()
    {
        TestChannel channel;
        WirePeer partner;
        bool isLost = false;
        channel.onDisconnect = [&](std::string const&, std::string const&) { isLost = true; };
        ASSERT_EQ(channel->Connect(partner.Name()), 1);
        m_bus.Kill();
        ASSERT_TRUE(RunUntil([&] { return isLost; }));
    }
};

TEST_F(ExitOnClose, IsInitiallyOn)
{
    WithObject([] { EXPECT_TRUE(IsSet()); });
    WithObject([] { EXPECT_TRUE(IsSet()); });
}

TEST_F(ExitOnClose, StaysOffWithoutObjects)
{
    WithObject([] { Set(false); });
    for (int i = 0; i < 3; ++i) {
        LoseBus();
        m_bus.Restart();
    }
}

TEST_F(ExitOnClose, CanBeSwitchedOnAgain)
{
    WithObject([] { Set(false); });
    WithObject([] {
        EXPECT_FALSE(IsSet());
        Set(true);
    });
    WithObject([] { EXPECT_TRUE(IsSet()); });
}

/// The application holds the connection longer than its objects.
TEST_F(ExitOnClose, KeepsItsLastValue)
{
    ConnectionPtr connection = Connection();
    {
        CProxyDBusHelper const channel("IPGUTIL");
    }
    g_dbus_connection_set_exit_on_close(connection.get(), FALSE);
    connection.reset();
    LoseBus();
}

/// Dropping the last reference to the connection of a dead bus does not store its setting again.
TEST_F(ExitOnClose, AppliesToTheLaterBus)
{
    ConnectionPtr former = SharedConnection();
    bool isHandled = false;
    g_signal_connect_swapped(former.get(), "closed", G_CALLBACK(+[](bool* flag) { *flag = true; }),
                             &isHandled);
    {
        CProxyDBusHelper const channel("IPGUTIL");
        m_bus.Restart();
        CProxyDBusHelper const later("PLAYERCONTROL");
        ASSERT_TRUE(RunUntil([&] { return isHandled; }));
        g_dbus_connection_set_exit_on_close(former.get(), TRUE);
    }
    former.reset();
    LoseBus();
}

} // namespace
