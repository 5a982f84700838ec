// SPDX-License-Identifier: MIT
#include "ScenarioTest.h"

#include <fstream>
#include <sstream>

namespace zviptv::test {
namespace {

using testing::HasSubstr;

using ScenarioErrors = ScenarioTest;

TEST_F(ScenarioErrors, AreAllReportedBeforeTheStart)
{
    std::string const more = Write("more.scenario", "0 lock door\n");
    EXPECT_EQ(Run("x\n0 seek fast\ninclude more.scenario\n", "touch \"$DIR/started\"",
                  {"--junit", Path("junit.xml")}),
              2);
    std::string const here = Path("test.scenario");
    EXPECT_EQ(Errors(),
              here +
                  ":1:1: unknown beginning of a step 'x': use SECONDS VERB, after METHOD VERB, expect METHOD "
                  "within SECONDS, expect no METHOD for SECONDS, or include FILE\n" +
                  here + ":2:8: seek: 'fast' is not a position in seconds, 0 to 1000000; use seek SECONDS\n" +
                  more + ":1:8: lock: 'door' is not programme or service; use lock programme|service\n");
    EXPECT_FALSE(std::filesystem::exists(Path("started")));
    EXPECT_FALSE(std::filesystem::exists(Path("junit.xml")));
}

TEST_F(ScenarioErrors, ShowNoControlCharacters)
{
    EXPECT_EQ(Run("0 load \"\x1B[2J\"\n", "true"), 2);
    EXPECT_THAT(Errors(),
                HasSubstr(":1:8: cannot open " + m_folder + "/\\x1b[2J: No such file or directory: use"));
}

TEST_F(ScenarioErrors, ReportAFileThatCannotBeRead)
{
    EXPECT_EQ(End(Start(Path("no.scenario"), {}, "true")), 2);
    EXPECT_EQ(Errors(), "zviptv-sim: cannot open " + Path("no.scenario") +
                            ": No such file or directory; check that it is a file that can be read\n");
    EXPECT_EQ(End(Start(m_folder, {}, "true")), 2);
    EXPECT_EQ(Errors(), "zviptv-sim: cannot open " + m_folder +
                            ": it is not a file; check that it is a file that can be read\n");
    std::string const large = Write("large.scenario", std::string(1024 * 1024 + 1, '#'));
    EXPECT_EQ(End(Start(large, {}, "true")), 2);
    EXPECT_EQ(Errors(), "zviptv-sim: cannot open " + large +
                            ": it is larger than 1 MiB; check that it is a file that can be read\n");
}

TEST_F(ScenarioErrors, ReportAnUnwritableReport)
{
    EXPECT_EQ(Run("1 pause\n", "touch \"$DIR/started\"", {"--junit", Path("no/junit.xml")}), 2);
    EXPECT_EQ(Errors(), "zviptv-sim: cannot write " + Path("no/junit.xml") +
                            ": No such file or directory; use --junit with a file that can be written\n");
    EXPECT_FALSE(std::filesystem::exists(Path("started")));
    EXPECT_EQ(Run("1 pause\n", "true", {"--junit", "/dev/full"}), 1);
    EXPECT_THAT(
        Errors(),
        HasSubstr("zviptv-sim: cannot write /dev/full: No space left on device; free some space and run the "
                  "scenario again\n"));
}

TEST_F(ScenarioErrors, ReportThatTheReportWouldReplaceTheScenario)
{
    std::string const report = m_folder + "/./test.scenario";
    EXPECT_EQ(Run("1 pause\n", "touch \"$DIR/started\"", {"--junit", report}), 2);
    EXPECT_EQ(Errors(), "zviptv-sim: cannot write the report to " + report +
                            ": it is the scenario; use --junit with another file\n");
    EXPECT_FALSE(std::filesystem::exists(Path("started")));
    std::ostringstream content;
    content << std::ifstream(Path("test.scenario")).rdbuf();
    EXPECT_EQ(content.str(), "1 pause\n");
}

TEST_F(ScenarioErrors, ReportThatAReportNeedsAScenario)
{
    ChildProcess process(
        {ZVIPTV_SIM, "--ts", ZVIPTV_SAMPLE_FILE, "--junit", Path("junit.xml"), "--", "true"});
    EXPECT_EQ(End(process), 2);
    EXPECT_EQ(process.Errors(), "zviptv-sim: --junit requires --scenario\n'zviptv-sim --help' shows more\n");
}

TEST_F(ScenarioErrors, DoNotAffectAPipe)
{
    ChildProcess process({"bash", "-c",
                          "exec \"$0\" --ts \"$1\" --scenario <(echo 'expect no MuteAudio for 1000') -- true",
                          ZVIPTV_SIM, ZVIPTV_SAMPLE_FILE});
    EXPECT_EQ(End(process), 0);
    EXPECT_THAT(process.Errors(), HasSubstr("1 of 1 expectation met\n"));
}

} // namespace
} // namespace zviptv::test
