// SPDX-License-Identifier: MIT
#include "MatchRules.h"
#include "ProxyKinds.h"
#include "ProxyTest.h"

#include <memory>

using namespace zviptv::test;

namespace {

std::size_t Ends(LogCapture const& log)
{
    return LinesOf(log, "ProxyDBusHelper.cpp: ~CProxyDBusHelper").size();
}

/// The two proxies that destroy themselves with the service.
class SelfEndingProxy : public ServiceTest, public testing::WithParamInterface<ProxyKind>
{
protected:
    static ProxyKind const& Kind() { return GetParam(); }
    static void* Create(int id) { return Kind().create(IPTV_PROFILE_DEFAULT, id); }

    bool WaitForTheEnd() const
    {
        return RunUntil([this] { return Ends(m_log) == 1; });
    }
};

TEST_P(SelfEndingProxy, EndsWithTheService)
{
    ASSERT_NE(Create(5), nullptr);
    m_service.Vanish();
    ASSERT_TRUE(WaitForTheEnd());
    std::string const name = Kind().className;
    EXPECT_EQ(LinesOf(m_log, std::string(Kind().file) + ": m_DisconnectedCB"),
              (Lines{{ZV_LOG_INFO, "Disconnencted " + name}, {ZV_LOG_ERROR, "Destroy " + name}}));
    EXPECT_TRUE(m_log.Has(ZV_LOG_ERROR, "Connection lost with partner id=" + m_service.Name()));
    EXPECT_EQ(Create(5), nullptr);
    EXPECT_TRUE(m_log.Has(ZV_LOG_ERROR, "iptv-serivce did not launched"));
}

TEST_P(SelfEndingProxy, TheNextObjectHasANewChannel)
{
    ASSERT_NE(Create(5), nullptr);
    m_service.Vanish();
    ASSERT_TRUE(WaitForTheEnd());
    FakeService successor(m_bus.Address());
    void* const object = Create(9);
    ASSERT_NE(object, nullptr);
    EXPECT_EQ(m_log.Count(std::string("Constructor - ") + Kind().type), 2U);
    ASSERT_TRUE(successor.WaitForAnnouncement(Kind().type, "y"));
    Kind().request(object);
    EXPECT_EQ(successor.LastRequest().Value("handleID"), "265");
    Kind().destroy();
    EXPECT_EQ(Ends(m_log), 2U);
}

TEST_P(SelfEndingProxy, AnnouncesItsEndWhenOnlyThePartnerLeaves)
{
    WirePeer partner;
    m_service.SetPartnerName(partner.Name());
    ASSERT_NE(Create(0), nullptr);
    partner.Disconnect();
    ASSERT_TRUE(WaitForTheEnd());
    EXPECT_TRUE(m_service.WaitForAnnouncement(Kind().type, "n"));
    EXPECT_EQ(m_service.Announcements().size(), 2U);
}

TEST_P(SelfEndingProxy, StaysWhenOnlyTheHelperBusLeaves)
{
    WirePeer partner;
    partner.SetHandler([](WireMessage const&) { return Entries({{"result_internal", "1"}}); });
    m_service.SetPartnerName(partner.Name());
    void* const object = Create(0);
    m_service.Vanish();
    ASSERT_TRUE(partner.WaitForOwner("org.corvel.zviptvapi.dbushelper", false));
    RunPending();
    EXPECT_EQ(Ends(m_log), 0U);
    EXPECT_EQ(Create(0), object);
    Kind().request(object);
}

TEST_P(SelfEndingProxy, EndsWithoutAPartner)
{
    std::string gone;
    {
        WirePeer const peer;
        gone = peer.Name();
    }
    m_service.SetPartnerName(gone);
    ASSERT_NE(Create(0), nullptr);
    EXPECT_TRUE(WaitForTheEnd());
}

TEST_P(SelfEndingProxy, DestroyBeforeTheLossIsHandledEndsIt)
{
    ASSERT_NE(Create(0), nullptr);
    m_service.Vanish();
    ASSERT_TRUE(WirePeer().WaitForOwner(m_service.Name(), false));
    Kind().destroy();
    FakeService successor(m_bus.Address());
    void* const object = Create(0);
    RunPending();
    EXPECT_EQ(Create(0), object);
    EXPECT_EQ(Ends(m_log), 1U);
    Kind().request(object);
    Kind().destroy();
}

TEST_P(SelfEndingProxy, LeavesNothingOnTheBusOverManyRestartsOfTheService)
{
    ConnectionPtr const connection = SharedConnection(); // keeps it
    unsigned const before = MatchRules();
    m_service.Vanish();
    for (std::size_t round = 1; round <= 40; ++round) {
        FakeService service(m_bus.Address());
        void* const object = Create(0);
        ASSERT_NE(object, nullptr);
        Kind().request(object);
        service.Vanish();
        ASSERT_TRUE(RunUntil([&] { return Ends(m_log) == round; }));
    }
    EXPECT_EQ(MatchRules(), before);
}

std::vector<ProxyKind> SelfEnding()
{
    std::vector<ProxyKind> kinds = KindsWithHandle();
    kinds.pop_back();
    return kinds;
}

INSTANTIATE_TEST_SUITE_P(Proxies, SelfEndingProxy, testing::ValuesIn(SelfEnding()), KindName);

/// The two proxies that survive the service.
class StayingProxy : public ServiceTest, public testing::WithParamInterface<ProxyKind>
{
};

TEST_P(StayingProxy, StaysWithoutTheServiceUntilItIsDestroyed)
{
    ProxyKind const& kind = GetParam();
    void* const object = kind.create(IPTV_PROFILE_DEFAULT, 5);
    m_service.Vanish();
    ASSERT_TRUE(RunUntil(
        [&] { return m_log.Has(ZV_LOG_ERROR, "Connection lost with partner id=" + m_service.Name()); }));
    EXPECT_EQ(Ends(m_log), 0U);
    EXPECT_EQ(kind.create(IPTV_PROFILE_DEFAULT, 9), object);
    FakeService successor(m_bus.Address());
    EXPECT_EQ(kind.create(IPTV_PROFILE_DEFAULT, 9), object);
    EXPECT_TRUE(successor.Announcements().empty());
    kind.destroy();
    kind.request(kind.create(IPTV_PROFILE_DEFAULT, 9));
    EXPECT_EQ(successor.Requests().size(), 1U);
    kind.destroy();
}

INSTANTIATE_TEST_SUITE_P(Proxies, StayingProxy, testing::Values(KindsWithHandle().back(), GuideKind()),
                         KindName);

using Lifecycle = ServiceTest;

TEST_F(Lifecycle, CallsOfStayingProxiesFailWithoutAService)
{
    IIPTVDataSubscriber& subscriber = *CreateSubscriber();
    IIPGUtil& guide = *CreateGuide();
    m_service.Vanish();
    std::string const lost = "Connection lost with partner id=" + m_service.Name();
    ASSERT_TRUE(RunUntil([&] { return m_log.Count(lost) == 2; }));
    std::string genre;
    EXPECT_FALSE(guide.GetGenre(1, genre));
    int key = 0;
    EXPECT_TRUE(subscriber.SubscribeForPES([](ZVPESData&, void*) {}, nullptr, key));
    EXPECT_EQ(m_log.Count("Connection not set."), 2U);
    EXPECT_EQ(m_log.Count("SendMessage failed."), 2U);
}

TEST_F(Lifecycle, CallFailsAtOnceWhenTheServiceDies)
{
    IPlayerControl& player = *CreatePlayer();
    m_service.AnswerNothing("MuteAudio");
    auto call = std::async(std::launch::async, [&] { return player.MuteAudio(true); });
    ASSERT_TRUE(m_service.WaitForRequest("MuteAudio"));
    m_service.Vanish();
    EXPECT_FALSE(call.get());
    EXPECT_TRUE(RunUntil([&] { return Ends(m_log) == 1; }));
}

} // namespace
