// SPDX-License-Identifier: MIT
#include "session/Subscription.h"

#include "output/Failure.h"

#include <gtest/gtest.h>

#include <ctime>
#include <string>

using namespace zviptv::ctl;

namespace {

/// Refuses the given number of subscriptions, as the library does during the same second.
class Subscriber : public IIPTVDataSubscriber
{
public:
    bool SubscribeForCaption(void (*callback)(ZVCaption&, void*), void* /*userData*/, int& key) override
    {
        return Subscribe(m_caption, callback, key);
    }
    bool UnsubscribeForCaption(int key) override
    {
        calls += "caption " + std::to_string(key);
        return false;
    }
    bool SubscribeForPES(void (*callback)(ZVPESData&, void*), void* /*userData*/, int& key) override
    {
        return Subscribe(m_pes, callback, key);
    }
    bool UnSubscribeForPES(int key) override
    {
        calls += "pes " + std::to_string(key);
        return false;
    }

    void Push(ZVPESData pes) { m_pes(pes, nullptr); }
    void Push(ZVCaption caption) { m_caption(caption, nullptr); }

    int refusals = 0;
    std::string calls;

private:
    template <typename Callback>
    bool Subscribe(Callback& place, Callback callback, int& key)
    {
        if (refusals > 0) {
            --refusals;
            return false;
        }
        place = callback;
        key = 42;
        return true;
    }

    void (*m_pes)(ZVPESData&, void*) = nullptr;
    void (*m_caption)(ZVCaption&, void*) = nullptr;
};

TEST(SubscriptionTest, TriesAgainInTheNextSecond)
{
    Subscriber subscriber;
    subscriber.refusals = 2;
    int waits = 0;
    Subscription subscription(
        subscriber, PacketKind::Pes, [](Packet const&) {}, [&] { ++waits; });
    EXPECT_EQ(waits, 2);
    subscription.End(subscriber);
    EXPECT_EQ(subscriber.calls, "pes 42");
}

TEST(SubscriptionTest, StopsTryingAfterAWhile)
{
    Subscriber subscriber;
    subscriber.refusals = 100;
    try {
        Subscription const subscription(
            subscriber, PacketKind::Caption, [](Packet const&) {}, [] {});
        ADD_FAILURE();
    } catch (Failure const& failure) {
        EXPECT_EQ(failure.Code(), ExitCode::NoAnswer);
    }
    EXPECT_EQ(subscriber.refusals, 97);
}

TEST(SubscriptionTest, WaitsForTheNextSecond)
{
    std::time_t const before = std::time(nullptr);
    Subscription::WaitForNextSecond();
    EXPECT_LT(before, std::time(nullptr));
}

TEST(SubscriptionTest, PidsAreUnsigned)
{
    Subscriber subscriber;
    std::string seen;
    Subscription subscription(subscriber, PacketKind::Pes, [&](Packet const& packet) {
        seen += std::to_string(packet.type) + " " + std::to_string(*packet.pid) + " " +
                std::to_string(*packet.pts) + " " + std::to_string(packet.data.size());
    });
    subscriber.Push(ZVPESData{1, -1, 4294967295U, {1, 2, 3}});
    EXPECT_EQ(seen, "1 65535 4294967295 3");
}

TEST(SubscriptionTest, KindsAreIndependent)
{
    Subscriber subscriber;
    int packets = 0;
    int captions = 0;
    Subscription pes(subscriber, PacketKind::Pes, [&](Packet const&) { ++packets; });
    {
        Subscription caption(subscriber, PacketKind::Caption, [&](Packet const& packet) {
            EXPECT_FALSE(packet.pid);
            EXPECT_FALSE(packet.pts);
            ++captions;
        });
        subscriber.Push(ZVCaption{5, {1}});
    }
    subscriber.Push(ZVCaption{5, {1}}); // after its end: to nobody
    subscriber.Push(ZVPESData{1, 256, 0, {}});
    EXPECT_EQ(packets, 1);
    EXPECT_EQ(captions, 1);
}

} // namespace
