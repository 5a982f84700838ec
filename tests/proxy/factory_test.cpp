// SPDX-License-Identifier: MIT
#include "ProxyKinds.h"
#include "ProxyTest.h"

#include <zviptv/ProxyDBusHelper.h>

#include <gmock/gmock.h>

using namespace zviptv::test;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

class EveryProxy : public ServiceTest, public testing::WithParamInterface<ProxyKind>
{
protected:
    static ProxyKind const& Kind() { return GetParam(); }
    static void* Create(int id = 0) { return Kind().create(IPTV_PROFILE_DEFAULT, id); }

    std::string Origin(std::string const& function) const
    {
        return std::string(Kind().file) + ": " + function;
    }
    std::string Path() const { return std::string("/org/corvel/zviptvapi/DbusCommunication/") + Kind().type; }
};

TEST_P(EveryProxy, AnnouncesItselfAndItsDeparture)
{
    ASSERT_NE(Create(), nullptr);
    ASSERT_EQ(m_service.Announcements().size(), 1U);
    EXPECT_EQ(Kind().destroy(), 0);
    auto const announcements = m_service.Announcements();
    ASSERT_EQ(announcements.size(), 2U);
    for (std::size_t i = 0; i < 2; ++i) {
        WireMessage const& message = announcements.at(i).message;
        EXPECT_EQ(message.pairs,
                  Pairs({{"dbusname", message.sender}, {"type", Kind().type}, {"add", i == 0 ? "y" : "n"}}));
        EXPECT_EQ(message.destination, "org.corvel.zviptvapi.dbushelper");
        EXPECT_EQ(message.path, "/org/corvel/zviptvapi/dbushelper");
        EXPECT_EQ(message.interface, "org.corvel.zviptvapi.dbushelper");
        EXPECT_EQ(message.member, "SendSignal");
        EXPECT_TRUE(message.noAutoStart);
    }
}

TEST_P(EveryProxy, CreationLogsItsLinesInOrder)
{
    m_log.Clear();
    ASSERT_NE(Create(), nullptr);
    std::string const partner = m_service.Name();
    EXPECT_THAT(
        m_log.Messages(),
        ElementsAre("", std::string("Constructor - ") + Kind().type, "XML parsed",
                    "Getting connection to DBUS",
                    "Working with unique name " + m_service.ClientOf(Kind().type),
                    "Registering Object and Interface on path " + Path(), "ctor", "", "Sending", "SendDone",
                    "partner's name: " + partner, "", "Monitor partner [" + partner + "] connection ",
                    AllOf(StartsWith("Create proxy["), HasSubstr(" for " + partner + " on obj " + Path())),
                    "Subscribe for signals from " + partner + " on object " + Path() + ".", "handshake done",
                    "dtor"));
    EXPECT_EQ(LinesOf(m_log, Origin("Instance")), (Lines{{ZV_LOG_INFO, ""}}));
    EXPECT_EQ(LinesOf(m_log, Origin(Kind().className)),
              (Lines{{ZV_LOG_ERROR, "partner's name: " + partner}}));
    for (LogLine const& line : m_log.Lines()) {
        EXPECT_EQ(line.tag, "ZV_IPTV_API");
    }
}

TEST_P(EveryProxy, DestructionLogsNothing)
{
    ASSERT_NE(Create(), nullptr);
    m_log.Clear();
    Kind().destroy();
    for (LogLine const& line : m_log.Lines()) {
        EXPECT_THAT(line.Origin(), testing::Not(StartsWith(Kind().file))) << line.line;
    }
}

/// The client of the helper bus lives until the channel has ended.
TEST_P(EveryProxy, DestructionEndsTheChannelBeforeTheHelperBusClient)
{
    ASSERT_NE(Create(), nullptr);
    m_log.Clear();
    Kind().destroy();
    EXPECT_THAT(m_log.Messages(), ElementsAre("ctor", "", "Sending", "SendDone", "", "dtor"));
    EXPECT_EQ(LinesOf(m_log, "ProxyDBusHelper.cpp: ~CProxyDBusHelper"), (Lines{{ZV_LOG_ERROR, ""}}));
}

TEST_P(EveryProxy, ReturnsTheExistingObject)
{
    void* const first = Create(5);
    m_log.Clear();
    EXPECT_EQ(Create(9), first);
    EXPECT_EQ(m_service.Announcements().size(), 1U);
    ASSERT_EQ(m_log.Lines().size(), 1U);
    EXPECT_EQ(LinesOf(m_log, Origin("Instance")), (Lines{{ZV_LOG_INFO, ""}}));
}

TEST_P(EveryProxy, DestroyingTwiceOrNothingIsHarmless)
{
    m_log.Clear();
    EXPECT_EQ(Kind().destroy(), 0);
    EXPECT_TRUE(m_log.Lines().empty());
    ASSERT_NE(Create(), nullptr);
    EXPECT_EQ(Kind().destroy(), 0);
    m_log.Clear();
    EXPECT_EQ(Kind().destroy(), 0);
    EXPECT_TRUE(m_log.Lines().empty());
    EXPECT_EQ(m_service.Announcements().size(), 2U);
}

TEST_P(EveryProxy, RemovesItsObjectFromTheBus)
{
    CProxyDBusHelper const keepsTheConnection("OTHER");
    ASSERT_NE(Create(), nullptr);
    std::string const client = m_service.ClientOf(Kind().type);
    EXPECT_EQ(CallClient(Kind().type).kind, WireKind::Reply);
    Kind().destroy();
    EXPECT_EQ(m_service.CallClient(client, Kind().type, WireEntries()).errorName,
              "org.freedesktop.DBus.Error.UnknownMethod");
}

TEST_P(EveryProxy, IsReturnedAlsoWhenTheHandshakeFails)
{
    for (WireAnswer const& answer :
         {WireAnswer(Pairs({{"dbusname", ""}})), WireAnswer(WirePairs()),
          WireAnswer(Pairs({{"dbusname", "odd"}})), WireAnswer::Error("org.corvel.test.Failed", "no")}) {
        m_service.AnswerAnnouncements([&](Announcement const&) { return answer; });
        m_log.Clear();
        ASSERT_NE(Create(), nullptr);
        EXPECT_TRUE(m_log.Has(ZV_LOG_ERROR, "Error while g_dbus_proxy_new_sync"));
        EXPECT_FALSE(m_log.Has(ZV_LOG_INFO, "handshake done"));
        Kind().destroy();
    }
    m_service.AnswerAnnouncements([](Announcement const&) { return Pairs({{"dbusname", ""}}); });
    ASSERT_NE(Create(), nullptr);
    EXPECT_EQ(LinesOf(m_log, Origin(Kind().className)).back().second, "partner's name: ");
}

TEST_P(EveryProxy, CallsThePartnerThatTheServiceReturns)
{
    WirePeer partner;
    partner.SetHandler([](WireMessage const&) { return Entries({{"result_internal", "1"}}); });
    m_service.SetPartnerName(partner.Name());
    Kind().request(Create());
    EXPECT_TRUE(partner.WaitFor(IsCall("Send")));
    EXPECT_TRUE(m_service.Requests().empty());
}

INSTANTIATE_TEST_SUITE_P(Proxies, EveryProxy, testing::ValuesIn(AllKinds()), KindName);

class ProxyWithHandle : public EveryProxy
{
};

TEST_P(ProxyWithHandle, SendsTheHandleOfItsCreation)
{
    struct
    {
        int profile;
        int id;
        char const* number;
    } const handles[] = {{1, 0, "256"},     {2, 5, "517"},    {65537, 0, "256"},  {1, 300, "556"},
                         {1, 65537, "257"}, {1, -1, "65791"}, {-1, 0, "16776960"}};
    for (auto const& [profile, id, number] : handles) {
        SCOPED_TRACE(number);
        void* const object = Kind().create(static_cast<IPTVProfile>(profile), id);
        ASSERT_NE(object, nullptr);
        EXPECT_EQ(Kind().create(static_cast<IPTVProfile>(7), 9), object); // does not change it
        Kind().request(object);
        EXPECT_EQ(m_service.LastRequest().Value("handleID"), number);
        Kind().destroy();
    }
}

INSTANTIATE_TEST_SUITE_P(Proxies, ProxyWithHandle, testing::ValuesIn(KindsWithHandle()), KindName);

class ProxyWithoutService : public ProxyTest, public testing::WithParamInterface<ProxyKind>
{
};

TEST_P(ProxyWithoutService, IsNull)
{
    m_log.Clear();
    EXPECT_EQ(GetParam().create(IPTV_PROFILE_DEFAULT, 0), nullptr);
    EXPECT_EQ(LinesOf(m_log, std::string(GetParam().file) + ": Instance"),
              (Lines{{ZV_LOG_INFO, ""}, {ZV_LOG_ERROR, "iptv-serivce did not launched"}}));
    EXPECT_EQ(m_log.Lines().size(), 2U);
}

TEST_P(ProxyWithoutService, CanBeCreatedOnceTheServiceRuns)
{
    EXPECT_EQ(GetParam().create(IPTV_PROFILE_DEFAULT, 3), nullptr);
    FakeService service;
    void* const object = GetParam().create(IPTV_PROFILE_DEFAULT, 4);
    ASSERT_NE(object, nullptr);
    GetParam().request(object);
    EXPECT_EQ(service.LastRequest().Value("handleID"), "260");
    GetParam().destroy();
}

INSTANTIATE_TEST_SUITE_P(Proxies, ProxyWithoutService, testing::ValuesIn(KindsWithHandle()), KindName);

} // namespace
