// SPDX-License-Identifier: MIT
#include "ChildProcess.h"

#include <gmock/gmock.h>

#include <map>
#include <string>

using namespace zviptv::test;
using testing::MatchesRegex;

namespace {

using Environment = std::map<std::string, std::string>;

struct Written
{
    std::string output;
    std::string errors;
};

/// The output of the four lines of a program with this environment.
Written LinesWith(Environment const& environment)
{
    ChildProcess child({LOG_PROBE, "lines"}, environment);
    EXPECT_EQ(child.Wait(std::chrono::seconds(20)), ExitStatus({0, 0}));
    return {child.Output(), child.Errors()};
}

std::string const DebugLine = "ZV_IPTV_API debug: log_probe\\.cpp: WriteLines\\([0-9]+\\) > a debug line\n";
std::string const InfoLine =
    "ZV_IPTV_API info: log_probe\\.cpp: WriteLines\\([0-9]+\\) > an info line, 100% of it: 50%s%n\n";
std::string const ErrorLine = "ZV_IPTV_API error: log_probe\\.cpp: WriteLines\\([0-9]+\\) > an error line\n";
std::string const EntryLine = "ZV_IPTV_API info: log_probe\\.cpp: WriteLines\\([0-9]+\\) > \n";

TEST(LogEnvironment, StandardErrorGetsEveryLine)
{
    Written const written = LinesWith({{"ZV_IPTV_LOG", "stderr"}, {"ZV_IPTV_LOG_LEVEL", ""}});
    EXPECT_THAT(written.errors, MatchesRegex(DebugLine + InfoLine + ErrorLine + EntryLine));
    EXPECT_EQ(written.output, "");
}

TEST(LogEnvironment, LevelsOmitLessImportantLines)
{
    EXPECT_THAT(LinesWith({{"ZV_IPTV_LOG", "stderr"}, {"ZV_IPTV_LOG_LEVEL", "debug"}}).errors,
                MatchesRegex(DebugLine + InfoLine + ErrorLine + EntryLine));
    EXPECT_THAT(LinesWith({{"ZV_IPTV_LOG", "stderr"}, {"ZV_IPTV_LOG_LEVEL", "info"}}).errors,
                MatchesRegex(InfoLine + ErrorLine + EntryLine));
    EXPECT_THAT(LinesWith({{"ZV_IPTV_LOG", "stderr"}, {"ZV_IPTV_LOG_LEVEL", "error"}}).errors,
                MatchesRegex(ErrorLine));
}

TEST(LogEnvironment, NoneAndTheSystemLogDoNotUseTheStandardStreams)
{
    for (char const* const destination : {"none", "system", ""}) {
        Written const written = LinesWith({{"ZV_IPTV_LOG", destination}});
        EXPECT_EQ(written.errors, "") << destination;
        EXPECT_EQ(written.output, "") << destination;
    }
}

TEST(LogEnvironment, UnknownWordsNeverReachStandardOutput)
{
    for (Environment const& environment :
         {Environment{{"ZV_IPTV_LOG", "stdout"}}, Environment{{"ZV_IPTV_LOG", "STDERR"}},
          Environment{{"ZV_IPTV_LOG", "stderr"}, {"ZV_IPTV_LOG_LEVEL", "loud"}},
          Environment{{"ZV_IPTV_LOG", "none"}, {"ZV_IPTV_LOG_LEVEL", "loud"}}}) {
        EXPECT_EQ(LinesWith(environment).output, "");
    }
}

TEST(LogEnvironment, AnUnknownLevelLosesNoLine)
{
    EXPECT_THAT(LinesWith({{"ZV_IPTV_LOG", "stderr"}, {"ZV_IPTV_LOG_LEVEL", "loud"}}).errors,
                MatchesRegex("(.|\n)*" + DebugLine + InfoLine + ErrorLine + EntryLine));
}

TEST(LogEnvironment, AnUnknownLevelIsReportedInTheLog)
{
    std::string const complaint =
        "ZV_IPTV_API error: [A-Za-z]+\\.cpp: [A-Za-z]+\\([0-9]+\\) > .*ZV_IPTV_LOG_LEVEL=loud.*\n";
    EXPECT_THAT(LinesWith({{"ZV_IPTV_LOG", "stderr"}, {"ZV_IPTV_LOG_LEVEL", "loud"}}).errors,
                MatchesRegex(complaint + DebugLine + InfoLine + ErrorLine + EntryLine));
}

} // namespace
