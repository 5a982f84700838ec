// SPDX-License-Identifier: MIT
#include "trace/DiagramRows.h"
#include "trace/EventText.h"
#include "trace/Latencies.h"
#include "trace/TraceSummary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace zviptv;
using namespace zviptv::ctl;
using testing::HasSubstr;
using trace::EventKind;

namespace {

trace::Event Made(EventKind kind, char const* application, std::int64_t time)
{
    trace::Event event;
    event.kind = kind;
    event.time = time;
    event.isFromService = kind != EventKind::Request && kind != EventKind::Loss;
    event.endpoint = "PLAYERCONTROL";
    event.function = kind == EventKind::Loss ? "" : kind == EventKind::Notification ? "PESCB" : "MuteAudio";
    auto made = std::make_shared<trace::Application>();
    made->busName = application;
    event.application = made;
    return event;
}

trace::Event MadePush(char const* application, std::int64_t time, int pid)
{
    trace::Event event = Made(EventKind::Notification, application, time);
    event.pid = pid;
    event.size = 100;
    return event;
}

std::vector<DiagramRow::Kind> KindsOf(DiagramRows const& rows)
{
    std::vector<DiagramRow::Kind> kinds;
    for (DiagramRow const& row : rows.Rows()) {
        kinds.push_back(row.kind);
    }
    return kinds;
}

using Kind = DiagramRow::Kind;

} // namespace

TEST(LatenciesTest, PercentilesAreAtMostOnePercentTooLong)
{
    Latencies latencies;
    EXPECT_EQ(latencies.Percentile(50), 0);
    for (int time = 1; time <= 1'000; ++time) {
        latencies.Add(std::int64_t{time} * 1'000);
    }
    EXPECT_EQ(latencies.Count(), 1'000U);
    EXPECT_EQ(latencies.Max(), 1'000'000);
    EXPECT_GE(latencies.Percentile(50), 500'000);
    EXPECT_LE(latencies.Percentile(50), 505'000);
    EXPECT_GE(latencies.Percentile(99), 990'000);
    EXPECT_LE(latencies.Percentile(99), 1'000'000);
    EXPECT_EQ(latencies.Percentile(100), 1'000'000);
}

TEST(EventTextTest, ANotificationWithoutAFunctionIsNoReply)
{
    trace::Event event = Made(EventKind::Notification, ":1.1", 10);
    event.function.clear();
    EXPECT_EQ(SubjectText(event), "a notification");
}

TEST(DiagramRowsTest, ReusesTheLaneOfAnApplicationThatHasLeft)
{
    DiagramRows rows;
    rows.Add(Made(EventKind::Request, ":1.1", 10));
    rows.Add(Made(EventKind::Request, ":1.2", 20));
    rows.Add(Made(EventKind::Loss, ":1.1", 30));
    rows.Add(Made(EventKind::Request, ":1.3", 40));
    EXPECT_THAT(KindsOf(rows), testing::ElementsAre(Kind::Head, Kind::Message, Kind::Head, Kind::Message,
                                                    Kind::End, Kind::Head, Kind::Message));
    EXPECT_EQ(rows.Lanes(), 2U);
    EXPECT_EQ(rows.Rows()[3].lane, 1U);
    EXPECT_EQ(rows.Rows()[6].lane, 0U);
}

TEST(DiagramRowsTest, PushesShareARowUntilAnotherMessage)
{
    DiagramRows rows;
    rows.Add(MadePush(":1.1", 10, 0x100));
    rows.Add(MadePush(":1.2", 20, 0x100));
    rows.Add(MadePush(":1.1", 30, 0x101));
    rows.Add(MadePush(":1.1", 40, 0x100));
    rows.Add(Made(EventKind::Request, ":1.2", 50));
    rows.Add(MadePush(":1.1", 60, 0x100));
    ASSERT_THAT(KindsOf(rows), testing::ElementsAre(Kind::Head, Kind::Pushes, Kind::Head, Kind::Pushes,
                                                    Kind::Pushes, Kind::Message, Kind::Pushes));
    EXPECT_EQ(rows.Rows()[4].label, "2 packets");
    EXPECT_EQ(rows.Rows()[4].detail, "0x0100, 0x0101, 200 bytes");
}

TEST(DiagramRowsTest, ShowsPausesAndLimitsTheRows)
{
    DiagramRows rows;
    rows.Add(Made(EventKind::Request, ":1.1", 0));
    rows.Add(Made(EventKind::Reply, ":1.1", 2'500'000));
    ASSERT_EQ(rows.Rows().size(), 4U);
    EXPECT_EQ(rows.Rows()[2].kind, Kind::Pause);
    EXPECT_EQ(rows.Rows()[2].label, "2.500 s without a message");
    for (int i = 0; i < 6'000; ++i) {
        rows.Add(Made(EventKind::Request, ":1.1", 2'500'000));
    }
    EXPECT_EQ(rows.Rows().size(), 5'000U);
    EXPECT_EQ(rows.LeftOut(), 1'004U);
}

TEST(TraceSummaryTest, ListsSlowCallsPausesAndOpenRequests)
{
    TraceSummary summary;
    trace::Event slow = Made(EventKind::Reply, ":1.1", 400'000);
    slow.latency = 250'000;
    slow.result = false;
    summary.Add(Made(EventKind::Request, ":1.1", 150'000));
    summary.Add(Made(EventKind::Request, ":1.1", 160'000));
    summary.Add(slow);
    summary.Add(MadePush(":1.1", 1'000'000, 0x100));
    summary.Add(MadePush(":1.1", 4'000'000, 0x100));
    summary.Add(Made(EventKind::Loss, ":1.1", 5'000'000));
    std::string const text = summary.Text({});
    EXPECT_THAT(text, HasSubstr("calls of 0.1 s or more: 1\n  "));
    EXPECT_THAT(text, HasSubstr(" :1.1 PLAYERCONTROL MuteAudio 250.000 ms\n"));
    EXPECT_THAT(text, HasSubstr("pauses between pushes of 1 s or more: 1\n  "));
    EXPECT_THAT(text, HasSubstr(" :1.1 0x0100 3.000 s\n"));
    EXPECT_THAT(text, HasSubstr("losses: 1\n"));
    Json::Value const json = summary.ToJson({});
    EXPECT_EQ(json["calls"][0]["calls"].asInt(), 2);
    EXPECT_EQ(json["calls"][0]["open"].asInt(), 1);
    EXPECT_EQ(json["calls"][0]["refused"].asInt(), 1);
    EXPECT_EQ(json["slow"][0]["length"].asInt(), 250'000);
    EXPECT_EQ(json["pauses"][0]["time"].asInt(), 1'000'000);
}
