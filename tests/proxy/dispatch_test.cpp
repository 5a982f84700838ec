// SPDX-License-Identifier: MIT
#include "SubscriberTest.h"

#include "proxy/Subscribers.h"

#include <algorithm>

using namespace zviptv::test;

namespace {

using Dispatching = SubscriberTest;

TEST_F(Dispatching, PESNotificationBecomesARecord)
{
    int key = 0;
    int userData = 0;
    ASSERT_TRUE(m_subscriber->SubscribeForPES(Collect<ZVPESData>, &userData, key));
    std::string const bytes = PatternBytes(300);
    Notify(PESOf("300", bytes, "257", "4294967295", "-3"));
    ASSERT_TRUE(RunUntil([] { return !pesDeliveries.empty(); }));
    ZVPESData const& record = pesDeliveries.front().record;
    EXPECT_EQ(record.type, -3);
    EXPECT_EQ(record.pid, 257);
    EXPECT_EQ(record.pts, 4294967295U);
    EXPECT_EQ(TextOf(record.data), bytes);
    EXPECT_EQ(pesDeliveries.front().userData, nullptr);
    EXPECT_EQ(LinesOf(m_log, "IPTVDataSubscriberProxy.cpp: t_HandleNotification"),
              (Lines{{ZV_LOG_DEBUG, "type : PESCB"},
                     {ZV_LOG_DEBUG, "Call PES CB - type:-3, pid:257, pts:4294967295"}}));
}

TEST_F(Dispatching, CaptionNotificationBecomesARecord)
{
    int key = 0;
    int userData = 0;
    ASSERT_TRUE(m_subscriber->SubscribeForCaption(Collect<ZVCaption>, &userData, key));
    std::string const bytes = PatternBytes(300);
    Notify(CaptionOf("300", bytes, "2147483647"));
    ASSERT_TRUE(RunUntil([] { return !captionDeliveries.empty(); }));
    EXPECT_EQ(captionDeliveries.front().record.type, 2147483647);
    EXPECT_EQ(TextOf(captionDeliveries.front().record.data), bytes);
    EXPECT_EQ(captionDeliveries.front().userData, nullptr);
    EXPECT_EQ(LinesOf(m_log, "IPTVDataSubscriberProxy.cpp: t_HandleNotification"),
              (Lines{{ZV_LOG_DEBUG, "type : CaptionCB"}, {ZV_LOG_DEBUG, "Call Caption CB"}}));
}

TEST_F(Dispatching, NumbersAreTruncated)
{
    SubscribeForPES(Collect<ZVPESData>);
    struct
    {
        char const* pid;
        char const* pts;
        std::int16_t expectedPid;
        std::uint32_t expectedPts;
    } const rows[] = {
        {"70000", "4294967297", 4464, 1},          {"65535", "4294967296", -1, 0},
        {"32768", "-1", -32768, 4294967295U},      {"-1", "9223372036854775807", -1, 4294967295U},
        {"8191", "-9223372036854775808", 8191, 0}, {" +12xyz", " +34xyz", 12, 34}};
    for (auto const& row : rows) {
        SCOPED_TRACE(row.pid);
        pesDeliveries.clear();
        Notify(PESOf("1", "x", row.pid, row.pts));
        ASSERT_TRUE(RunUntil([] { return !pesDeliveries.empty(); }));
        EXPECT_EQ(pesDeliveries.front().record.pid, row.expectedPid);
        EXPECT_EQ(pesDeliveries.front().record.pts, row.expectedPts);
    }
}

TEST_F(Dispatching, UsesTheAnnouncedSize)
{
    SubscribeForPES(Collect<ZVPESData>);
    SubscribeForCaption(Collect<ZVCaption>);
    struct
    {
        char const* size;
        std::string data;
        std::string expected;
    } const rows[] = {{"2", "abc", "ab"},
                      {"0", "abc", ""},
                      {"0", "", ""},
                      {"5", "abc", std::string("abc\0\0", 5)},
                      {"2", "", std::string(2, '\0')},
                      {"3", std::string("\0\xff\0", 3), std::string("\0\xff\0", 3)}};
    for (auto const& [size, data, expected] : rows) {
        pesDeliveries.clear();
        captionDeliveries.clear();
        Notify(PESOf(size, data));
        Notify(CaptionOf(size, data));
        ASSERT_TRUE(RunUntil([] { return !captionDeliveries.empty(); }));
        EXPECT_EQ(TextOf(pesDeliveries.at(0).record.data), expected);
        EXPECT_EQ(TextOf(captionDeliveries.at(0).record.data), expected);
    }
}

TEST_F(Dispatching, MissingDataIsZeros)
{
    SubscribeForPES(Collect<ZVPESData>);
    WireEntries notification = PESOf("4", "");
    notification.pop_back();
    Notify(notification);
    ASSERT_TRUE(RunUntil([] { return !pesDeliveries.empty(); }));
    EXPECT_EQ(TextOf(pesDeliveries.front().record.data), std::string(4, '\0'));
}

TEST_F(Dispatching, SubscribersAreCalledInTheOrderOfTheirKeysWithOneRecord)
{
    std::vector<std::pair<int, int>> keys; // with the number of the callback
    void (*const callbacks[])(ZVPESData&, void*) = {Collect<ZVPESData, 0>, Collect<ZVPESData, 1>,
                                                    Collect<ZVPESData, 2>, Collect<ZVPESData, 3>,
                                                    Collect<ZVPESData, 4>, Collect<ZVPESData, 5>};
    for (auto* const callback : callbacks) {
        keys.emplace_back(SubscribeForPES(callback), static_cast<int>(keys.size()));
        if (keys.size() >= 3 && !std::is_sorted(keys.begin(), keys.end())) {
            break;
        }
    }
    std::sort(keys.begin(), keys.end());
    Notify(PESOf("3", "abc"));
    ASSERT_TRUE(RunUntil([&] { return pesDeliveries.size() == keys.size(); }));
    for (std::size_t i = 0; i < keys.size(); ++i) {
        EXPECT_EQ(pesDeliveries.at(i).subscriber, keys.at(i).second);
        EXPECT_EQ(pesDeliveries.at(i).address, pesDeliveries.front().address);
        EXPECT_EQ(pesDeliveries.at(i).userData, nullptr);
    }
    EXPECT_EQ(m_log.Count("Call PES CB - type:2, pid:256, pts:1"), keys.size());
}

TEST(SubscribersTable, CallsInAscendingOrderOfTheKeys)
{
    zviptv::Subscribers<ZVPESData> subscribers;
    subscribers.Add(5, Collect<ZVPESData, 5>);
    subscribers.Add(1, Collect<ZVPESData, 1>);
    subscribers.Add(9, Collect<ZVPESData, 9>);
    subscribers.Add(-1, Collect<ZVPESData, -1>);
    pesDeliveries.clear();
    ZVPESData record{};
    int announced = 0;
    subscribers.Deliver(record, [&] { ++announced; });
    std::vector<int> called;
    for (auto const& delivery : pesDeliveries) {
        called.push_back(delivery.subscriber);
    }
    EXPECT_EQ(called, (std::vector<int>{-1, 1, 5, 9}));
    EXPECT_EQ(announced, 4);
    pesDeliveries.clear();
}

TEST_F(Dispatching, CallsNothingWhileAKindIsIdle)
{
    Notify(CaptionOf("3", "abc"));
    Notify(PESOf("3", "abc"));
    Dispatch();
    EXPECT_EQ(m_log.Count("type : CaptionCB"), 1U);
    int const caption = SubscribeForCaption(Collect<ZVCaption>);
    Notify(PESOf("3", "abc"));
    Notify(CaptionOf("3", "abc"));
    Dispatch();
    EXPECT_EQ(captionDeliveries.size(), 1U);
    m_subscriber->UnsubscribeForCaption(caption);
    Notify(CaptionOf("3", "abc"));
    Dispatch();
    EXPECT_EQ(captionDeliveries.size(), 1U);
    EXPECT_TRUE(pesDeliveries.empty());
    EXPECT_EQ(m_log.Count("type : CaptionCB"), 3U);
    EXPECT_EQ(m_log.Count("type : PESCB"), 2U);
}

TEST_F(Dispatching, DoesNotDecodeIdleKinds)
{
    Notify(Entries({{"functionname", "CaptionCB"}}));
    Notify(Entries({{"functionname", "PESCB"}, {"pesDataSize", "bad"}}));
    Dispatch(); // would throw
    EXPECT_EQ(m_log.Count("type : PESCB"), 1U);
}

TEST_F(Dispatching, DeliversAlsoWhenTheRequestFailed)
{
    m_service.AnswerError("requestPESCB");
    SubscribeForPES(Collect<ZVPESData>);
    Notify(PESOf("1", "x"));
    EXPECT_TRUE(RunUntil([] { return pesDeliveries.size() == 1; }));
}

TEST_F(Dispatching, OtherNotificationsAreIgnored)
{
    SubscribeForPES(Collect<ZVPESData>);
    SubscribeForCaption(Collect<ZVCaption>);
    for (char const* const name : {"pescb", "PESCB ", "requestPESCB", "", "Captioncb"}) {
        WireEntries notification = PESOf("1", "x");
        notification.front().bytes = name;
        Notify(notification);
    }
    Notify({});
    Dispatch();
    EXPECT_TRUE(pesDeliveries.empty());
    EXPECT_TRUE(captionDeliveries.empty());
    EXPECT_EQ(m_log.Count("type : "), 2U);
}

TEST_F(Dispatching, CallsOfTheServiceAreAnsweredWithAnEmptyMessage)
{
    SubscribeForPES(Collect<ZVPESData>);
    m_log.Clear();
    WireMessage const answer = CallClient("IPTVDATASUBSCRIBER", PESOf("1", "x"));
    EXPECT_EQ(answer.kind, WireKind::Reply);
    EXPECT_EQ(answer.signature, "a{sv}");
    EXPECT_TRUE(answer.entries.empty());
    EXPECT_TRUE(pesDeliveries.empty());
    EXPECT_EQ(LinesOf(m_log, "IPTVDataSubscriberProxy.cpp: m_MessageCb"), (Lines{{ZV_LOG_INFO, ""}}));
    EXPECT_EQ(LinesOf(m_log, "IPTVDataSubscriberProxy.cpp: t_HandleMessage"), (Lines{{ZV_LOG_INFO, ""}}));
}

} // namespace
