// SPDX-License-Identifier: MIT
#include "KitTest.h"

#include <gmock/gmock.h>

#include <thread>

namespace zviptv::test {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;

TEST_F(KitTest, VerbsControlTheTelevision)
{
    m_television.Pause();
    EXPECT_EQ(m_television.Property("Paused"), "true");
    m_television.Play();
    EXPECT_EQ(m_television.Property("Paused"), "false");
    m_television.Speed(2.5);
    EXPECT_EQ(m_television.Property("Speed"), "2.5");
    m_television.Seek(1.5);
    m_television.Lock("programme");
    EXPECT_EQ(m_television.Property("ProgrammeLocked"), "true");
    m_television.Unlock("programme");
    EXPECT_EQ(m_television.Property("ProgrammeLocked"), "false");
    m_television.Time(1774735300);
    EXPECT_THAT(m_television.Property("GuideTime"), HasSubstr("17747353"));
    m_television.Mute("video", true);
    EXPECT_EQ(m_television.Property("VideoMutedBy"), "'control'");
    m_television.Select("audio", 1);
    EXPECT_EQ(m_television.Property("Audio"), "1");
    m_television.Fault("MuteAudio=drop", 3, 60);
    m_television.Fault("GetAudio=error");
    m_television.RemoveFault("MuteAudio=drop");
    EXPECT_THAT(m_television.Property("Faults"), HasSubstr("'GetAudio=error'"));
    EXPECT_THAT(m_television.Property("Faults"), testing::Not(HasSubstr("MuteAudio")));
    m_television.ClearFaults();
    EXPECT_EQ(m_television.Property("Faults"), "[]");
    m_television.Programme(1);
    m_television.Load(ZVIPTV_SAMPLE_FILE);
    m_television.Restart();
    EXPECT_EQ(m_television.Property("Running"), "true");
}

TEST_F(KitTest, FaultAcceptsOptions)
{
    m_television.Fault("MuteAudio=result:0", 1);
    EXPECT_FALSE(Mute(true));
    EXPECT_TRUE(Mute(true));
    std::vector<simulated::Request> const requests = m_television.Requests();
    ASSERT_EQ(requests.size(), 2U);
    EXPECT_EQ(requests[0].Answer(), "refused");
    EXPECT_EQ(requests[1].Answer(), "done");
    EXPECT_EQ(requests[1].function, "MuteAudio");
    EXPECT_EQ(requests[1].arguments, (std::map<std::string, std::string>{{"onoff", "1"}}));
    EXPECT_EQ(requests[1].endpoint, "PLAYERCONTROL");
}

TEST_F(KitTest, DeadServiceReturns)
{
    m_television.Die(0.05);
    EXPECT_FALSE(Mute(true));
    while (m_television.Property("Running") == "false") {
        std::this_thread::sleep_for(10ms);
    }
    EXPECT_THAT(m_television.ConversationTable(), HasSubstr("the service has died"));
    EXPECT_THAT(m_television.ConversationTable(), HasSubstr("the service is back"));
}

TEST_F(KitTest, ResetStartsADeadService)
{
    m_television.Die();
    m_television.Reset();
    EXPECT_TRUE(Mute(true));
}

TEST_F(KitTest, ExpectationIsMetByAnEarlierRequestOnce)
{
    EXPECT_TRUE(Mute(true));
    EXPECT_TRUE(m_television.Expect("MuteAudio", {{"onoff", true}}));
    EXPECT_FALSE(m_television.Expect("MuteAudio", {{"onoff", true}}, 50ms));
    EXPECT_TRUE(Mute(true));
    EXPECT_TRUE(m_television.Expect("MuteAudio"));
}

TEST_F(KitTest, ExpectationWaits)
{
    std::thread application([] {
        std::this_thread::sleep_for(200ms); // the expectation begins before
        Mute(true);
    });
    EXPECT_TRUE(m_television.Expect("MuteAudio", {{"onoff", 1}}, 30s));
    application.join();
}

TEST_F(KitTest, UnmetExpectationNamesNearMisses)
{
    EXPECT_TRUE(Mute(false));
    testing::AssertionResult const result = m_television.Expect("MuteAudio", {{"onoff", true}}, 100ms);
    EXPECT_FALSE(result);
    EXPECT_THAT(result.message(),
                testing::MatchesRegex("MuteAudio onoff=1 did not come within 0.1 s: instead came "
                                      "MuteAudio onoff=0 after [0-9.]+ s"));
    EXPECT_STREQ(m_television.Expect("MuteVideo", {}, 50ms).message(),
                 "MuteVideo did not come within 0.05 s: other requests came: MuteAudio");
    m_television.Reset();
    EXPECT_STREQ(m_television.Expect("MuteVideo", {}, 50ms).message(),
                 "MuteVideo did not come within 0.05 s: no request came");
}

TEST_F(KitTest, UnexpectedRequestIsReported)
{
    EXPECT_TRUE(m_television.ExpectNo("MuteAudio", {}, 50ms));
    EXPECT_TRUE(Mute(false));
    EXPECT_TRUE(m_television.ExpectNo("MuteAudio", {{"onoff", true}}, 50ms));
    EXPECT_THAT(m_television.ExpectNo("MuteAudio").message(),
                HasSubstr("MuteAudio onoff=0 was not expected, but came"));
}

TEST_F(KitTest, WrongWordsAreRefused)
{
    EXPECT_THROW((void)m_television.Expect("MuteAduio"), std::invalid_argument);
    EXPECT_THROW((void)m_television.Expect("MuteAudio", {{"colour", 1}}), std::invalid_argument);
    EXPECT_THROW(m_television.Property("Colour"), std::invalid_argument);
    EXPECT_THROW(m_television.Lock("\xff"), std::invalid_argument);
    try {
        m_television.Lock("door");
        ADD_FAILURE() << "the verb was not refused";
    } catch (simulated::TelevisionError const& error) {
        EXPECT_STREQ(error.what(), "'door' is not programme or service");
    }
    EXPECT_THAT(m_television.ConversationTable(), HasSubstr("lock door  'door' is not programme or service"));
}

TEST_F(KitTest, ScenarioRunsBesideTheApplication)
{
    auto scenario = m_television.Scenario("after MuteAudio lock programme\n"
                                          "after MuteAudio expect MuteAudio onoff=0 within 30");
    EXPECT_TRUE(Mute(true));
    EXPECT_TRUE(Mute(false));
    EXPECT_TRUE(scenario.Wait());
    EXPECT_EQ(m_television.Property("ProgrammeLocked"), "true");
    EXPECT_THAT(m_television.ConversationTable(), HasSubstr("scenario  runs scenario:1:1\n"));
}

TEST_F(KitTest, UnmetScenarioIsReported)
{
    testing::AssertionResult const result = m_television.Scenario("expect MuteAudio within 0.1").Wait();
    EXPECT_FALSE(result);
    EXPECT_STREQ(
        result.message(),
        "scenario scenario: 0 of 1 expectation met\n  not met  scenario:1:1: expect MuteAudio within 0.1: "
        "not seen within 0.1 s; no request came\n");
    EXPECT_FALSE(m_television.Scenario("after MuteAudio expect MuteAudio within 9").Wait(100ms));
    EXPECT_THROW((void)m_television.Scenario("1 lock door"), simulated::TelevisionError);
}

TEST_F(KitTest, OtherOptionsAreRefused)
{
    EXPECT_THROW(simulated::Television{}, simulated::TelevisionError);
}

TEST_F(KitTest, ResetTakesLessThan50Milliseconds)
{
    std::vector<double> milliseconds;
    for (int i = 0; i < 21; ++i) {
        EXPECT_TRUE(Mute(true));
        m_television.Fault("GetAudio=drop");
        m_television.Seek(4);
        auto const start = std::chrono::steady_clock::now();
        m_television.Reset();
        milliseconds.push_back(1000 * simulated::Seconds(std::chrono::steady_clock::now() - start).count());
    }
    std::sort(milliseconds.begin(), milliseconds.end());
    RecordProperty("median_ms", std::to_string(milliseconds[10]));
    std::cout << "a reset takes " << milliseconds[10] << " ms (median of 21)\n";
    EXPECT_LT(milliseconds[10], 50 * ZVIPTV_SLOWNESS);
}

} // namespace
} // namespace zviptv::test
