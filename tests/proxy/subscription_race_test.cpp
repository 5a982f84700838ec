// SPDX-License-Identifier: MIT
#include "SubscriberTest.h"

#include <zviptv/ProxyDBusHelper.h>

#include <thread>

using namespace zviptv::test;

namespace {

std::promise<void>* destroyed = nullptr;

void DestroySubscriber(ZVCaption& /*caption*/, void* /*userData*/)
{
    CIPTVServiceAPI::DestroyIPTVDataSubscriber();
    destroyed->set_value();
}

/// A callback destroys the proxy while calls on other threads wait for the service, and for each other.
class SubscribingMeanwhile : public SubscriberTest
{
protected:
    SubscribingMeanwhile() { destroyed = &m_destroyed; }

    CProxyDBusHelper m_other{"FENCE"}; // keeps the connection
    std::promise<void> m_destroyed;
    LoopThread m_loop;
};

TEST_F(SubscribingMeanwhile, EndsSafelyWhenACallbackDestroysTheProxy)
{
    SubscribeForCaption(DestroySubscriber);
    int const key = SubscribeForPES(Collect<ZVPESData>);
    m_service.AnswerNothing("requestPESCB");
    std::size_t const before = Requests().size();
    auto unsubscribed =
        std::async(std::launch::async, [this, key] { return m_subscriber->UnSubscribeForPES(key); });
    ASSERT_TRUE(WaitUntil([&] { return Requests().size() > before; }, patience));
    m_log.Clear();
    auto subscribed = std::async(std::launch::async, [this] {
        int next = 0;
        return m_subscriber->SubscribeForPES(Collect<ZVPESData>, nullptr, next);
    });
    auto const isWaiting = [this] {
        return LinesOf(m_log, "IPTVDataSubscriberProxy.cpp: SubscribeForPES").size() == 1;
    };
    ASSERT_TRUE(WaitUntil(isWaiting, patience));
    Notify(CaptionOf("1", "x"));
    m_destroyed.get_future().wait();
    EXPECT_FALSE(unsubscribed.get());
    EXPECT_FALSE(subscribed.get());
    EXPECT_EQ(Requests().size(), before + 1) << "there is nothing to ask through";
    EXPECT_EQ(Requests().back(), Request("requestPESCB", "0"));
}

} // namespace
