// SPDX-License-Identifier: MIT
#include "ProxyTest.h"

#include <zviptv/Failure.h>

#include <gio/gio.h>

#include <chrono>
#include <cstdlib>
#include <memory>
#include <thread>
#include <vector>

using namespace zviptv::test;

namespace {

/// Objects of a bus that has died and been started again.
class FormerBus : public ProxyTest
{
protected:
    FormerBus() : m_service(std::make_unique<FakeService>())
    {
        GDBusConnection* const shared = g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, nullptr);
        g_dbus_connection_set_exit_on_close(shared, FALSE);
        CreateGuide();
        CreateSubscriber();
        g_object_unref(shared);
    }

    void RestartBusAndService()
    {
        m_service.reset();
        m_bus.Restart();
        m_service = std::make_unique<FakeService>();
    }

    std::unique_ptr<FakeService> m_service;
};

TEST_F(FormerBus, ObjectsAnnounceNoDepartureOnALaterBus)
{
    RestartBusAndService();
    DestroyAll();
    CreatePlayer();
    ASSERT_TRUE(m_service->WaitForAnnouncement("PLAYERCONTROL", "y"));
    EXPECT_EQ(m_service->Announcements().size(), 1U) << "only the new object's";
}

TEST_F(FormerBus, CreateReplacesObjectsThatWereNotDestroyed)
{
    RestartBusAndService();
    std::string genre;
    EXPECT_FALSE(CreateGuide() == nullptr);
    EXPECT_TRUE(CreateGuide()->GetGenre(1, genre));
    CreateSubscriber();
    EXPECT_TRUE(m_service->WaitForAnnouncement("IPTVDATASUBSCRIBER", "y"));
    EXPECT_EQ(m_service->Announcements().size(), 2U) << "each once, and no departure";
}

BusOptions SeparateBus()
{
    BusOptions options;
    options.setEnvironment = false;
    return options;
}

/// An object that ends with its bus opens no connection, which could take long.
TEST_F(FormerBus, ObjectsEndAtOnceWhileTheNextBusIsStopped)
{
    IPlayerControl* const player = CreatePlayer();
    ASSERT_NE(player, nullptr);
    PrivateBus next(SeparateBus());
    next.Stop();
    setenv("DBUS_SYSTEM_BUS_ADDRESS", next.Address().c_str(), 1);
    auto const start = std::chrono::steady_clock::now();
    m_bus.Kill();
    EXPECT_TRUE(RunUntil(
        [player] { return !player->MuteAudio(true) && ZVGetLastFailure().kind == ZV_FAILURE_GONE; }));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1900));
}

TEST(StoppedBus, CreateReturnsWithin4SecondsOnAnyNumberOfThreads)
{
    PrivateBus bus;
    bus.Stop();
    auto const start = std::chrono::steady_clock::now();
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([i] {
            IPlayerControl* player = nullptr;
            IIPGUtil* guide = nullptr;
            i % 2 == 0 ? CIPTVServiceAPI::CreateIPGUtil(&guide)
                       : CIPTVServiceAPI::CreatePlayerControl(IPTV_PROFILE_DEFAULT, 0, &player);
            EXPECT_EQ(ZVGetLastFailure().kind, i % 2 == 0 ? ZV_FAILURE_NO_BUS : ZV_FAILURE_TIMED_OUT);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(4500));
    CIPTVServiceAPI::DestroyIPGUtil();
}

} // namespace
