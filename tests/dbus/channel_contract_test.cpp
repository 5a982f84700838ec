// SPDX-License-Identifier: MIT
#include "ChannelFixture.h"

#include <gio/gio.h>

using namespace zviptv::test;
using testing::HasSubstr;

namespace {

TEST(ChannelContract, ConstantsMatchTheProtocol)
{
    EXPECT_STREQ(CProxyDBusHelper::PROXY_DBUS_HELPER_PREFIX, "org.corvel.zviptvapi");
    EXPECT_STREQ(CProxyDBusHelper::PROXY_DBUS_HELPER_OBJ_NAME, "/org/corvel/zviptvapi/DbusCommunication");
    EXPECT_STREQ(CProxyDBusHelper::PROXY_DBUS_HELPER_OBJ_IFACE, "org.corvel.zviptvapi.DbusCommunication");
    EXPECT_STREQ(CProxyDBusHelper::PROXY_DBUS_HELPER_OBJ_METHOD, "Send");
    EXPECT_STREQ(CProxyDBusHelper::PROXY_DBUS_HELPER_SIG_NAME, "SendSignal");
    EXPECT_STREQ(CProxyDBusHelper::PROXY_DBUS_HELPER_SYN_SUFFIX, "_SYN");
    EXPECT_STREQ(CProxyDBusHelper::PROXY_DBUS_HELPER_SYNACK_SUFFIX, "_SYN_ACK");
    EXPECT_STREQ(CProxyDBusHelper::PROXY_DBUS_HELPER_ACK_SUFFIX, "_ACK");
}

TEST(ChannelContract, InterfaceXmlMatchesLiterally)
{
    EXPECT_STREQ(
        CProxyDBusHelper::INTERFACE_XML,
        "<node>  <interface name='org.corvel.zviptvapi.DbusCommunication'>    <method name='Send'>      "
        "<arg type='a{sv}' name='data' direction='in'/>      <arg type='a{sv}' name='response' "
        "direction='out'/>    </method>    <method name='SendSignal'>      <arg type='a{sv}' name='data' "
        "direction='in'/>    </method>  </interface></node>");
}

TEST(ChannelContract, DispatchTableHandlesCallsAndNoProperties)
{
    EXPECT_NE(CProxyDBusHelper::m_vtable.method_call, nullptr);
    EXPECT_EQ(CProxyDBusHelper::m_vtable.get_property, nullptr);
    EXPECT_EQ(CProxyDBusHelper::m_vtable.set_property, nullptr);
}

static_assert(std::has_virtual_destructor_v<CProxyDBusHelper>);
static_assert(!std::is_copy_constructible_v<CProxyDBusHelper>);

TEST_F(LoopedChannelTest, ExportedObjectDescribesItself)
{
    TestChannel const channel("BROADCASTDATA");
    WireTarget target = channel.Target("Introspect");
    EXPECT_EQ(target.path, "/org/corvel/zviptvapi/DbusCommunication/BROADCASTDATA");
    target.interface = "org.freedesktop.DBus.Introspectable";
    WireMessage const reply = m_partner.Call(target);
    ASSERT_EQ(reply.kind, WireKind::Reply);
    ASSERT_EQ(reply.strings.size(), 1U);
    EXPECT_THAT(reply.strings[0], HasSubstr("<interface name=\"org.corvel.zviptvapi.DbusCommunication\">"));
    EXPECT_THAT(reply.strings[0], HasSubstr("<method name=\"Send\">"));
    EXPECT_THAT(reply.strings[0], HasSubstr("<arg type=\"a{sv}\" name=\"data\" direction=\"in\">"));
    EXPECT_THAT(reply.strings[0], HasSubstr("<arg type=\"a{sv}\" name=\"response\" direction=\"out\">"));
    EXPECT_THAT(reply.strings[0], HasSubstr("<method name=\"SendSignal\">"));
}

TEST_F(LoopedChannelTest, ExportsOnlyItsPath)
{
    TestChannel const channel("IPGUTIL");
    WireTarget target = channel.Target("Send");
    target.path = "/org/corvel/zviptvapi/DbusCommunication";
    EXPECT_EQ(m_partner.Call(target, WireEntries()).errorName, "org.freedesktop.DBus.Error.UnknownMethod");
    target.path = "/org/corvel/zviptvapi/DbusCommunication/PLAYERCONTROL";
    EXPECT_EQ(m_partner.Call(target, WireEntries()).errorName, "org.freedesktop.DBus.Error.UnknownMethod");
}

TEST_F(ChannelTest, LinesCarryTagFileFunctionAndLine)
{
    {
        CProxyDBusHelper channel("IPGUTIL");
        channel.Connect(m_partner.Name());
    }
    ASSERT_FALSE(m_log.Lines().empty());
    for (LogLine const& line : m_log.Lines()) {
        EXPECT_EQ(line.tag, "ZV_IPTV_API");
        EXPECT_THAT(line.line,
                    testing::MatchesRegex("ProxyDBusHelper\\.cpp: ~?[A-Za-z_]+\\([0-9]+\\) > (.|\n)*"));
    }
}

} // namespace
