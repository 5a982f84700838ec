// SPDX-License-Identifier: MIT
#include "ProxyKinds.h"
#include "ProxyTest.h"
#include "WaitUntil.h"

#include <zviptv/ProxyDBusHelper.h>

#include <atomic>
#include <functional>
#include <memory>
#include <thread>

using namespace zviptv::test;

namespace {

/// Lets a number of threads start their work together.
class Together
{
public:
    explicit Together(std::vector<std::function<void()>> const& works)
    {
        std::shared_future<void> const start = m_start.get_future().share();
        for (std::function<void()> const& work : works) {
            m_threads.emplace_back([start, work] {
                start.wait();
                work();
            });
        }
        m_start.set_value();
    }

    ~Together()
    {
        for (std::thread& thread : m_threads) {
            thread.join();
        }
    }

    Together(Together const&) = delete;
    Together& operator=(Together const&) = delete;

private:
    std::promise<void> m_start;
    std::vector<std::thread> m_threads;
};

/// Proxies used from several threads while one more iterates the context.
class LifecycleThreads : public ProxyTest
{
protected:
    /// Every channel has ended once.
    void ExpectNoChannelLeft()
    {
        DestroyAll();
        m_fence.reset();
        std::size_t made = 0;
        for (std::string const& message : m_log.Messages()) {
            made += message.rfind("Constructor - ", 0) == 0 ? 1U : 0U;
        }
        EXPECT_EQ(LinesOf(m_log, "ProxyDBusHelper.cpp: ~CProxyDBusHelper").size(), made);
    }

    /// Returns when all earlier messages of `service` have been dispatched.
    void PassFence(FakeService& service)
    {
        EXPECT_EQ(service.CallClient(m_fence->GetPublicName(), "FENCE", WireEntries()).kind, WireKind::Reply);
    }

    std::unique_ptr<CProxyDBusHelper> m_fence = std::make_unique<CProxyDBusHelper>("FENCE");
    WirePeer m_observer;
    LoopThread m_loop;
};

TEST_F(LifecycleThreads, DestroyWhileTheServiceVanishes)
{
    for (int round = 0; round < 100; ++round) {
        FakeService service;
        ASSERT_NE(CreatePlayer(), nullptr);
        ASSERT_NE(CreateBroadcast(), nullptr);
        {
            Together const together({[&] { service.Vanish(); },
                                     [] { CIPTVServiceAPI::DestroyPlayerControl(); },
                                     [] { CIPTVServiceAPI::DestroyBroadcastData(); }});
        }
        ASSERT_TRUE(m_observer.WaitForOwner("org.corvel.zviptvapi.dbushelper", false));
    }
    ExpectNoChannelLeft();
}

TEST_F(LifecycleThreads, CreateWhileTheServiceVanishes)
{
    for (int round = 0; round < 50; ++round) {
        FakeService service;
        {
            Together const together({[&] { service.Vanish(); }, [] { CreatePlayer(); },
                                     [] { CreateBroadcast(); }, [] { CreateSubscriber(); },
                                     [] { CreateGuide(); }});
        }
        ASSERT_TRUE(m_observer.WaitForOwner("org.corvel.zviptvapi.dbushelper", false));
        DestroyAll();
    }
    ExpectNoChannelLeft();
}

TEST_F(LifecycleThreads, EightThreadsCreateOneObject)
{
    FakeService service;
    for (ProxyKind const& kind : AllKinds()) {
        for (int round = 0; round < 10; ++round) {
            service.ClearRecords();
            std::vector<void*> objects(8, nullptr);
            std::vector<std::function<void()>> works;
            for (void*& object : objects) {
                works.emplace_back([&object, &kind] { object = kind.create(IPTV_PROFILE_DEFAULT, 1); });
            }
            {
                Together const together(works);
            }
            EXPECT_NE(objects.front(), nullptr);
            EXPECT_EQ(objects, std::vector<void*>(8, objects.front()));
            EXPECT_EQ(service.Announcements().size(), 1U);
            kind.destroy();
        }
    }
    ExpectNoChannelLeft();
}

TEST_F(LifecycleThreads, CreateAndDestroyAtTheSameTime)
{
    FakeService service;
    for (ProxyKind const& kind : AllKinds()) {
        auto const createAndDestroy = [&kind] {
            for (int i = 0; i < 20; ++i) {
                EXPECT_NE(kind.create(IPTV_PROFILE_DEFAULT, 1), nullptr);
                kind.destroy();
            }
        };
        Together const together({createAndDestroy, createAndDestroy, createAndDestroy, createAndDestroy});
    }
    ExpectNoChannelLeft();
}

std::atomic<int> calls{0};
std::atomic<int> inside{0};

void CountPES(ZVPESData& /*pes*/, void* /*userData*/)
{
    ++inside;
    ++calls;
    --inside;
}

WireEntries const Pes = Entries({{"functionname", "PESCB"},
                                 {"pesDataSize", "3"},
                                 {"pesType", "2"},
                                 {"pesPID", "256"},
                                 {"pesPTS", "1"},
                                 {"pesData", "abc"}});

void Flood(FakeService& service, std::size_t count)
{
    service.Peer().EmitMany({service.ClientOf("IPTVDATASUBSCRIBER"), ChannelPath("IPTVDATASUBSCRIBER"),
                             "org.corvel.zviptvapi.DbusCommunication", "SendSignal"},
                            Pes, count);
}

TEST_F(LifecycleThreads, NoCallbackAfterDestroyDuringAFlood)
{
    FakeService service;
    for (int round = 0; round < 30; ++round) {
        IIPTVDataSubscriber* const subscriber = CreateSubscriber();
        calls = 0;
        int key = 0;
        ASSERT_TRUE(subscriber->SubscribeForPES(CountPES, nullptr, key));
        Flood(service, 500);
        ASSERT_TRUE(WaitUntil([] { return calls > 5; }, patience));
        CIPTVServiceAPI::DestroyIPTVDataSubscriber();
        EXPECT_EQ(inside, 0);
        int const atTheEnd = calls;
        PassFence(service);
        EXPECT_EQ(calls, atTheEnd);
    }
    ExpectNoChannelLeft();
}

std::promise<void>* entered = nullptr;
std::promise<void>* left = nullptr;

/// Destroys its proxy, makes another one, and repeats this.
void Churn(ZVPESData& /*pes*/, void* /*userData*/)
{
    entered->set_value();
    for (int i = 0; i < 2; ++i) {
        CIPTVServiceAPI::DestroyIPTVDataSubscriber();
        IIPTVDataSubscriber* subscriber = nullptr;
        CIPTVServiceAPI::CreateIPTVDataSubscriber(IPTV_PROFILE_DEFAULT, 0, &subscriber);
        EXPECT_NE(subscriber, nullptr);
    }
    left->set_value();
}

TEST_F(LifecycleThreads, CallbackDestroysAndCreatesWhileAnotherThreadDestroys)
{
    FakeService service;
    for (int round = 0; round < 50; ++round) {
        std::promise<void> enteredNow;
        std::promise<void> leftNow;
        entered = &enteredNow;
        left = &leftNow;
        IIPTVDataSubscriber* const subscriber = CreateSubscriber();
        int key = 0;
        ASSERT_TRUE(subscriber->SubscribeForPES(Churn, nullptr, key));
        Flood(service, 1);
        enteredNow.get_future().wait();
        CIPTVServiceAPI::DestroyIPTVDataSubscriber();
        leftNow.get_future().wait();
        DestroyAll();
    }
    ExpectNoChannelLeft();
}

/// Ends a proxy that ends itself, too, while it does.
void DestroyPlayer(ZVPESData& /*pes*/, void* /*userData*/)
{
    CIPTVServiceAPI::DestroyPlayerControl();
    ++calls;
}

TEST_F(LifecycleThreads, CallbackDestroysAProxyThatVanishesWithTheService)
{
    calls = 0;
    for (int round = 0; round < 30; ++round) {
        FakeService service;
        ASSERT_NE(CreatePlayer(), nullptr);
        IIPTVDataSubscriber* const subscriber = CreateSubscriber();
        int key = 0;
        ASSERT_TRUE(subscriber->SubscribeForPES(DestroyPlayer, nullptr, key));
        Flood(service, 3);
        service.Peer().Sync();
        {
            Together const together(
                {[&] { service.Vanish(); }, [] { CIPTVServiceAPI::DestroyIPTVDataSubscriber(); }});
        }
        ASSERT_TRUE(m_observer.WaitForOwner("org.corvel.zviptvapi.dbushelper", false));
        DestroyAll();
    }
    EXPECT_GT(calls, 0);
    ExpectNoChannelLeft();
}

} // namespace
