// SPDX-License-Identifier: MIT
#include "ChannelFixture.h"
#include "GLibObjects.h"

#include <atomic>
#include <cstdlib>

using namespace zviptv::test;
using testing::ElementsAre;
using testing::StartsWith;

namespace {

TEST_F(ChannelTest, ConstructionLogsEachStep)
{
    CProxyDBusHelper channel("IPGUTIL");
    std::vector<LoggedLine> const lines = LoggedLines(m_log);
    std::string const name = channel.GetPublicName();
    std::string const function = "CProxyDBusHelper";
    EXPECT_THAT(lines, ElementsAre(Info(function, "Constructor - IPGUTIL"), Info(function, "XML parsed"),
                                   Info(function, "Getting connection to DBUS"),
                                   Info(function, "Working with unique name " + name),
                                   Info(function, "Registering Object and Interface on path "
                                                  "/org/corvel/zviptvapi/DbusCommunication/IPGUTIL")));
}

TEST_F(ChannelTest, PublicNameIsTheConnectionsUniqueName)
{
    CProxyDBusHelper channel("IPGUTIL");
    m_log.Clear();
    std::string const name = channel.GetPublicName();
    EXPECT_THAT(LoggedLines(m_log), ElementsAre(Info("GetPublicName", "")));
    EXPECT_THAT(name, StartsWith(":"));
    EXPECT_EQ(name, g_dbus_connection_get_unique_name(SharedConnection().get()));
    EXPECT_THAT(m_partner.ListNames(), testing::Contains(name));
}

TEST_F(ChannelTest, IsNotReadyBeforeConnect)
{
    CProxyDBusHelper channel("IPGUTIL");
    m_log.Clear();
    EXPECT_FALSE(channel.IsConnectionReady());
    channel.SetCallback(nullptr, nullptr, nullptr);
    channel.SetDisconnectNotiCB(nullptr, nullptr);
    EXPECT_THAT(LoggedLines(m_log), ElementsAre());
}

TEST_F(ChannelTest, DestructionLogsOneEmptyErrorLine)
{
    {
        CProxyDBusHelper channel("IPGUTIL");
        m_log.Clear();
    }
    EXPECT_THAT(LoggedLines(m_log), ElementsAre(Failed("~CProxyDBusHelper", "")));
}

TEST_F(LoopedChannelTest, DestructionWithdrawsTheObject)
{
    TestChannel channel("IPGUTIL");
    TestChannel const other("PLAYERCONTROL"); // keeps the connection
    WireTarget const target = channel.Target("Send");
    EXPECT_EQ(m_partner.Call(target, WireEntries()).kind, WireKind::Reply);
    channel.Destroy();
    EXPECT_EQ(m_partner.Call(target, WireEntries()).errorName, "org.freedesktop.DBus.Error.UnknownMethod");
    EXPECT_EQ(m_partner.Call(other.Target("Send"), WireEntries()).kind, WireKind::Reply);
}

TEST_F(ChannelTest, DestructionDropsTheConnection)
{
    std::string name;
    {
        CProxyDBusHelper channel("IPGUTIL");
        name = channel.GetPublicName();
        ASSERT_TRUE(m_partner.WaitForOwner(name, true));
    }
    EXPECT_TRUE(m_partner.WaitForOwner(name, false));
}

TEST_F(LoopedChannelTest, SecondChannelOfTheSameNameIsConstructedWithoutObject)
{
    TestChannel first("IPGUTIL");
    first.onMessage = [](CMessageBuffer&) { return Message({{"who", "first"}}); };
    m_log.Clear();
    {
        CProxyDBusHelper second("IPGUTIL");
        EXPECT_EQ(
            m_log.Messages(ZV_LOG_ERROR),
            std::vector<std::string>{"Error while registering object [2] An object is already exported for "
                                     "the interface org.corvel.zviptvapi.DbusCommunication at "
                                     "/org/corvel/zviptvapi/DbusCommunication/IPGUTIL"});
        EXPECT_EQ(second.Connect(m_partner.Name()), 1);
        m_log.Clear();
    }
    EXPECT_FALSE(m_log.Has(ZV_LOG_ERROR, "Assertion failed"));
    EXPECT_EQ(m_partner.Call(first.Target("Send"), WireEntries()).Value("who"), "first");
}

TEST_F(ChannelTest, ReportsAFailureToUnregister)
{
    ConnectionPtr const connection = SharedConnection();
    NodeInfoPtr const node(g_dbus_node_info_new_for_xml(CProxyDBusHelper::INTERFACE_XML, nullptr));
    guint const before = g_dbus_connection_register_object(connection.get(), "/before", node->interfaces[0],
                                                           nullptr, nullptr, nullptr, nullptr);
    ASSERT_NE(before, 0U);
    {
        CProxyDBusHelper channel("IPGUTIL");
        ASSERT_TRUE(g_dbus_connection_unregister_object(connection.get(), before + 1))
            << "ids are not consecutive";
        m_log.Clear();
    }
    EXPECT_THAT(LoggedLines(m_log), ElementsAre(Failed("~CProxyDBusHelper", ""),
                                                Failed("~CProxyDBusHelper", "Assertion failed")));
    g_dbus_connection_unregister_object(connection.get(), before);
    RunPending();
}

class InvalidChannelName : public ChannelTest, public testing::WithParamInterface<std::string>
{
};

TEST_P(InvalidChannelName, IsConstructedButFails)
{
    CProxyDBusHelper channel(GetParam());
    EXPECT_TRUE(m_log.Has(ZV_LOG_INFO, "Constructor - " + GetParam()));
    EXPECT_THAT(m_log.Messages(ZV_LOG_ERROR), ElementsAre(StartsWith("Error while registering object [")));
    EXPECT_THAT(channel.GetPublicName(), StartsWith(":"));
    m_log.Clear();
    EXPECT_EQ(channel.Connect(m_partner.Name()), 0);
    EXPECT_THAT(m_log.Messages(ZV_LOG_ERROR), ElementsAre(StartsWith("Error while registering proxy  ")));
    EXPECT_FALSE(channel.IsConnectionReady());
    CMessageBuffer request;
    CMessageBuffer reply;
    EXPECT_EQ(channel.SendMessage(request, reply, 0), 0);
    EXPECT_EQ(channel.SendNotification(request), 0);
    m_partner.Disconnect();
    RunPending();
}

INSTANTIATE_TEST_SUITE_P(Channel, InvalidChannelName,
                         testing::Values("", "a-b", "a b", "a//b", "/a", "a/", "\xff\xfe", "a.b", "50%s%n",
                                         std::string(513 - sizeof ChannelObject + 1, 'x'),
                                         std::string(8000, 'x')));

TEST_F(LoopedChannelTest, LongNamesAndPathsBelowAreObjectPaths)
{
    std::string const longest(512 - sizeof ChannelObject + 1, 'A');
    for (std::string const& name : {longest, std::string("A/B_9")}) {
        m_log.Clear();
        TestChannel channel(name);
        std::atomic<bool> notified{false};
        channel.onNotification = [&](CMessageBuffer&) { notified = true; };
        EXPECT_EQ(m_log.Messages(ZV_LOG_ERROR), std::vector<std::string>());
        EXPECT_EQ(channel->Connect(m_partner.Name()), 1);
        m_partner.Emit(channel.Target("SendSignal"), WireEntries());
        EXPECT_EQ(m_partner.Call(channel.Target("Send"), WireEntries()).kind, WireKind::Reply);
        EXPECT_TRUE(notified) << "the signal came before the call";
    }
}

} // namespace
