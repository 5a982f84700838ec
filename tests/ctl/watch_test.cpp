#include "WatchFixture.h"

#include <csignal>

namespace zviptv::test {
namespace {

using testing::HasSubstr;

TEST_F(WatchTest, TellsStateClockAndTraffic)
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
    EXPECT_EQ(0, Finish(*child).code);
    auto const request = m_service->WaitForRequest("requestPESCB");
    ASSERT_TRUE(request);
    EXPECT_EQ("0", request->Value("on"));
}

TEST_F(WatchTest, TellsStepByStepHowTheServiceGoesAndComesBack)
{
    auto const child = StartCtl({"watch"});
    ASSERT_TRUE(child->WaitForOutput("subscribed to PES packets\n", patience));
    m_service->Vanish();
    ASSERT_TRUE(child->WaitForOutput(
        "the service left the bus: no more PES packets come\n"
        "the player control object destroyed itself: pointers to it are invalid now\n"
        "CreatePlayerControl now gives null: no service runs\n"
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
    EXPECT_EQ(0, Finish(*child).code);
}

TEST_F(WatchTest, EndsWithThreeWhenTheServiceDoesNotComeBack)
{
    auto const child = StartCtl({"watch"});
    ASSERT_TRUE(child->WaitForOutput("subscribed to PES packets\n", patience));
    m_service->Vanish();
    ASSERT_TRUE(child->WaitForOutput("waiting for the service to come back\n", patience));
    child->Signal(SIGINT);
    CtlResult const result = Finish(*child);
    EXPECT_EQ(3, result.code);
    EXPECT_EQ("zviptvctl: the service did not come back\n", result.errors);
}

TEST_F(WatchTest, EndsAfterSomeSeconds)
{
    CtlResult const result = RunCtl({"watch", "--seconds", "0.01"});
    EXPECT_EQ(0, result.code);
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
    EXPECT_EQ(3, Finish(*child).code);

    std::vector<std::string> events;
    std::istringstream lines(child->Output());
    for (std::string line; std::getline(lines, line);) {
        Json::Value const json = ParseJson(line);
        if (json["event"] != "tick") {
            events.push_back(json["event"].asString());
        } else if (json["packets"] == 1) {
            EXPECT_EQ(2, json["sourceState"].asInt());
            EXPECT_EQ(123456, json["stc"].asInt());
            EXPECT_EQ(256, json["pids"][0]["pid"].asInt());
            EXPECT_EQ(4, json["pids"][0]["bytes"].asInt());
        }
    }
    EXPECT_THAT(events, testing::ElementsAre("connected", "subscribed", "lost", "player-control-gone",
                                             "factory-refuses", "subscriber-fails", "waiting"));
}

/// A service that answers with errors is not a service that left.
TEST_F(WatchTest, TellsThatTheServiceAnswersWithAnError)
{
    auto const child = StartCtl({"watch"});
    ASSERT_TRUE(child->WaitForOutput("subscribed to PES packets\n", patience));
    m_service->AnswerError("GetSTCCount");
    ASSERT_TRUE(child->WaitForOutput(
        "GetSTCCount: the service answered with the error org.corvel.test.Failed", patience));
    m_service->Answer("GetSTCCount", {{"result_internal", "1"}, {"stcCount", "777"}});
    ASSERT_TRUE(child->WaitForOutput("playing, STC 777", patience));
    child->Signal(SIGINT);
    EXPECT_EQ(0, Finish(*child).code);
}

} // namespace
} // namespace zviptv::test
