// SPDX-License-Identifier: MIT
#include "SubscriberTest.h"

using namespace zviptv::test;

namespace {

/// Subscribing and unsubscribing, which are the same for both kinds.
struct DataKind
{
    char const* name;
    char const* request;
    char const* subscribeOrigin;
    char const* unsubscribeOrigin;
    char const* requestOrigin;
    bool (*subscribe)(IIPTVDataSubscriber&, void* userData, int& key);
    bool (*unsubscribe)(IIPTVDataSubscriber&, int key);
    bool (*subscribeNothing)(IIPTVDataSubscriber&, int& key);
};

void PrintTo(DataKind const& kind, std::ostream* out)
{
    *out << kind.name;
}

DataKind const PesDataKind{
    "PES",
    "requestPESCB",
    "IPTVDataSubscriberProxy.cpp: SubscribeForPES",
    "IPTVDataSubscriberProxy.cpp: UnSubscribeForPES",
    "IPTVDataSubscriberProxy.cpp: m_RequestPESCB",
    [](IIPTVDataSubscriber& subscriber, void* userData, int& key) {
        return subscriber.SubscribeForPES(Collect<ZVPESData>, userData, key);
    },
    [](IIPTVDataSubscriber& subscriber, int key) { return subscriber.UnSubscribeForPES(key); },
    [](IIPTVDataSubscriber& subscriber, int& key) {
        return subscriber.SubscribeForPES(nullptr, nullptr, key);
    }};

DataKind const CaptionDataKind{
    "Caption",
    "requestCaptionCB",
    "IPTVDataSubscriberProxy.cpp: SubscribeForCaption",
    "IPTVDataSubscriberProxy.cpp: UnsubscribeForCaption",
    "IPTVDataSubscriberProxy.cpp: m_RequestCaptionCB",
    [](IIPTVDataSubscriber& subscriber, void* userData, int& key) {
        return subscriber.SubscribeForCaption(Collect<ZVCaption>, userData, key);
    },
    [](IIPTVDataSubscriber& subscriber, int key) { return subscriber.UnsubscribeForCaption(key); },
    [](IIPTVDataSubscriber& subscriber, int& key) {
        return subscriber.SubscribeForCaption(nullptr, nullptr, key);
    }};

class Subscription : public SubscriberTest, public testing::WithParamInterface<DataKind>
{
protected:
    static DataKind const& Kind() { return GetParam(); }
    bool Subscribe(int& key) { return Kind().subscribe(*m_subscriber, nullptr, key); }
    bool Unsubscribe(int key) { return Kind().unsubscribe(*m_subscriber, key); }

    /// Two subscriptions, in two seconds.
    std::pair<int, int> SubscribeTwice()
    {
        std::pair<int, int> keys;
        EXPECT_TRUE(Subscribe(keys.first));
        WaitForNextSecond();
        EXPECT_TRUE(Subscribe(keys.second));
        EXPECT_NE(keys.first, keys.second);
        return keys;
    }
};

/// Runs `work` within one second of the clock.
template <typename Work, typename Undo>
std::time_t WithinOneSecond(Work work, Undo undo)
{
    for (int tries = 0; tries < 10; ++tries) {
        WaitForNextSecond();
        std::time_t const second = std::time(nullptr);
        work();
        if (std::time(nullptr) == second) {
            return second;
        }
        undo();
    }
    ADD_FAILURE() << "never done within a second";
    return 0;
}

TEST_P(Subscription, KeyIsDrawnFromTheClocksSecond)
{
    int key = -1;
    bool subscribed = false;
    std::time_t const second =
        WithinOneSecond([&] { subscribed = Subscribe(key); }, [&] { Unsubscribe(key); });
    EXPECT_TRUE(subscribed);
    EXPECT_EQ(key, KeyOf(second));
    EXPECT_TRUE(m_log.Has(ZV_LOG_INFO, "Make a key : " + std::to_string(key)));
}

TEST_P(Subscription, ASecondOneWithinTheSecondFails)
{
    int first = -1;
    int second = -7;
    bool subscribed = false;
    bool subscribedAgain = false;
    WithinOneSecond(
        [&] {
            subscribed = Subscribe(first);
            m_log.Clear();
            subscribedAgain = Subscribe(second);
        },
        [&] {
            Unsubscribe(first);
            Unsubscribe(second);
            m_service.ClearRecords();
            second = -7;
        });
    EXPECT_TRUE(subscribed);
    EXPECT_FALSE(subscribedAgain);
    EXPECT_EQ(second, -7);
    EXPECT_EQ(LinesOf(m_log, Kind().subscribeOrigin),
              (Lines{{ZV_LOG_INFO, ""}, {ZV_LOG_ERROR, "Can not make a key"}}));
    EXPECT_EQ(Requests().size(), 1U);
    WaitForNextSecond();
    EXPECT_TRUE(Subscribe(second));
    EXPECT_NE(second, first);
}

TEST_P(Subscription, SendsOneRequestAndOneEnd)
{
    auto const [first, second] = SubscribeTwice();
    EXPECT_EQ(Requests(), std::vector<WireEntries>{Request(Kind().request, "1")});
    EXPECT_FALSE(Unsubscribe(first));
    EXPECT_EQ(Requests().size(), 1U);
    EXPECT_FALSE(Unsubscribe(second));
    EXPECT_EQ(Requests(),
              (std::vector<WireEntries>{Request(Kind().request, "1"), Request(Kind().request, "0")}));
    int again = 0;
    EXPECT_TRUE(Subscribe(again));
    ASSERT_EQ(Requests().size(), 3U);
    EXPECT_EQ(Requests().back(), Request(Kind().request, "1"));
}

TEST_P(Subscription, LogsItsLines)
{
    int key = 0;
    m_log.Clear();
    EXPECT_TRUE(Subscribe(key));
    EXPECT_EQ(LinesOf(m_log, Kind().subscribeOrigin),
              (Lines{{ZV_LOG_INFO, ""}, {ZV_LOG_INFO, "Make a key : " + std::to_string(key)}}));
    EXPECT_EQ(LinesOf(m_log, Kind().requestOrigin), (Lines{{ZV_LOG_INFO, ""}}));
    m_log.Clear();
    EXPECT_FALSE(Unsubscribe(key));
    EXPECT_EQ(LinesOf(m_log, Kind().unsubscribeOrigin),
              (Lines{{ZV_LOG_INFO, ""}, {ZV_LOG_INFO, "find a key : " + std::to_string(key)}}));
    EXPECT_EQ(LinesOf(m_log, Kind().requestOrigin), (Lines{{ZV_LOG_INFO, ""}}));
}

TEST_P(Subscription, UnknownKeyIsRefusedLikeAKnownOne)
{
    int key = 0;
    EXPECT_FALSE(Unsubscribe(5));
    EXPECT_TRUE(Requests().empty());
    EXPECT_TRUE(Subscribe(key));
    m_log.Clear();
    EXPECT_FALSE(Unsubscribe(key + 1));
    EXPECT_EQ(LinesOf(m_log, Kind().unsubscribeOrigin),
              (Lines{{ZV_LOG_INFO, ""}, {ZV_LOG_ERROR, "Can not find a key"}}));
    EXPECT_EQ(Requests().size(), 1U);
    EXPECT_FALSE(Unsubscribe(key));
    m_log.Clear();
    EXPECT_FALSE(Unsubscribe(key));
    EXPECT_TRUE(m_log.Has(ZV_LOG_ERROR, "Can not find a key"));
    EXPECT_EQ(Requests().size(), 2U);
}

TEST_P(Subscription, FailedRequestsCountAsSent)
{
    m_service.AnswerError(Kind().request);
    m_log.Clear();
    auto const [first, second] = SubscribeTwice();
    EXPECT_EQ(LinesOf(m_log, Kind().requestOrigin),
              (Lines{{ZV_LOG_INFO, ""}, {ZV_LOG_ERROR, "SendMessage failed."}}));
    Unsubscribe(first);
    EXPECT_EQ(Requests().size(), 1U);
    Unsubscribe(second);
    EXPECT_EQ(Requests(),
              (std::vector<WireEntries>{Request(Kind().request, "1"), Request(Kind().request, "0")}));
    int again = 0;
    EXPECT_TRUE(Subscribe(again));
    EXPECT_EQ(Requests().size(), 3U);
}

TEST_P(Subscription, IgnoresTheResultOfTheService)
{
    int key = 0;
    for (WireEntries const& answer :
         {Entries({{"result_internal", "0"}}), Entries({{"result_internal", "none"}}), WireEntries()}) {
        m_service.AnswerWith(Kind().request, answer);
        EXPECT_TRUE(Subscribe(key));
        EXPECT_FALSE(Unsubscribe(key));
    }
    EXPECT_EQ(m_log.Count("SendMessage failed."), 0U);
}

TEST_P(Subscription, DestructionSendsNothingToTheService)
{
    int key = 0;
    EXPECT_TRUE(Subscribe(key));
    CIPTVServiceAPI::DestroyIPTVDataSubscriber();
    EXPECT_EQ(Requests().size(), 1U);
    m_subscriber = CreateSubscriber();
    EXPECT_FALSE(Unsubscribe(key));
    EXPECT_TRUE(m_log.Has(ZV_LOG_ERROR, "Can not find a key"));
    EXPECT_TRUE(Subscribe(key));
    EXPECT_EQ(Requests().size(), 2U);
}

TEST_P(Subscription, RefusesANullCallback)
{
    int key = -7;
    EXPECT_FALSE(Kind().subscribeNothing(*m_subscriber, key));
    EXPECT_EQ(key, -7);
    EXPECT_TRUE(Requests().empty());
}

std::string NameOfKind(testing::TestParamInfo<DataKind> const& info)
{
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(Kinds, Subscription, testing::Values(PesDataKind, CaptionDataKind), NameOfKind);

TEST_F(SubscriberTest, KindsHaveTheirOwnKeys)
{
    int pes = -1;
    int caption = -2;
    bool both = false;
    WithinOneSecond(
        [&] {
            both = m_subscriber->SubscribeForPES(Collect<ZVPESData>, nullptr, pes);
            both = m_subscriber->SubscribeForCaption(Collect<ZVCaption>, nullptr, caption) && both;
        },
        [&] {
            m_subscriber->UnSubscribeForPES(pes);
            m_subscriber->UnsubscribeForCaption(caption);
            m_service.ClearRecords();
        });
    EXPECT_TRUE(both);
    EXPECT_EQ(pes, caption);
    EXPECT_EQ(Requests(),
              (std::vector<WireEntries>{Request("requestPESCB", "1"), Request("requestCaptionCB", "1")}));
    m_subscriber->UnsubscribeForCaption(caption);
    EXPECT_EQ(Requests().back(), Request("requestCaptionCB", "0"));
    EXPECT_EQ(Requests().size(), 3U);
}

} // namespace
