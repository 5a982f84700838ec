// SPDX-License-Identifier: MIT
#include "ExpectedLeaks.h"
#include "GLibObjects.h"
#include "HelperFixture.h"

#include <cstdlib>
#include <future>

using namespace zviptv::test;
using testing::ElementsAre;
using testing::MatchesRegex;
using testing::StartsWith;

namespace {

constexpr char Constructor[] = "CConnectionHelperDBusServer";

/// Only the test runs a loop.
class HelperServerLife : public ChannelTest
{
protected:
    static CConnectionHelperDBusServer& Server() { return *CConnectionHelperDBusServer::Instance(); }

    bool IsOwnedByTheLibrary()
    {
        return m_partner.GetNameOwner(HelperName) == g_dbus_connection_get_unique_name(m_connection.get());
    }

    ConnectionPtr m_connection = SharedConnection();
    ServerEnd m_end;
};

TEST_F(HelperServerLife, ConstructionLogsEachStep)
{
    Server();
    std::vector<LoggedLine> const lines = LoggedLines(m_log);
    ASSERT_EQ(lines.size(), 6U);
    EXPECT_EQ(lines[0], Info("Instance", ""));
    EXPECT_EQ(lines[1], Info(Constructor, "XML parsed"));
    EXPECT_EQ(lines[2], Info(Constructor, "XML parsed 1"));
    EXPECT_EQ(lines[3], Info(Constructor, "XML parsed 2"));
    EXPECT_EQ(lines[4], Info(Constructor, "XML parsed 3"));
    EXPECT_EQ(lines[5].function, Constructor);
    EXPECT_EQ(lines[5].priority, ZV_LOG_INFO);
    EXPECT_THAT(lines[5].message, MatchesRegex("RegistID:[1-9][0-9]*, m_pServCon:0x0x[0-9a-f]+"));
    EXPECT_THAT(m_log.Lines()[1].line,
                StartsWith("ConnectionHelperDBusServer.cpp: CConnectionHelperDBusServer("));
    m_log.Clear();
    ASSERT_TRUE(RunUntil([&] { return !m_log.Lines().empty(); }));
    EXPECT_THAT(LoggedLines(m_log),
                ElementsAre(Debug("m_NameAcquired", "Name acquired: org.corvel.zviptvapi.dbushelper")));
    EXPECT_TRUE(IsOwnedByTheLibrary());
}

TEST_F(HelperServerLife, InstanceLogsEachTimeAndBuildsOnce)
{
    auto const* const first = &Server();
    m_log.Clear();
    EXPECT_EQ(&Server(), first);
    EXPECT_THAT(LoggedLines(m_log), ElementsAre(Info("Instance", "")));
}

TEST_F(HelperServerLife, DestroyWithoutInstanceDoesNothing)
{
    CConnectionHelperDBusServer::Destroy();
    CConnectionHelperDBusServer::Destroy();
    EXPECT_THAT(LoggedLines(m_log), ElementsAre());
}

TEST_F(HelperServerLife, DestroyReleasesNameAndObject)
{
    for (int round = 0; round < 3; ++round) {
        m_log.Clear();
        Server();
        EXPECT_EQ(m_log.Count("XML parsed 3"), 1U);
        ASSERT_TRUE(RunUntil([&] { return IsOwnedByTheLibrary(); }));
        m_log.Clear();
        CConnectionHelperDBusServer::Destroy();
        EXPECT_EQ(m_log.Messages(ZV_LOG_ERROR), std::vector<std::string>()) << "destruction says nothing";
        EXPECT_TRUE(m_partner.WaitForOwner(HelperName, false));
    }
}

TEST_F(HelperServerLife, ANewInstanceHasNoHandler)
{
    Handled handled;
    Server().SetDbusSignalCb(Handled::Handle, &handled);
    CConnectionHelperDBusServer::Destroy();
    Server();
    ASSERT_TRUE(RunUntil([&] { return IsOwnedByTheLibrary(); }));
    auto reply =
        std::async(std::launch::async, [this] { return m_partner.Call(HelperTarget(), WirePairs()); });
    ASSERT_TRUE(
        RunUntil([&] { return reply.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }));
    EXPECT_EQ(reply.get().pairs, Pairs({{"dbusname", ""}}));
    EXPECT_EQ(handled.announced.size(), 0U);
}

TEST_F(HelperServerLife, ASecondServerOnlyLogsThatItHasNoName)
{
    ASSERT_TRUE(m_partner.OwnName(HelperName));
    Server();
    m_log.Clear();
    ASSERT_TRUE(RunUntil([&] { return !m_log.Lines().empty(); }));
    EXPECT_THAT(LoggedLines(m_log),
                ElementsAre(Debug("m_NameLost", "Name lost: org.corvel.zviptvapi.dbushelper")));
    EXPECT_FALSE(IsOwnedByTheLibrary());
    auto const* const instance = &Server();
    EXPECT_EQ(&Server(), instance);
    m_partner.ReleaseName(HelperName);
    EXPECT_TRUE(RunUntilLogged(ZV_LOG_DEBUG, "Name acquired: org.corvel.zviptvapi.dbushelper"))
        << "it was queued";
}

TEST_F(HelperServerLife, IsInertIfItsObjectCannotBeRegistered)
{
    NodeInfoPtr const node(g_dbus_node_info_new_for_xml(CConnectionHelperDBusServer::INTERFACE_XML, nullptr));
    guint const occupied = g_dbus_connection_register_object(
        m_connection.get(), HelperPath, node->interfaces[0], nullptr, nullptr, nullptr, nullptr);
    ASSERT_NE(occupied, 0U);
    Server();
    EXPECT_THAT(
        LoggedLines(m_log),
        ElementsAre(Info("Instance", ""), Info(Constructor, "XML parsed"), Info(Constructor, "XML parsed 1"),
                    Info(Constructor, "XML parsed 2"),
                    Failed(Constructor, "Couldn't register DBus bus : 'An object is already exported for the "
                                        "interface org.corvel.zviptvapi.dbushelper at "
                                        "/org/corvel/zviptvapi/dbushelper'\n")));
    RunPending();
    EXPECT_EQ(m_partner.GetNameOwner(HelperName), "");
    CConnectionHelperDBusServer::Destroy();
    EXPECT_TRUE(g_dbus_connection_unregister_object(m_connection.get(), occupied))
        << "the other's object is untouched";
    Server();
    EXPECT_TRUE(RunUntil([&] { return IsOwnedByTheLibrary(); }));
}

TEST_F(HelperServerLife, AnnouncementsArriveInTheContextOfTheCreation)
{
    ContextPtr const creating(g_main_context_new());
    Handled handled;
    {
        ContextScope const scope(creating.get());
        Server().SetDbusSignalCb(Handled::Handle, &handled);
    }
    ASSERT_TRUE(m_partner.WaitForOwner(g_dbus_connection_get_unique_name(m_connection.get()), true));
    m_partner.CallWithoutReply(HelperTarget(g_dbus_connection_get_unique_name(m_connection.get())),
                               WirePairs());
    m_partner.Sync();
    RunPending();
    EXPECT_EQ(handled.announced.size(), 0U);
    ContextScope const scope(creating.get());
    EXPECT_TRUE(RunUntil([&] { return handled.announced.size() == 1; }));
    CConnectionHelperDBusServer::Destroy();
    RunPending();
}

TEST_F(HelperServerLife, AnswersAnnouncementsAfterAnExceptionOfTheHandler)
{
    ExpectLeaks();
    static int calls;
    calls = 0;
    Server().SetDbusSignalCb(
        [](std::string, std::string, std::string, void*) {
            if (++calls <= 20) {
                throw calls;
            }
            return std::string("answered");
        },
        nullptr);
    ASSERT_TRUE(RunUntil([&] { return IsOwnedByTheLibrary(); }));
    auto reply = std::async(std::launch::async, [this] {
        for (int i = 0; i < 20; ++i) {
            m_partner.CallWithoutReply(HelperTarget(), WirePairs());
        }
        return m_partner.Call(HelperTarget(), WirePairs());
    });
    int caught = 0;
    auto const isAnswered = [&] {
        return reply.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    };
    for (bool done = false; !done;) {
        try {
            ASSERT_TRUE(RunUntil(isAnswered));
            done = true;
        } catch (int) {
            ++caught;
        }
    }
    EXPECT_EQ(reply.get().Value("dbusname"), "answered");
    EXPECT_EQ(caught, 20);
}

TEST_F(HelperServerLife, SurvivesTheDeathOfTheBus)
{
    Server();
    ASSERT_TRUE(RunUntil([&] { return IsOwnedByTheLibrary(); }));
    ASSERT_TRUE(RunUntilLogged(ZV_LOG_DEBUG, "Name acquired: org.corvel.zviptvapi.dbushelper"));
    m_bus.Kill();
    EXPECT_TRUE(RunUntilLogged(ZV_LOG_DEBUG, "Name lost: org.corvel.zviptvapi.dbushelper"));
    CConnectionHelperDBusServer::Destroy();
    RunPending();
}

TEST_F(HelperServerLife, ADeadConnectionIsHarmless)
{
    m_bus.Kill();
    ASSERT_TRUE(RunUntil([this] { return g_dbus_connection_is_closed(m_connection.get()) != FALSE; }));
    Server();
    RunPending();
    CConnectionHelperDBusServer::Destroy();
    RunPending();
}

TEST(HelperServerWithoutBus, IsInertUntilDestroyed)
{
    setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus", 1);
    GError* error = nullptr;
    ASSERT_EQ(g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, &error), nullptr);
    std::string const reason = error->message;
    g_error_free(error);
    LogCapture log;
    auto* const instance = CConnectionHelperDBusServer::Instance();
    ASSERT_NE(instance, nullptr);
    EXPECT_THAT(LoggedLines(log),
                ElementsAre(Info("Instance", ""), Info(Constructor, "XML parsed"),
                            Failed(Constructor, "Couldn't connect to DBus bus: '" + reason + "'\n")));
    log.Clear();
    PrivateBus bus;
    EXPECT_EQ(CConnectionHelperDBusServer::Instance(), instance);
    EXPECT_THAT(LoggedLines(log), ElementsAre(Info("Instance", ""))) << "it does not try again";
    Handled handled;
    instance->SetDbusSignalCb(Handled::Handle, &handled);
    CConnectionHelperDBusServer::Destroy();
    ServerEnd const end;
    CConnectionHelperDBusServer::Instance();
    EXPECT_TRUE(
        RunUntil([&] { return log.Has(ZV_LOG_DEBUG, "Name acquired: org.corvel.zviptvapi.dbushelper"); }));
}

} // namespace
