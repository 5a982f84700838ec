// SPDX-License-Identifier: MIT
#include "BusMonitor.h"
#include "GLibObjects.h"
#include "HelperFixture.h"
#include "NoFreeDescriptor.h"

using namespace zviptv::test;
using namespace std::chrono_literals;
using testing::ElementsAre;

namespace {

constexpr char Acquired[] = "Name acquired: org.corvel.zviptvapi.dbushelper";
constexpr char Lost[] = "Name lost: org.corvel.zviptvapi.dbushelper";

/// The server's well-known name on the bus. Only the test runs a loop.
class HelperServerName : public ChannelTest
{
protected:
    static void Create() { CConnectionHelperDBusServer::Instance(); }
    static void Destroy() { CConnectionHelperDBusServer::Destroy(); }

    void CreateAndOwn()
    {
        Create();
        ASSERT_TRUE(RunUntilLogged(ZV_LOG_DEBUG, Acquired));
        m_log.Clear();
    }

    /// When this returns, all earlier messages of the bus have been handled.
    void Settle()
    {
        VariantPtr const answer(g_dbus_connection_call_sync(
            m_connection.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
            "GetId", nullptr, nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
        ASSERT_NE(answer, nullptr);
        RunPending();
    }

    std::vector<std::string> Changes() const { return m_log.Messages(ZV_LOG_DEBUG); }

    std::string OwnName() const { return g_dbus_connection_get_unique_name(m_connection.get()); }

    template <typename Work>
    static std::chrono::steady_clock::duration Duration(Work work)
    {
        auto const start = std::chrono::steady_clock::now();
        work();
        return std::chrono::steady_clock::now() - start;
    }

    ConnectionPtr m_connection = SharedConnection();
    ServerEnd m_end;
};

TEST_F(HelperServerName, IsRequestedAndReleasedWithOneCallEach)
{
    BusMonitor monitor(m_bus.Address());
    CreateAndOwn();
    Destroy();
    auto const isTheServers = [this](WireMessage const& message) {
        return message.kind == WireKind::Call && message.sender == OwnName();
    };
    auto const release = monitor.WaitFor(IsCall("ReleaseName"));
    ASSERT_TRUE(release);
    EXPECT_EQ(release->signature, "s");
    EXPECT_THAT(release->strings, ElementsAre("org.corvel.zviptvapi.dbushelper"));
    auto const request = monitor.WaitFor(IsCall("RequestName"));
    ASSERT_TRUE(request);
    EXPECT_EQ(request->signature, "su");
    EXPECT_THAT(request->strings, ElementsAre("org.corvel.zviptvapi.dbushelper"));
    for (auto const& call : {*request, *release}) {
        EXPECT_EQ(call.destination, "org.freedesktop.DBus");
        EXPECT_EQ(call.path, "/org/freedesktop/DBus");
        EXPECT_EQ(call.interface, "org.freedesktop.DBus");
        EXPECT_FALSE(call.noReply);
        EXPECT_FALSE(call.noAutoStart);
    }
    EXPECT_EQ(monitor.Seen().Count(isTheServers), 2U) << "no match rules";
}

TEST_F(HelperServerName, IsNotTakenFromItsOwner)
{
    ASSERT_TRUE(m_partner.OwnName(HelperName, WirePeer::AllowReplacement));
    Create();
    ASSERT_TRUE(RunUntilLogged(ZV_LOG_DEBUG, Lost));
    EXPECT_EQ(m_partner.GetNameOwner(HelperName), m_partner.Name());
}

TEST_F(HelperServerName, IsNotGivenToAnotherProcess)
{
    CreateAndOwn();
    EXPECT_FALSE(m_partner.OwnName(HelperName, WirePeer::ReplaceExisting));
    EXPECT_EQ(m_partner.GetNameOwner(HelperName), OwnName());
}

TEST_F(HelperServerName, PassesToTheServerWhenItsOwnerReleasesIt)
{
    ASSERT_TRUE(m_partner.OwnName(HelperName));
    Create();
    ASSERT_TRUE(RunUntilLogged(ZV_LOG_DEBUG, Lost));
    ASSERT_TRUE(m_partner.ReleaseName(HelperName));
    ASSERT_TRUE(RunUntilLogged(ZV_LOG_DEBUG, Acquired));
    EXPECT_THAT(Changes(), ElementsAre(Lost, Acquired));
    EXPECT_EQ(m_partner.GetNameOwner(HelperName), OwnName());
}

TEST_F(HelperServerName, PassesToTheNextWhenTheServerIsDestroyed)
{
    CreateAndOwn();
    EXPECT_FALSE(m_partner.OwnName(HelperName, 0)) << "it waits in the queue";
    Destroy();
    EXPECT_TRUE(
        WaitUntil([this] { return m_partner.GetNameOwner(HelperName) == m_partner.Name(); }, patience));
    Settle();
    EXPECT_THAT(Changes(), ElementsAre());
}

/// The bus still reports the release of the former server after the new one has been created.
TEST_F(HelperServerName, OfADestroyedServerIsDistinguishedFromTheNext)
{
    for (int i = 0; i < 3; ++i) {
        CreateAndOwn();
        Destroy();
        Create();
        ASSERT_TRUE(RunUntilLogged(ZV_LOG_DEBUG, Acquired));
        Settle();
        EXPECT_THAT(Changes(), ElementsAre(Acquired));
        EXPECT_EQ(m_partner.GetNameOwner(HelperName), OwnName());
        Destroy();
        m_log.Clear();
    }
}

/// The same for an application that owns the name itself, on the connection that it shares with the library.
TEST_F(HelperServerName, IsKeptIfTheProcessOwnedItBefore)
{
    guint const own = g_bus_own_name_on_connection(
        m_connection.get(), HelperName, G_BUS_NAME_OWNER_FLAGS_NONE, nullptr, nullptr, nullptr, nullptr);
    ASSERT_TRUE(RunUntil([this] { return m_partner.GetNameOwner(HelperName) == OwnName(); }));
    Create();
    ASSERT_TRUE(RunUntilLogged(ZV_LOG_DEBUG, Lost));
    Destroy();
    Settle();
    EXPECT_EQ(m_partner.GetNameOwner(HelperName), OwnName());
    g_bus_unown_name(own);
}

TEST_F(HelperServerName, ChangesAreReportedInTheContextOfTheCreation)
{
    ContextPtr const creating(g_main_context_new());
    {
        ContextScope const scope(creating.get());
        Create();
    }
    ASSERT_TRUE(m_partner.WaitForOwner(HelperName, true));
    Settle();
    EXPECT_THAT(Changes(), ElementsAre());
    {
        ContextScope const scope(creating.get());
        ASSERT_TRUE(RunUntilLogged(ZV_LOG_DEBUG, Acquired));
    }
    m_bus.Kill();
    ASSERT_TRUE(RunUntil([this] { return g_dbus_connection_is_closed(m_connection.get()) != FALSE; }));
    RunPending();
    EXPECT_THAT(Changes(), ElementsAre(Acquired));
    ContextScope const scope(creating.get());
    EXPECT_TRUE(RunUntilLogged(ZV_LOG_DEBUG, Lost));
    Destroy();
    RunPending();
}

TEST_F(HelperServerName, IsLostOnceWhenTheBusDiesBeforeItAnswers)
{
    m_bus.Stop();
    Create();
    m_bus.Kill();
    ASSERT_TRUE(RunUntilLogged(ZV_LOG_DEBUG, Lost));
    RunPending();
    EXPECT_THAT(Changes(), ElementsAre(Lost));
}

TEST_F(HelperServerName, IsLostOnlyOnceWhenTheBusDies)
{
    ASSERT_TRUE(m_partner.OwnName(HelperName));
    Create();
    ASSERT_TRUE(RunUntilLogged(ZV_LOG_DEBUG, Lost));
    m_bus.Kill();
    ASSERT_TRUE(RunUntil([this] { return g_dbus_connection_is_closed(m_connection.get()) != FALSE; }));
    RunPending();
    EXPECT_THAT(Changes(), ElementsAre(Lost));
}

TEST_F(HelperServerName, IsRequestedWithoutWaitingForAStoppedBus)
{
    m_bus.Stop();
    EXPECT_LT(Duration(Create), 4s);
    m_bus.Continue();
    EXPECT_TRUE(RunUntilLogged(ZV_LOG_DEBUG, Acquired));
}

/// GIO gives up a call after 25 s, but the bus still carries it out.
TEST_F(HelperServerName, IsKnownToBeGrantedByABusThatStoppedForLong)
{
    m_bus.Stop();
    Create();
    EXPECT_FALSE(RunUntil([] { return false; }, 26s));
    m_bus.Continue();
    EXPECT_TRUE(RunUntilLogged(ZV_LOG_DEBUG, Acquired));
    EXPECT_THAT(Changes(), ElementsAre(Acquired));
    EXPECT_EQ(m_partner.GetNameOwner(HelperName), OwnName());
    Destroy();
    EXPECT_TRUE(m_partner.WaitForOwner(HelperName, false));
    m_log.Clear();
    CreateAndOwn();
}

TEST_F(HelperServerName, IsReleasedWithoutWaitingForAStoppedBus)
{
    CreateAndOwn();
    m_bus.Stop();
    EXPECT_LT(Duration(Destroy), 4s);
    m_bus.Continue();
    EXPECT_TRUE(m_partner.WaitForOwner(HelperName, false));
}

TEST_F(HelperServerName, IsReleasedAlsoBeforeTheBusHasAnswered)
{
    m_bus.Stop();
    Create();
    EXPECT_LT(Duration(Destroy), 4s);
    m_bus.Continue();
    Settle();
    EXPECT_EQ(m_partner.GetNameOwner(HelperName), "");
    EXPECT_THAT(Changes(), ElementsAre());
}

TEST_F(HelperServerName, IsReleasedWithoutAFreeDescriptor)
{
    if (ChecksNeedADescriptor) {
        GTEST_SKIP() << ReasonToSkip;
    }
    CreateAndOwn();
    {
        NoFreeDescriptor const none;
        Destroy();
    }
    EXPECT_TRUE(m_partner.WaitForOwner(HelperName, false));
    CreateAndOwn();
}

/// A bus on which nobody may own the name.
class HelperServerRefused : public testing::Test
{
protected:
    PrivateBus m_bus{[] {
        BusOptions options;
        options.extraConfig =
            "<policy context='default'><deny own='org.corvel.zviptvapi.dbushelper'/></policy>";
        return options;
    }()};
    LogCapture m_log;
    ServerEnd m_end;
};

TEST_F(HelperServerRefused, ReportsItAndReleasesNothing)
{
    BusMonitor monitor(m_bus.Address());
    CConnectionHelperDBusServer::Instance();
    ASSERT_TRUE(RunUntil([this] { return m_log.Has(ZV_LOG_DEBUG, Lost); }));
    CConnectionHelperDBusServer::Destroy();
    CConnectionHelperDBusServer::Instance();
    ASSERT_TRUE(RunUntil([this] { return m_log.Count(Lost) == 2; }));
    ASSERT_TRUE(monitor.Seen().WaitForCount(IsCall("RequestName"), 2));
    EXPECT_EQ(monitor.Seen().Count(IsCall("ReleaseName")), 0U);
}

} // namespace
