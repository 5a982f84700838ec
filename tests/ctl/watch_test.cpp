// SPDX-License-Identifier: MIT
#include "WatchFixture.h"

#include <csignal>

namespace zviptv::test {
namespace {

using testing::HasSubstr;

TEST_F(WatchTest, ReportsStateClockAndTraffic)
{
    auto const child = StartCtl({"watch"});
    ASSERT_TRUE(child->WaitForOutput("connected: source playing, STC 123456, first PTS 90000\n"
                                     "subscribed to PES packets\n",
                                     patience))
        << child->Errors();
    PushPes("257", "12345");
    PushPes("256", "123");
    ASSERT_TRUE(
        child->WaitForOutput("playing, STC 123456, PES 2 packets, 8 bytes, 0.0 kB/s; 0x0100: 1 packet, 0.0 "
                             "kB/s; 0x0101: 1 packet, 0.0 kB/s\n",
                             patience))
        << child->Output();
    m_service->ClearRecords();
    child->Signal(SIGINT);
    EXPECT_EQ(Finish(*child).code, 0);
    auto const request = m_service->WaitForRequest("requestPESCB");
    ASSERT_TRUE(request);
    EXPECT_EQ(request->Value("on"), "0");
}

TEST_F(WatchTest, ReportsTheLossAndReturnOfTheService)
{
    auto const child = StartCtl({"watch"});
    ASSERT_TRUE(child->WaitForOutput("subscribed to PES packets\n", patience));
    m_service->Vanish();
    ASSERT_TRUE(child->WaitForOutput(
        "the service left the bus: no more PES packets arrive\n"
        "the player control object destroyed itself: its calls fail until it is created again\n"
        "CreatePlayerControl now returns null: no service runs\n"
        "the data subscriber stays, but its calls fail: UnSubscribeForPES was not sent (",
        patience))
        << child->Output();
    ASSERT_TRUE(child->WaitForOutput("waiting for the service to come back\n", patience));

    StartService();
    ASSERT_TRUE(child->WaitForOutput("the service is back: making new objects\n"
                                     "connected: source playing, STC 123456, first PTS 90000\n"
                                     "subscribed to PES packets\n",
                                     patience))
        << child->Output();
    PushPes("256", "x");
    ASSERT_TRUE(child->WaitForOutput("PES 1 packet, 1 byte", patience)) << child->Output();
    child->Signal(SIGTERM);
    EXPECT_EQ(Finish(*child).code, 0);
}

TEST_F(WatchTest, EndsWithExitCode3IfTheServiceDoesNotReturn)
{
    auto const child = StartCtl({"watch"});
    ASSERT_TRUE(child->WaitForOutput("subscribed to PES packets\n", patience));
    m_service->Vanish();
    ASSERT_TRUE(child->WaitForOutput("waiting for the service to come back\n", patience));
    child->Signal(SIGINT);
    CtlResult const result = Finish(*child);
    EXPECT_EQ(result.code, 3);
    EXPECT_EQ(result.errors, "zviptvctl: the service did not come back\n");
}

TEST_F(WatchTest, EndsAfterTheGivenSeconds)
{
    CtlResult const result = RunCtl({"watch", "--seconds", "0.01"});
    EXPECT_EQ(result.code, 0);
    EXPECT_THAT(result.output, HasSubstr("subscribed to PES packets\n"));
}

TEST_F(WatchTest, JsonIsOneEventALine)
{
    auto const child = StartCtl({"watch", "--json"});
    ASSERT_TRUE(child->WaitForOutput("\"event\":\"subscribed\"", patience));
    PushPes("256", "1234");
    ASSERT_TRUE(child->WaitForOutput("\"pids\":[{", patience));
    m_service->Vanish();
    ASSERT_TRUE(child->WaitForOutput("\"event\":\"waiting\"", patience));
    child->Signal(SIGINT);
    EXPECT_EQ(Finish(*child).code, 3);

    std::vector<std::string> events;
    std::istringstream lines(child->Output());
    for (std::string line; std::getline(lines, line);) {
        Json::Value const json = ParseJson(line);
        if (json["event"] != "tick") {
            events.push_back(json["event"].asString());
        } else if (json["packets"] == 1) {
            EXPECT_EQ(json["sourceState"].asInt(), 2);
            EXPECT_EQ(json["stc"].asInt(), 123456);
            EXPECT_EQ(json["pids"][0]["pid"].asInt(), 256);
            EXPECT_EQ(json["pids"][0]["bytes"].asInt(), 4);
        }
    }
    EXPECT_THAT(events, testing::ElementsAre("connected", "subscribed", "lost", "player-control-gone",
                                             "factory-refuses", "subscriber-fails", "waiting"));
}

/// A service that answers with errors is not a service that left.
TEST_F(WatchTest, ReportsAnErrorOfTheService)
{
    auto const child = StartCtl({"watch"});
    ASSERT_TRUE(child->WaitForOutput("subscribed to PES packets\n", patience));
    m_service->AnswerError("GetSTCCount");
    ASSERT_TRUE(child->WaitForOutput(
        "GetSTCCount: the service answered with the error org.corvel.test.Failed", patience));
    m_service->Answer("GetSTCCount", {{"result_internal", "1"}, {"stcCount", "777"}});
    ASSERT_TRUE(child->WaitForOutput("playing, STC 777", patience));
    child->Signal(SIGINT);
    EXPECT_EQ(Finish(*child).code, 0);
}

} // namespace
} // namespace zviptv::test
