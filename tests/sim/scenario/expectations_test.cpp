// SPDX-License-Identifier: MIT
#include "ScenarioTest.h"

#include <csignal>

namespace zviptv::test {
namespace {

using testing::AllOf;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::StartsWith;

using Expectations = ScenarioTest;

TEST_F(Expectations, KeepTheStatusOfTheCommandWhenMet)
{
    EXPECT_EQ(Run("expect MuteAudio onoff=1 within 30\nafter MuteAudio expect no MuteAudio for 0.3\n",
                  "\"$CTL\" mute audio on; " + Until("grep -q testcase \"$DIR/junit.xml\""),
                  {"--junit", Path("junit.xml")}),
              0);
    EXPECT_THAT(
        Errors(),
        AllOf(StartsWith("zviptv-sim: scenario " + Path("test.scenario") + ": 2 of 2 expectations met\n"),
              ContainsRegex("  met      .*:1:1: .* within 30: seen after [0-9.]+ s: MuteAudio onoff=1\n"),
              HasSubstr(" for 0.3: not seen for 0.3 s\n")));
    EXPECT_THAT(Read("junit.xml"), HasSubstr("tests=\"2\" failures=\"0\" errors=\"0\""));
}

TEST_F(Expectations, MakeTheStatus1WhenUnmet)
{
    EXPECT_EQ(Run("expect MuteAudio onoff=1 within 0.5\nexpect no MuteVideo for 30\n",
                  "\"$CTL\" mute video on >/dev/null; sleep 0.6"),
              1);
    EXPECT_THAT(Errors(),
                AllOf(HasSubstr("0 of 2 expectations met\n"),
                      ContainsRegex("  not met  .*:1:1: .*: not seen within 0.5 s; "),
                      ContainsRegex("  not met  .*:2:1: .*: seen after [0-9.]+ s: MuteVideo onoff=1\n")));
}

/// The last request of a command that ends immediately counts.
TEST_F(Expectations, IncludeTheLastRequestOfTheCommand)
{
    for (int i = 0; i < 5; ++i) {
        ASSERT_EQ(Run("expect MuteAudio onoff=0 within 30\n", "exec \"$CTL\" mute audio off"), 0) << Errors();
    }
}

TEST_F(Expectations, AreDecidedWhenTheCommandEnds)
{
    EXPECT_EQ(
        Run("expect MuteAudio within 1000\nexpect no MuteVideo for 1000\n900 expect SetAppID within 1\n",
            "true"),
        1);
    EXPECT_THAT(Errors(),
                AllOf(HasSubstr("1 of 3 expectations met\n"),
                      ContainsRegex(
                          ":1:1: .*: not seen before the command ended, [0-9.]+ s later; no request came\n"),
                      ContainsRegex(":2:1: .*: not seen before the command ended, [0-9.]+ s later\n"),
                      ContainsRegex(":3:1: .*: never began: the command ended at second [0-9.]+\n")));
}

TEST_F(Expectations, KeepTheStatusOfACommandThatFails)
{
    EXPECT_EQ(Run("expect MuteAudio within 1000\n", "exit 7"), 7);
    EXPECT_THAT(Errors(), HasSubstr("0 of 1 expectation met\n"));
    EXPECT_EQ(Run("expect no MuteAudio for 1000\n", "exit 7"), 7);
}

TEST_F(Expectations, AreReportedWhenTheCommandIsKilled)
{
    ChildProcess& process = Start(Write("test.scenario", "expect MuteAudio within 1000\n"),
                                  {"--junit", Path("junit.xml")}, "echo running; kill -KILL $$");
    EXPECT_EQ(End(process), 128 + SIGKILL);
    EXPECT_THAT(Read("junit.xml"),
                AllOf(HasSubstr("failures=\"1\""),
                      HasSubstr("<failure message=\"not seen before the command ended, ")));
}

TEST_F(Expectations, AreReportedWhenTheSimulatorIsTerminated)
{
    ChildProcess& process = Start(Write("test.scenario", "expect MuteAudio within 1000\n"),
                                  {"--junit", Path("junit.xml")}, "echo running; exec sleep 1000");
    ASSERT_TRUE(process.WaitForOutput("running\n", Patience));
    process.Signal(SIGTERM);
    EXPECT_EQ(End(process), 128 + SIGTERM);
    EXPECT_THAT(Read("junit.xml"), HasSubstr("failures=\"1\""));
}

TEST_F(Expectations, AreReportedWithoutACommandWhenDecided)
{
    ChildProcess& process =
        Start(Write("test.scenario", "expect MuteAudio within 0.2\nexpect no MuteVideo for 0.3\n"),
              {"--bus", "private", "--quiet"}, "");
    ASSERT_TRUE(process.WaitForErrors("1 of 2 expectations met\n", Patience));
    process.Signal(SIGTERM);
    EXPECT_EQ(End(process), 1);
}

TEST_F(Expectations, AreReportedAtTheEndWithoutACommand)
{
    EXPECT_EQ(Run("0.3 quit\nexpect MuteAudio within 1000\n", "", {"--bus", "private", "--quiet"}), 1);
    EXPECT_THAT(Errors(), HasSubstr(": not seen before the simulator ended, "));
    EXPECT_EQ(Run("0.3 quit\nexpect no MuteAudio for 1000\n", "", {"--bus", "private", "--quiet"}), 0);
}

TEST_F(Expectations, OfAServiceThatDoesNotStartAreNotMet)
{
    EXPECT_EQ(Run("expect MuteAudio within 1\n", "true", {"--program", "7", "--junit", Path("junit.xml")}),
              1);
    EXPECT_THAT(Errors(), HasSubstr("never began: the service did not start\n"));
    EXPECT_THAT(Read("junit.xml"), HasSubstr("failures=\"1\""));
}

/// Texts of an application in the report.
TEST_F(Expectations, AreValidXml)
{
    EXPECT_EQ(Run("expect no SetAppID for 1000\n", "\"$CTL\" call SetAppID '<a href=\"x\">&amp;'",
                  {"--junit", Path("junit.xml")}),
              1);
    EXPECT_THAT(Read("junit.xml"), HasSubstr("SetAppID AppID=&lt;a href=&quot;x&quot;&gt;&amp;amp;\"/>"));
    ChildProcess reader({"/usr/bin/python3", "-c",
                         "import sys, xml.dom.minidom as d; print(d.parse(sys.argv[1])."
                         "getElementsByTagName('failure')[0].getAttribute('message'))",
                         Path("junit.xml")});
    EXPECT_EQ(End(reader), 0) << reader.Errors();
    EXPECT_THAT(reader.Output(), HasSubstr("SetAppID AppID=<a href=\"x\">&amp;\n"));
}

} // namespace
} // namespace zviptv::test
