// SPDX-License-Identifier: MIT
#include "host/ScenarioFile.h"
#include "scenario/Parser.h"

#include <gtest/gtest.h>

namespace zviptv::sim {
namespace {

/// The text of the error; "none" without one.
std::string ErrorOfVerb(std::string const& text)
try {
    ParseScenario("dir/a.scenario", {[&text](std::string const&) { return text; }, CheckVerb});
    return "none";
} catch (ScenarioError const& failure) {
    return failure.what();
}

TEST(ScenarioVerbs, AreCheckedWordByWord)
{
    for (auto const& [text, error] : std::vector<std::pair<std::string, std::string>>{
             {"1 fault ad x", "1:9: incomplete verb 'fault': use fault add, fault remove, fault clear"},
             {"1 seek", "1:7: seek: SECONDS is missing; use seek SECONDS"},
             {"1 seek fast",
              "1:8: seek: 'fast' is not a position in seconds, 0 to 1000000; use seek SECONDS"},
             {"1 seek 1 2", "1:10: seek: unexpected argument '2'; use seek SECONDS"},
             {"1 lock door", "1:8: lock: 'door' is not programme or service; use lock programme|service"},
             {"after MuteAudio mute audio loud",
              "1:28: mute: 'loud' is not on or off; use mute audio|video on|off"},
             {"1 die --for", "1:12: die: the option '--for' needs a value; use die [--for SECONDS]"},
             {"1 die --for ever",
              "1:13: die: 'ever' is not a number of seconds, 0 to 1000000; use die [--for SECONDS]"},
             {"1 die --to 3", "1:7: die: unknown option '--to'; use die [--for SECONDS]"},
             {"1 die --for 1 --for 2",
              "1:15: die: the option '--for' is given more than once; use die [--for SECONDS]"},
             {"1 fault add MuteAudio=foo",
              "1:13: cannot use the fault 'MuteAudio=foo': unknown fault 'foo' of MuteAudio; use "
              "MuteAudio=delay:MS, drop, error, result:N, missing:KEY, garbage:KEY or short:KEY"},
             {"1 fault add --count 2 MuteAudio",
              "1:23: cannot use the fault 'MuteAudio': it is not FUNCTION=FAULT; use a text like "
              "MuteAudio=error or PESCB=delay:500,count=3"},
             {"1 fault add MuteAudio=drop,count=1 --count 2",
              "1:13: cannot use the fault 'MuteAudio=drop,count=1,count=2': count is given more than once; "
              "give it once"},
             {"1 fault add --for 0 MuteAudio=drop",
              "1:19: fault add: '0' is not a number of seconds, 0.001 to 1000000; use fault add METHOD=FAULT "
              "[--count N] [--for SECONDS]"},
             {"1 fault add GetAudio=missing:index",
              "1:13: cannot use the fault 'GetAudio=missing:index': 'index' is not a key of the answer to "
              "GetAudio; use result_internal or audio"},
             {"1 fault add CaptionCB=drop,from=1 --count 2 --for 3", ""},
             {"1 fault remove x", "1:16: cannot use the fault 'x': it is not FUNCTION=FAULT; use a text like "
                                  "MuteAudio=error or PESCB=delay:500,count=3"},
             {"1 load ftp://x",
              "1:8: cannot open ftp://x: unknown kind of input 'ftp'; use a file, -, udp://, rtp://, "
              "http:// or https://"},
             {"1 load no/such.ts",
              "1:8: cannot open dir/no/such.ts: No such file or directory: use a file that can be read, "
              "relative to the scenario's folder"},
         }) {
        EXPECT_EQ(ErrorOfVerb(text), error.empty() ? "none" : "dir/a.scenario:" + error) << text;
    }
}

TEST(ScenarioVerbs, AreAllKnown)
{
    EXPECT_EQ(
        ErrorOfVerb(
            "1 pause\n1 play\n1 seek 1\n1 speed 2\n1 load udp://@239.1.1.1:5000\n1 programme 1\n1 lock "
            "service\n"
            "1 unlock service\n1 time 1774735200\n1 fault add *=drop --count 3 --for 2\n1 fault remove "
            "*=drop\n"
            "1 fault clear\n1 mute audio on\n1 select subtitle 1\n1 die --for 2\n1 restart\n1 reset\n1 quit"),
        "none");
}

TEST(ScenarioVerbs, UnknownOnesAreListed)
{
    EXPECT_EQ(ErrorOfVerb("1 explode"),
              "dir/a.scenario:1:3: unknown verb 'explode': use pause, play, seek, speed, load, programme, "
              "lock, unlock, time, "
              "fault add, fault remove, fault clear, mute, select, die, restart, reset, quit");
}

TEST(ScenarioVerbs, FindAnInputInTheFolderOfTheScenario)
{
    std::vector<Word> verb{{"load", 1, 5}, {"sample.ts", 6, 15}};
    CheckVerb(verb, ZVIPTV_SAMPLE_FOLDER);
    EXPECT_EQ(verb[1].text, ZVIPTV_SAMPLE_FOLDER "/sample.ts");
    verb[1].text = ZVIPTV_SAMPLE_FOLDER "/sample.ts";
    CheckVerb(verb, "/elsewhere");
    EXPECT_EQ(verb[1].text, ZVIPTV_SAMPLE_FOLDER "/sample.ts");
}

} // namespace
} // namespace zviptv::sim
