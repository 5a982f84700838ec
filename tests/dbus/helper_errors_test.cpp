// SPDX-License-Identifier: MIT
#include "GLibObjects.h"
#include "HelperFixture.h"

#include <cstdlib>

using namespace zviptv::test;
using namespace std::chrono_literals;
using testing::ElementsAre;

namespace {

/// The errors that end a "SendSignal" call and their lines.
class HelperErrors : public ChannelTest
{
protected:
    /// The log lines of one announcement that is answered with this error.
    std::vector<LoggedLine> LinesAfter(std::string const& errorName)
    {
        m_partner.SetHandler(
            [errorName](WireMessage const&) { return WireAnswer::Error(errorName, "because 100%s"); });
        EXPECT_TRUE(m_partner.OwnName(HelperName));
        return LinesOfSend();
    }

    std::vector<LoggedLine> LinesOfSend()
    {
        CMessageBuffer request;
        CMessageBuffer reply = Message({{"old", "1"}});
        m_log.Clear();
        EXPECT_FALSE(m_client.m_SendMessage(request, reply));
        EXPECT_EQ(EntriesOf(reply), Entries({{"old", "1"}}));
        return LoggedLines(m_log);
    }

    static auto Lines(std::string const& failure)
    {
        return ElementsAre(Info("m_SendMessage", "Sending"), Failed("m_SendMessage", failure));
    }

    CConnectionHelperDBusClient m_client;
};

TEST_F(HelperErrors, NobodyOwnsTheName)
{
    EXPECT_THAT(LinesOfSend(), Lines("G_DBUS_ERROR_NAME_HAS_NO_OWNER"));
    m_log.Clear();
    m_client.Disconnect(":1.7", "IPGUTIL");
    EXPECT_THAT(LoggedLines(m_log), Lines("G_DBUS_ERROR_NAME_HAS_NO_OWNER"));
    EXPECT_EQ(m_client.Connect(":1.7", "IPGUTIL"), "");
}

TEST_F(HelperErrors, CodesTwoAndThree)
{
    EXPECT_THAT(LinesAfter("org.freedesktop.DBus.Error.ServiceUnknown"),
                Lines("G_DBUS_ERROR_NAME_HAS_NO_OWNER"));
    EXPECT_THAT(LinesAfter("org.freedesktop.DBus.Error.NameHasNoOwner"),
                Lines("G_DBUS_ERROR_NAME_HAS_NO_OWNER"));
}

TEST_F(HelperErrors, CodeTwentyFourInAnyDomain)
{
    EXPECT_THAT(LinesAfter("org.freedesktop.DBus.Error.Spawn.ForkFailed"), Lines("G_IO_ERROR_TIMED_OUT"));
}

TEST_F(HelperErrors, AnyOtherCode)
{
    EXPECT_THAT(LinesAfter("org.freedesktop.DBus.Error.AccessDenied"),
                Lines("Error : 9, GDBus.Error:org.freedesktop.DBus.Error.AccessDenied: because 100%s"));
    EXPECT_THAT(LinesAfter("org.freedesktop.DBus.Error.TimedOut"),
                Lines("Error : 20, GDBus.Error:org.freedesktop.DBus.Error.TimedOut: because 100%s"));
    EXPECT_THAT(LinesAfter("org.freedesktop.DBus.Error.NoReply"),
                Lines("Error : 4, GDBus.Error:org.freedesktop.DBus.Error.NoReply: because 100%s"));
    EXPECT_THAT(LinesAfter("org.corvel.Other"),
                Lines("Error : 36, GDBus.Error:org.corvel.Other: because 100%s"));
}

TEST_F(HelperErrors, NoAnswerWithinTwoSeconds)
{
    ASSERT_TRUE(m_partner.OwnName(HelperName));
    m_partner.SetHandler([](WireMessage const&) { return WireAnswer::Nothing(); });
    auto const start = std::chrono::steady_clock::now();
    EXPECT_THAT(LinesOfSend(), Lines("G_IO_ERROR_TIMED_OUT"));
    auto const waited = std::chrono::steady_clock::now() - start;
    EXPECT_GE(waited, 1990ms);
    EXPECT_LT(waited, 10s);
}

TEST_F(HelperErrors, TheBusDied)
{
    ConnectionPtr const connection = SharedConnection();
    m_bus.Kill();
    ASSERT_TRUE(RunUntil([&] { return g_dbus_connection_is_closed(connection.get()) != FALSE; }));
    EXPECT_THAT(LinesOfSend(), Lines("Error : 18, The connection is closed"));
}

TEST(HelperClientWithoutBus, LogsItAndStaysUsable)
{
    setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus", 1);
    GError* error = nullptr;
    ASSERT_EQ(g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, &error), nullptr);
    std::string const reason = "[" + std::to_string(error->code) + "] " + error->message;
    g_error_free(error);
    LogCapture log;
    {
        CConnectionHelperDBusClient client;
        EXPECT_EQ(client.Connect(":1.7", "IPGUTIL"), "");
        client.Disconnect(":1.7", "IPGUTIL");
    }
    std::string const constructor = "CConnectionHelperDBusClient";
    EXPECT_THAT(LoggedLines(log),
                ElementsAre(Info(constructor, "ctor"),
                            Failed(constructor, "Error while connecting to system bus " + reason + "\n"),
                            Info("m_SendMessage", "Sending"), Failed("m_SendMessage", "No connection setup"),
                            Info("m_SendMessage", "Sending"), Failed("m_SendMessage", "No connection setup"),
                            Info("~CConnectionHelperDBusClient", "dtor")));
}

/// The line of a failed owner query never shows the bus's message.
LoggedLine const OwnerQueryFailed = Failed(
    "CheckConnection", "[TCIPCConnection::CheckConnection] DBus Error while checking name owner: (null)");

TEST_F(ChannelTest, CheckConnectionIsTrueWhileTheNameIsOwned)
{
    EXPECT_FALSE(CConnectionHelperDBusClient::CheckConnection());
    ASSERT_TRUE(m_partner.OwnName(HelperName));
    EXPECT_TRUE(CConnectionHelperDBusClient::CheckConnection());
    ASSERT_TRUE(m_partner.ReleaseName(HelperName));
    EXPECT_FALSE(CConnectionHelperDBusClient::CheckConnection());
    EXPECT_THAT(LoggedLines(m_log), ElementsAre()) << "a plain no is no error";
}

TEST_F(ChannelTest, CheckConnectionIsFalseAfterTheBusDies)
{
    ASSERT_TRUE(m_partner.OwnName(HelperName));
    ASSERT_TRUE(CConnectionHelperDBusClient::CheckConnection());
    m_bus.Kill();
    EXPECT_FALSE(CConnectionHelperDBusClient::CheckConnection());
    EXPECT_FALSE(CConnectionHelperDBusClient::CheckConnection());
    EXPECT_THAT(LoggedLines(m_log), ElementsAre(OwnerQueryFailed, OwnerQueryFailed));
}

TEST(HelperClientWithoutBus, CheckConnectionIsFalse)
{
    setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus", 1);
    LogCapture log;
    EXPECT_FALSE(CConnectionHelperDBusClient::CheckConnection());
    EXPECT_THAT(LoggedLines(log), ElementsAre(OwnerQueryFailed));
}

} // namespace
