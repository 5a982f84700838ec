// SPDX-License-Identifier: MIT
#include "ProxyKinds.h"
#include "ProxyTest.h"
#include "WaitUntil.h"

#include <zviptv/ProxyDBusHelper.h>

using namespace zviptv::test;

namespace {

/// Calls on objects that have been destroyed, or that are destroyed while the call enters.
class GoneObject : public ServiceTest, public testing::WithParamInterface<ProxyKind>
{
protected:
    static ProxyKind const& Kind() { return GetParam(); }
    static void* Create() { return Kind().create(IPTV_PROFILE_DEFAULT, 0); }

    std::size_t Ends() const { return LinesOf(m_log, "ProxyDBusHelper.cpp: ~CProxyDBusHelper").size(); }

    /// A call on another thread, which stops at the log line of `function`.
    std::future<bool> CallHeldAt(std::string const& function, void* object)
    {
        m_log.HoldAt(Kind().Origin(function));
        auto call = std::async(std::launch::async, [object] { return Kind().call(object); });
        EXPECT_TRUE(m_log.WaitUntilHeld());
        return call;
    }

    void ExpectRefused(void* object)
    {
        m_service.ClearRecords();
        m_log.Clear();
        EXPECT_FALSE(Kind().call(object));
        EXPECT_EQ(LinesOf(m_log, Kind().Origin(Kind().method)),
                  (Lines{{ZV_LOG_INFO, ""},
                         {ZV_LOG_ERROR, "The object has been destroyed; create it again"},
                         {ZV_LOG_ERROR, "SendMessage failed."}}));
        EXPECT_TRUE(m_service.Requests().empty());
    }

    CProxyDBusHelper m_other{"FENCE"}; // keeps the connection
};

INSTANTIATE_TEST_SUITE_P(Proxies, GoneObject, testing::ValuesIn(AllKinds()), KindName);

TEST_P(GoneObject, RefusesCallsUntilItIsCreatedAgain)
{
    void* const object = Create();
    Kind().destroy();
    ExpectRefused(object);
    auto onAnotherThread = std::async(std::launch::async, [object] { return Kind().call(object); });
    EXPECT_FALSE(onAnotherThread.get());
    void* const next = Create();
    Kind().request(next);
}

TEST_P(GoneObject, RefusesCallsAfterTheServiceLeftAndDestroy)
{
    void* const object = Create();
    std::string const lost = "Connection lost with partner id=" + m_service.Name();
    m_service.Vanish();
    ASSERT_TRUE(RunUntil([&] { return m_log.Has(ZV_LOG_ERROR, lost); }));
    RunPending();
    Kind().destroy(); // unless it has destroyed itself
    EXPECT_EQ(Ends(), 1U);
    ExpectRefused(object);
    EXPECT_EQ(Kind().create(IPTV_PROFILE_DEFAULT, 0) == nullptr, Kind().type != std::string("IPGUTIL"));
    FakeService const successor(m_bus.Address());
    Kind().destroy();
    Kind().request(Create());
}

TEST_P(GoneObject, CallDuringADestroyFailsOrIsAnswered)
{
    LoopThread const loop;
    for (int round = 0; round < 5; ++round) {
        void* const object = Create();
        auto call = CallHeldAt(Kind().method, object);
        Kind().destroy();
        m_log.Release();
        call.get();
        ExpectRefused(object);
    }
}

TEST_P(GoneObject, CallDuringARecreationReturns)
{
    LoopThread const loop;
    void* const object = Create();
    auto call = CallHeldAt(Kind().method, object);
    Kind().destroy();
    void* const next = Create();
    m_log.Release();
    call.get();
    if (Kind().type != std::string("IPTVDATASUBSCRIBER")) { // whose second key of a second is refused
        Kind().request(next);
    }
}

TEST_P(GoneObject, CallDuringTheDeathOfTheServiceFails)
{
    LoopThread const loop;
    void* const object = Create();
    auto call = CallHeldAt(Kind().method, object);
    std::string const lost = "Connection lost with partner id=" + m_service.Name();
    m_service.Vanish();
    ASSERT_TRUE(WaitUntil([&] { return m_log.Has(ZV_LOG_ERROR, lost); }, patience));
    Kind().destroy();
    m_log.Release();
    EXPECT_FALSE(call.get());
    ExpectRefused(object);
}

using GoneSubscriber = ServiceTest;

TEST_F(GoneSubscriber, RefusesEveryCall)
{
    IIPTVDataSubscriber* const subscriber = CreateSubscriber();
    CIPTVServiceAPI::DestroyIPTVDataSubscriber();
    m_service.ClearRecords();
    int key = 42;
    EXPECT_FALSE(subscriber->SubscribeForCaption([](ZVCaption&, void*) {}, nullptr, key));
    EXPECT_FALSE(subscriber->SubscribeForPES([](ZVPESData&, void*) {}, nullptr, key));
    EXPECT_EQ(key, 42);
    EXPECT_FALSE(subscriber->UnsubscribeForCaption(key));
    EXPECT_FALSE(subscriber->UnSubscribeForPES(key));
    EXPECT_EQ(m_log.Count("The object has been destroyed; create it again"), 4U);
    EXPECT_TRUE(m_service.Requests().empty());
}

TEST_F(GoneSubscriber, RequestDuringADestroyReturns)
{
    CProxyDBusHelper const other("FENCE"); // keeps the connection
    LoopThread const loop;
    for (int round = 0; round < 5; ++round) {
        IIPTVDataSubscriber* const subscriber = CreateSubscriber();
        m_log.HoldAt("IPTVDataSubscriberProxy.cpp: m_RequestPESCB");
        auto subscribed = std::async(std::launch::async, [subscriber] {
            int key = 0;
            return subscriber->SubscribeForPES([](ZVPESData&, void*) {}, nullptr, key);
        });
        ASSERT_TRUE(m_log.WaitUntilHeld());
        CIPTVServiceAPI::DestroyIPTVDataSubscriber();
        m_log.Release();
        EXPECT_FALSE(subscribed.get());
    }
}

using GonePlayer = ServiceTest;

TEST_F(GonePlayer, LeavesOutParametersAtTheirStartValues)
{
    IPlayerControl* const player = CreatePlayer();
    CIPTVServiceAPI::DestroyPlayerControl();
    EZVCaptionDataMode mode = ZV_CAPTION_DATA_MODE_NONE;
    EXPECT_FALSE(player->GetCaptionDataMode(mode));
    EXPECT_EQ(mode, ZV_CAPTION_DATA_MODE_UNKNOWN);
    EXPECT_FALSE(player->SetAppID("app"));
    unsigned long long clock = 7;
    EXPECT_FALSE(player->GetSTCCount(clock));
    EXPECT_EQ(clock, 7U);
}

} // namespace
