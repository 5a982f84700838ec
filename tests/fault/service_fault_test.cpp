// SPDX-License-Identifier: MIT
#include "FactoryObjects.h"
#include "FaultTest.h"
#include "MatchRules.h"

#include <future>
#include <thread>

using namespace zviptv::test;

namespace {

/// All four objects of the factory, and a loop on a separate thread, as in an application.
class ServiceFault : public FaultTest
{
protected:
    /// Each of the objects reaches the service.
    void ExpectAllWork()
    {
        ASSERT_TRUE(m_objects.AreThere());
        EXPECT_EQ(m_objects.Answered(), 3);
        EXPECT_TRUE(m_objects.Subscribe(false));
    }

    void AwaitNoService() { ASSERT_TRUE(m_observer.WaitForOwner(HelperName, false)); }

    std::size_t CountOf(std::string const& message) const { return m_log.Count(message); }

    FactoryObjects m_objects;
    LogCapture m_log;
    WirePeer m_observer;
    CProxyDBusHelper m_other{"FENCE"}; // keeps the connection
    LoopThread m_loop;
};

TEST_F(ServiceFault, F04_DestroyOnOneThreadWhileTheVanishedHandlerDestroys)
{
    int const rounds = ShortOrLong(10, 1000);
    int round = 0;
    std::size_t byHandler = 0;
    Repeat(rounds, [&] {
        m_log.Clear();
        PeerProcess service({"service"});
        CIPTVServiceAPI::CreatePlayerControl(IPTV_PROFILE_DEFAULT, 0, &m_objects.player);
        CIPTVServiceAPI::CreateBroadcastData(IPTV_PROFILE_DEFAULT, 0, &m_objects.broadcast);
        ASSERT_NE(m_objects.player, nullptr);
        ASSERT_NE(m_objects.broadcast, nullptr);
        std::thread destroyer([this, lead = ++round % 8] {
            for (int i = 0; i < lead * 200; ++i) {
                std::this_thread::yield(); // before, during and after the handling of the loss
            }
            if (lead == 7) {
                WaitUntil([this] { return CountOf("Destroy CPlayerControlProxy") == 1; }, patience);
            }
            CIPTVServiceAPI::DestroyPlayerControl();
            CIPTVServiceAPI::DestroyBroadcastData();
        });
        service.Kill();
        destroyer.join();
        AwaitNoService();
        m_loop.Run([] {});
        ASSERT_EQ(CountOf("Constructor - PLAYERCONTROL"), 1U);
        std::size_t ended = 0;
        for (LogLine const& line : m_log.Lines()) {
            ended += line.Origin() == "ProxyDBusHelper.cpp: ~CProxyDBusHelper" ? 1U : 0U;
        }
        ASSERT_EQ(ended, 2U) << "each channel ends once";
        byHandler += CountOf("Destroy CPlayerControlProxy");
    });
    EXPECT_GT(byHandler, 0U);
    SetRemark("the disconnect handler destroyed " + std::to_string(byHandler) + " proxies");
}

TEST_F(ServiceFault, F12_ServiceRestartsWithAllProxiesLive)
{
    auto service = std::make_unique<PeerProcess>(std::vector<std::string>{"service"});
    AllowMemory(512);
    m_objects.Create();
    ExpectAllWork();
    unsigned const rules = MatchRules();
    Repeat(ShortOrLong(5, 40), [&] {
        m_log.Clear();
        service->Kill();
        AwaitNoService();
        ASSERT_TRUE(WaitUntil(
            [&] {
                return CountOf("Destroy CPlayerControlProxy") == 1 &&
                       CountOf("Destroy CBroadcastDataProxy") == 1;
            },
            patience));
        m_loop.Run([] {}); // the loop has handled it
        std::string genre;
        EXPECT_FALSE(m_objects.guide->GetGenre(1, genre));
        EXPECT_FALSE(m_objects.subscriber->UnSubscribeForPES(0));
        service = std::make_unique<PeerProcess>(std::vector<std::string>{"service"});
        FactoryObjects::Destroy();
        m_objects.Create();
        ExpectAllWork();
    });
    EXPECT_EQ(MatchRules(), rules) << "left on the bus";
}

} // namespace
