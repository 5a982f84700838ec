// SPDX-License-Identifier: MIT
#include "SubscriberTest.h"

#include <functional>

using namespace zviptv::test;

namespace {

/// The action of the callback `Act` before it collects.
std::function<void()> action;

template <int Number>
void Act(ZVPESData& record, void* userData)
{
    Collect<ZVPESData, Number>(record, userData);
    action();
}

class CallbackReentry : public SubscriberTest
{
protected:
    ~CallbackReentry() override { action = nullptr; }
};

TEST_F(CallbackReentry, CallbackMayEndItsSubscription)
{
    int const key = SubscribeForPES(Act<0>);
    action = [&] { EXPECT_FALSE(m_subscriber->UnSubscribeForPES(key)); };
    Notify(PESOf("1", "x"));
    Notify(PESOf("1", "y"));
    ASSERT_TRUE(RunUntil([] { return !pesDeliveries.empty(); }));
    Dispatch();
    EXPECT_EQ(pesDeliveries.size(), 1U);
    EXPECT_EQ(Requests().back(), Request("requestPESCB", "0"));
}

TEST_F(CallbackReentry, CallbackMayEndAllSubscriptions)
{
    int const first = SubscribeForPES(Act<0>);
    int const second = SubscribeForPES(Act<1>);
    action = [&] {
        m_subscriber->UnSubscribeForPES(first);
        m_subscriber->UnSubscribeForPES(second);
    };
    Notify(PESOf("1", "x"));
    ASSERT_TRUE(RunUntil([] { return !pesDeliveries.empty(); }));
    Dispatch();
    EXPECT_EQ(pesDeliveries.size(), 1U);
    EXPECT_EQ(pesDeliveries.front().subscriber, first < second ? 0 : 1);
    EXPECT_EQ(Requests(),
              (std::vector<WireEntries>{Request("requestPESCB", "1"), Request("requestPESCB", "0")}));
}

TEST_F(CallbackReentry, CallbackMaySubscribeForTheOtherKind)
{
    SubscribeForPES(Act<0>);
    bool subscribed = false;
    action = [&] {
        int key = 0;
        subscribed = m_subscriber->SubscribeForCaption(Collect<ZVCaption>, nullptr, key);
    };
    Notify(PESOf("1", "x"));
    Notify(CaptionOf("1", "y"));
    ASSERT_TRUE(RunUntil([] { return !Deliveries<ZVCaption>().empty(); }));
    EXPECT_TRUE(subscribed);
}

TEST_F(CallbackReentry, CallbackMayDestroyTheProxy)
{
    SubscribeForPES(Act<0>);
    SubscribeForPES(Act<1>);
    action = [] { EXPECT_EQ(CIPTVServiceAPI::DestroyIPTVDataSubscriber(), 0); };
    Notify(PESOf("1", "x"));
    Notify(PESOf("1", "y"));
    ASSERT_TRUE(RunUntil(
        [this] { return m_service.WaitForAnnouncement("IPTVDATASUBSCRIBER", "n", {}).has_value(); }));
    RunPending();
    EXPECT_EQ(pesDeliveries.size(), 1U);
}

TEST_F(CallbackReentry, CallbackMayDestroyAndCreateTheProxy)
{
    SubscribeForPES(Act<0>);
    SubscribeForPES(Act<1>);
    action = [this] {
        CIPTVServiceAPI::DestroyIPTVDataSubscriber();
        m_subscriber = CreateSubscriber(3);
        action = [] {};
    };
    Notify(PESOf("1", "x"));
    ASSERT_TRUE(RunUntil([] { return !pesDeliveries.empty(); }));
    Dispatch();
    EXPECT_EQ(pesDeliveries.size(), 1U);
    SubscribeForPES(Collect<ZVPESData, 2>);
    EXPECT_EQ(m_service.LastRequest().Value("handleID"), "259");
    Notify(PESOf("1", "y"));
    ASSERT_TRUE(RunUntil([] { return pesDeliveries.size() == 2; }));
    EXPECT_EQ(pesDeliveries.back().subscriber, 2);
}

TEST_F(CallbackReentry, CallbackMayCallOtherProxies)
{
    IPlayerControl& player = *CreatePlayer();
    SubscribeForPES(Act<0>);
    bool muted = false;
    action = [&] { muted = player.MuteAudio(true); };
    Notify(PESOf("1", "x"));
    ASSERT_TRUE(RunUntil([] { return !pesDeliveries.empty(); }));
    EXPECT_TRUE(muted);
}

TEST_F(CallbackReentry, CallbackMayKeepACopyOfTheRecord)
{
    SubscribeForPES(Act<0>);
    SubscribeForPES(Collect<ZVPESData, 1>);
    action = [] {};
    Notify(PESOf("3", "abc"));
    Notify(PESOf("3", "def"));
    ASSERT_TRUE(RunUntil([] { return pesDeliveries.size() == 4; }));
    EXPECT_EQ(TextOf(pesDeliveries.at(0).record.data), "abc");
    EXPECT_EQ(TextOf(pesDeliveries.at(3).record.data), "def");
}

} // namespace
