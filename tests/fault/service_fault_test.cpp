#include "FaultTest.h"

#include <zviptv/IPTVServiceAPI.h>

#include <future>
#include <thread>

using namespace zviptv::test;

namespace {

constexpr char HelperName[] = "org.corvel.zviptvapi.dbushelper";

/// All four objects of the factory, and a loop on a thread of its own, as in an application.
class ServiceFault : public FaultTest
{
protected:
    ~ServiceFault() override { DestroyAll(); }

    static void DestroyAll()
    {
        CIPTVServiceAPI::DestroyPlayerControl();
        CIPTVServiceAPI::DestroyBroadcastData();
        CIPTVServiceAPI::DestroyIPTVDataSubscriber();
        CIPTVServiceAPI::DestroyIPGUtil();
    }

    void CreateAll()
    {
        m_player = nullptr;
        m_broadcast = nullptr;
        m_subscriber = nullptr;
        m_guide = nullptr;
        CIPTVServiceAPI::CreatePlayerControl(IPTV_PROFILE_DEFAULT, 0, &m_player);
        CIPTVServiceAPI::CreateBroadcastData(IPTV_PROFILE_DEFAULT, 0, &m_broadcast);
        CIPTVServiceAPI::CreateIPTVDataSubscriber(IPTV_PROFILE_DEFAULT, 0, &m_subscriber);
        CIPTVServiceAPI::CreateIPGUtil(&m_guide);
    }

    /// Each of the objects reaches the service.
    void ExpectAllWork()
    {
        int key = 0;
        std::string genre;
        ASSERT_TRUE(m_player != nullptr && m_broadcast != nullptr && m_subscriber != nullptr &&
                    m_guide != nullptr);
        EXPECT_TRUE(m_player->MuteAudio(true));
        EXPECT_TRUE(m_broadcast->UnMuteByRatingPin());
        EXPECT_TRUE(m_subscriber->SubscribeForPES([](ZVPESData&, void*) {}, nullptr, key));
        EXPECT_TRUE(m_guide->GetGenre(1, genre));
    }

    void AwaitNoService() { ASSERT_TRUE(m_observer.WaitForOwner(HelperName, false)); }

    std::size_t CountOf(std::string const& message) const { return m_log.Count(message); }

    IPlayerControl* m_player = nullptr;
    IBroadcastData* m_broadcast = nullptr;
    IIPTVDataSubscriber* m_subscriber = nullptr;
    IIPGUtil* m_guide = nullptr;
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
        CIPTVServiceAPI::CreatePlayerControl(IPTV_PROFILE_DEFAULT, 0, &m_player);
        CIPTVServiceAPI::CreateBroadcastData(IPTV_PROFILE_DEFAULT, 0, &m_broadcast);
        ASSERT_NE(m_player, nullptr);
        ASSERT_NE(m_broadcast, nullptr);
        std::thread destroyer([lead = ++round % 8] {
            for (int i = 0; i < lead * 200; ++i) {
                std::this_thread::yield(); // before, in, and after the time when the loss is handled
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
    Remark(std::to_string(byHandler) + " times the handler came to destroy");
}

TEST_F(ServiceFault, F12_ServiceRestartsWithAllProxiesLive)
{
    auto service = std::make_unique<PeerProcess>(std::vector<std::string>{"service"});
    CreateAll();
    ExpectAllWork();
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
        m_loop.Run([] {}); // they have done so
        int key = 0;
        std::string genre;
        EXPECT_FALSE(m_guide->GetGenre(1, genre));
        EXPECT_FALSE(m_subscriber->UnSubscribeForPES(key));
        service = std::make_unique<PeerProcess>(std::vector<std::string>{"service"});
        DestroyAll();
        CreateAll();
        ExpectAllWork();
    });
}

} // namespace
