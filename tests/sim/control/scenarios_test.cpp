// SPDX-License-Identifier: MIT
#include "Remote.h"

namespace zviptv::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

/// Scenarios that a client of the control interface starts.
class Scenarios : public ControlTest
{
protected:
    void Ask(std::string const& onOff)
    {
        m_application.Announce("PLAYERCONTROL");
        m_application.Ask("PLAYERCONTROL", {{"functionname", "MuteAudio"}, {"onoff", onOff}});
    }

    Application m_application;
};

TEST_F(Scenarios, ScenarioRunsFromTheCall)
{
    StartControlled();
    ASSERT_EQ(m_remote->Call("StartScenario", "('expect MuteAudio onoff=1 within 50', '')"), "(uint32 1,)");
    ASSERT_EQ(m_remote->Call("StartScenario", "('0 pause\\nafter MuteAudio lock programme', '')"),
              "(uint32 2,)");
    EXPECT_TRUE(m_remote->WaitFor("Paused", "true"));
    Ask("1");
    EXPECT_TRUE(m_remote->WaitFor("ProgrammeLocked", "true"));
    EXPECT_THAT(m_remote->Call("EndScenario", "(uint32 1, 50.0)"),
                AllOf(StartsWith("(true, 'zviptv-sim: scenario scenario: 1 of 1 expectation met\\n  met      "
                                 "scenario:1:1: expect MuteAudio onoff=1 within 50: seen after "),
                      HasSubstr(" s: MuteAudio onoff=1\\n')")));
    EXPECT_EQ(m_remote->Call("EndScenario", "(uint32 2, 50.0)"), "(true, '')");
}

TEST_F(Scenarios, UnmetExpectationIsReported)
{
    StartControlled();
    ASSERT_EQ(m_remote->Call("StartScenario", "('expect MuteAudio onoff=1 within 0.2', 'tests/film')"),
              "(uint32 1,)");
    Ask("0");
    EXPECT_THAT(
        m_remote->Call("EndScenario", "(uint32 1, 50.0)"),
        AllOf(StartsWith("(false, 'zviptv-sim: scenario tests/film: 0 of 1 expectation met\\n  not met  "
                         "tests/film:1:1: expect MuteAudio onoff=1 within 0.2: not seen within 0.2 s; "
                         "instead MuteAudio onoff=0 after ")));
}

TEST_F(Scenarios, CountsAnAnsweredRequestWhenTheTimeIsOver)
{
    StartControlled();
    ASSERT_EQ(m_remote->Call("StartScenario",
                             "('after MuteAudio expect MuteVideo within 9\\nexpect MuteAudio within 9', '')"),
              "(uint32 1,)");
    Ask("1");
    EXPECT_THAT(m_remote->Call("EndScenario", "(uint32 1, 0.0)"),
                AllOf(StartsWith("(false, 'zviptv-sim: scenario scenario: 1 of 2 expectations met\\n"),
                      HasSubstr("expect MuteVideo within 9: not seen before the test ended, "),
                      HasSubstr("met      scenario:2:1: expect MuteAudio within 9: seen after ")));
}

TEST_F(Scenarios, ErrorsAreAllReportedAndNothingStarts)
{
    StartControlled();
    EXPECT_EQ(m_remote->Call("StartScenario", "('1 lock door\\nafter MuteAudio colour=1 pause', '')"),
              std::string(Invalid) +
                  "scenario:1:8: lock: 'door' is not programme or service; use lock "
                  "programme|service\nscenario:2:17: MuteAudio has no key 'colour': use onoff");
    EXPECT_EQ(m_remote->Call("EndScenario", "(uint32 1, 0.0)"),
              std::string(Invalid) +
                  "no scenario 1 of this client runs; use a number that StartScenario has returned");
}

TEST_F(Scenarios, OnlyItsClientMayEndIt)
{
    StartControlled();
    ASSERT_EQ(m_remote->Call("StartScenario", "('expect MuteAudio within 100', '')"), "(uint32 1,)");
    Remote other(m_bus.Address());
    EXPECT_THAT(other.Call("EndScenario", "(uint32 1, 0.0)"), StartsWith(Invalid));
    EXPECT_EQ(m_remote->Call("EndScenario", "(uint32 1, -1.0)"),
              std::string(Invalid) + "the time is not a number of seconds, 0 to 1000000");
    EXPECT_THAT(m_remote->Call("EndScenario", "(uint32 1, 0.0)"), StartsWith("(false, "));
}

TEST_F(Scenarios, ScenariosOfAClientThatLeavesEnd)
{
    StartControlled();
    {
        Remote leaving(m_bus.Address());
        for (int i = 0; i < 100; ++i) {
            ASSERT_EQ(leaving.Call("StartScenario", "('after MuteAudio pause', '')").find(Failed),
                      std::string::npos);
        }
        EXPECT_EQ(leaving.Call("StartScenario", "('after MuteAudio pause', '')"),
                  std::string(Failed) +
                      "100 scenarios have been started and not ended; call EndScenario for them");
    }
    EXPECT_TRUE(WaitUntil(
        [this] {
            return m_remote->Call("StartScenario", "('after MuteAudio play', '')").find("(uint32") == 0;
        },
        Patience));
    Ask("1");
    EXPECT_EQ(m_remote->Get("Paused"), "false");
}

TEST_F(Scenarios, ScenarioContinuesDuringADeath)
{
    StartControlled({"--loop", "--restart-after", "0"});
    ASSERT_EQ(
        m_remote->Call("StartScenario", "('0 die\\n0 lock programme\\nexpect MuteAudio within 50', '')"),
        "(uint32 1,)");
    EXPECT_TRUE(m_remote->WaitForSignal("Restarted"));
    EXPECT_TRUE(m_remote->WaitFor("ProgrammeLocked", "true"));
    Ask("1");
    EXPECT_THAT(m_remote->Call("EndScenario", "(uint32 1, 50.0)"), StartsWith("(true, "));
}

} // namespace
} // namespace zviptv::test
