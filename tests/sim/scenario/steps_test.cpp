// SPDX-License-Identifier: MIT
#include "ScenarioTest.h"

namespace zviptv::test {
namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

using ScenarioSteps = ScenarioTest;

std::string StatusHas(std::string const& line)
{
    return "\"$CTL\" sim status | grep -q '" + line + "'";
}

TEST_F(ScenarioSteps, ControlTheTelevision)
{
    EXPECT_EQ(Run("0 lock programme\n0 select audio 1\n0.1 mute video on\n",
                  Until(StatusHas("^ProgrammeLocked: *yes")) + Until(StatusHas("^Audio: *1")) +
                      Until(StatusHas("^VideoMuted: *yes"))),
              0)
        << Errors();
    EXPECT_THAT(Errors(), IsEmpty());
}

TEST_F(ScenarioSteps, RunInTheOrderOfTheirTimes)
{
    EXPECT_EQ(Run("0.4 quit\n0.2 lock service\n0.3 unlock service\n", "", {"--bus", "private", "--verbose"}),
              0);
    std::string const errors = Errors();
    std::size_t const lock = errors.find(": 0.2 lock service\n");
    std::size_t const unlock = errors.find(": 0.3 unlock service\n");
    std::size_t const quit = errors.find(": 0.4 quit\n");
    EXPECT_LT(lock, unlock);
    EXPECT_LT(unlock, quit);
    EXPECT_NE(quit, std::string::npos) << errors;
}

TEST_F(ScenarioSteps, RunAfterARequest)
{
    EXPECT_EQ(Run("after MuteAudio onoff=off lock programme\nafter SetAppID AppID=\"one two\" lock service\n",
                  "\"$CTL\" mute audio on >/dev/null; \"$CTL\" call SetAppID 'one two' >/dev/null; " +
                      Until(StatusHas("^ServiceLocked: *yes")) +
                      "\"$CTL\" sim status | grep '^ProgrammeLocked'; " +
                      "\"$CTL\" mute audio off >/dev/null; " + Until(StatusHas("^ProgrammeLocked: *yes"))),
              0)
        << Errors();
    EXPECT_THAT(Output(), AllOf(HasSubstr("ProgrammeLocked:"), EndsWith(" no\n")));
}

/// A text of more than 60 characters, and one that is not ASCII.
TEST_F(ScenarioSteps, CompareTextsOfAnyLength)
{
    std::string const name = "a-name-of-more-than-sixty-characters-which-is-not-cut-anywhere-on-its-way-1";
    EXPECT_EQ(
        Run("expect SetAppID AppID=" + name + " within 30\nexpect SetAppID AppID=Z\xC3\xBCrich within 30\n",
            "\"$CTL\" call SetAppID " + name + "; \"$CTL\" call SetAppID Z\xC3\xBCrich"),
        0)
        << Errors();
}

TEST_F(ScenarioSteps, CompareTheSizeOfVeryLongTexts)
{
    EXPECT_EQ(Run("expect SetAppID AppID=\"<5000 bytes>\" within 30\n",
                  "\"$CTL\" call SetAppID $(head -c 5000 /dev/zero | tr '\\0' x) && echo sent"),
              0)
        << Errors();
    EXPECT_THAT(Output(), HasSubstr("sent"));
}

TEST_F(ScenarioSteps, ChangeTheServiceThatReturns)
{
    EXPECT_EQ(Run("0.2 die --for 0.2\n0.2 lock programme\n",
                  Until(StatusHas("^ProgrammeLocked: *yes")) + StatusHas("^Running: *yes")),
              0)
        << Errors();
}

/// Earlier requests to the service take effect before it dies.
TEST_F(ScenarioSteps, OfOneTimeRunOneAfterTheOther)
{
    EXPECT_EQ(
        Run("0 lock programme\n0 speed 2\n0 lock service\n0 die --for 0\n",
            Until("\"$CTL\" sim status >\"$DIR/status\"; grep -q '^ProgrammeLocked: *yes' \"$DIR/status\" && "
                  "grep -q '^ServiceLocked: *yes' \"$DIR/status\" && grep -q '^Running: *yes' "
                  "\"$DIR/status\"")),
        0);
    EXPECT_EQ(Errors(), "zviptv-sim: the service dies\nzviptv-sim: the service comes back\n");
}

TEST_F(ScenarioSteps, AreShownByTheControlInterface)
{
    EXPECT_EQ(Run("0 pause\n0.1 play\n100 pause\n", Until(StatusHas("^ScenarioStep: .*test.scenario:2:1$"))),
              0);
    EXPECT_THAT(Errors(), AllOf(HasSubstr("0 of 0 expectations met\n"), HasSubstr("  not run  "),
                                HasSubstr("test.scenario:3:1: 100 pause\n"), Not(HasSubstr("0.1 play"))));
}

TEST_F(ScenarioSteps, OfAFileWithAnyNameRun)
{
    EXPECT_EQ(
        End(Start(Write("\xFF\x1B.scenario", "0 lock programme\n"), {"--verbose"},
                  Until(StatusHas("^ProgrammeLocked: *yes")) + StatusHas("^ScenarioStep: .*scenario:1:1$"))),
        0)
        << Errors();
}

/// The contents of the stream are unknown before it is played.
TEST_F(ScenarioSteps, FailWhenRefused)
{
    EXPECT_EQ(
        Run("0 select audio 9\n", Until("grep -q audio \"$DIR/junit.xml\""), {"--junit", Path("junit.xml")}),
        1);
    EXPECT_THAT(Errors(), AllOf(HasSubstr("test.scenario:1:1: there is no audio track 9: use 0 to 1\n"),
                                HasSubstr("  failed   " + Path("test.scenario") +
                                          ":1:1: 0 select audio 9: there is no "
                                          "audio track 9: use 0 to 1\n")));
    EXPECT_THAT(Read("junit.xml"),
                AllOf(HasSubstr("errors=\"1\""),
                      HasSubstr("<error message=\"there is no audio track 9: use 0 to 1\"/>")));
}

TEST_F(ScenarioSteps, OfIncludedFilesRun)
{
    Write("more.scenario", "0 lock service\n");
    EXPECT_EQ(Run("include more.scenario\n", Until(StatusHas("^ServiceLocked: *yes"))), 0);
}

TEST_F(ScenarioSteps, LoadInputsFromTheFolderOfTheScenario)
{
    std::filesystem::copy(ZVIPTV_SCENARIOS "/other-tracks.ts", Path("other.ts"));
    EXPECT_EQ(Run("0.1 load other.ts\n", Until("\"$CTL\" audio list | grep -q ita")), 0);
}

/// The call of restart is not answered any more.
TEST_F(ScenarioSteps, QuitEndsAServiceThatStarts)
{
    EXPECT_EQ(Run("0 die\n0 restart\n0 quit\n", "", {"--bus", "private", "--quiet"}), 0);
    EXPECT_EQ(Errors(), "zviptv-sim: the service dies\nzviptv-sim: the service comes back\n");
}

TEST_F(ScenarioSteps, QuitEndsTheCommandToo)
{
    EXPECT_EQ(Run("0.2 quit\n", "exec sleep 1000"), 128 + SIGTERM);
}

} // namespace
} // namespace zviptv::test
