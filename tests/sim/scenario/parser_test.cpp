// SPDX-License-Identifier: MIT
#include "Texts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zviptv::sim {
namespace {

using testing::ElementsAre;

/// The text of the error; "none" without one.
std::string ErrorOf(std::map<std::string, std::string> const& files)
try {
    Parsed(files);
    return "none";
} catch (ScenarioError const& failure) {
    return failure.what();
}

std::string ErrorOf(std::string const& text)
{
    return ErrorOf({{"a.scenario", text}});
}

TEST(ScenarioParser, ReadsStepsInTheOrderOfTheLines)
{
    Scenario const scenario =
        Parsed("# a comment\n\n 2.5 lock programme # another\r\n\tafter MuteAudio onoff=1 die --for 3\n"
               "expect SetAppID AppID=\"one two\" within 4\n7 expect no MuteVideo for 0.5");
    ASSERT_EQ(scenario.steps.size(), 4U);
    EXPECT_EQ(scenario.steps[0].second, 2.5);
    EXPECT_EQ(scenario.steps[0].text, "2.5 lock programme");
    EXPECT_THAT(scenario.steps[0].verb, ElementsAre("lock", "programme"));
    EXPECT_EQ(ToText(scenario.steps[0].place), "a.scenario:3:2");
    EXPECT_EQ(ToText(scenario.steps[1].place), "a.scenario:4:2");
    EXPECT_TRUE(scenario.steps[1].after->Matches({"MuteAudio", {{"onoff", "1"}}}));
    EXPECT_THAT(scenario.steps[1].verb, ElementsAre("die", "--for", "3"));
    EXPECT_EQ(scenario.steps[2].second, 0);
    EXPECT_TRUE(scenario.steps[2].expectation->isWanted);
    EXPECT_EQ(scenario.steps[2].expectation->seconds, 4);
    EXPECT_TRUE(scenario.steps[2].expectation->request.Matches({"SetAppID", {{"AppID", "one two"}}}));
    EXPECT_FALSE(scenario.steps[3].expectation->isWanted);
    EXPECT_EQ(scenario.steps[3].expectation->seconds, 0.5);
}

TEST(ScenarioParser, RefusesExpectationsThatCheckNothing)
{
    EXPECT_EQ(ErrorOf("1 expect MuteAudio within 0\n2 expect no MuteAudio for 0.0\n"),
              "a.scenario:1:27: 0 seconds check nothing: use a number of seconds above 0\n"
              "a.scenario:2:27: 0 seconds check nothing: use a number of seconds above 0");
}

TEST(ScenarioParser, AcceptsAnyTextInQuotationMarks)
{
    Scenario const scenario = Parsed(R"(1 load "a \"b\" \\ #c" d"e f"g)");
    EXPECT_THAT(scenario.steps.at(0).verb, ElementsAre("load", R"(a "b" \ #c)", "de fg"));
}

TEST(ScenarioParser, AnEmptyScenarioHasNoSteps)
{
    EXPECT_TRUE(Parsed("").steps.empty());
    EXPECT_TRUE(Parsed("\n  # nothing\n").steps.empty());
}

TEST(ScenarioParser, IncludesFilesInTheirPlace)
{
    Scenario const scenario = Parsed({{"a.scenario", "1 pause\ninclude more/b.scenario\n4 play"},
                                      {"more/b.scenario", "2 pause\ninclude ../c.scenario"},
                                      {"c.scenario", "3 pause"}});
    std::vector<std::string> places;
    for (Step const& step : scenario.steps) {
        places.push_back(ToText(step.place));
    }
    EXPECT_THAT(places,
                ElementsAre("a.scenario:1:1", "more/b.scenario:1:1", "c.scenario:1:1", "a.scenario:3:1"));
}

TEST(ScenarioParser, IncludesAFileTwice)
{
    EXPECT_EQ(Parsed({{"a.scenario", "include b.scenario\ninclude b.scenario"}, {"b.scenario", "1 pause"}})
                  .steps.size(),
              2U);
}

TEST(ScenarioParser, NamesFileLineAndColumnOfEachError)
{
    for (auto const& [text, error] : std::vector<std::pair<char const*, char const*>>{
             {"lock programme", "a.scenario:1:1: unknown beginning of a step 'lock': use SECONDS VERB, after "
                                "METHOD VERB, expect METHOD "
                                "within SECONDS, expect no METHOD for SECONDS, or include FILE"},
             {"  -1 pause", "a.scenario:1:3: '-1' is not a time: use a number of seconds, 0 to 1000000"},
             {"1s pause", "a.scenario:1:1: '1s' is not a time: use a number of seconds, 0 to 1000000"},
             {"1000001 pause",
              "a.scenario:1:1: '1000001' is not a time: use a number of seconds, 0 to 1000000"},
             {"\n\n2.5",
              "a.scenario:3:4: a verb or 'expect' is missing: use SECONDS VERB or after METHOD VERB"},
             {"2 bad thing", "a.scenario:1:7: bad verb in ''"},
             {"after", "a.scenario:1:6: METHOD is missing: use after METHOD [KEY=VALUE...] VERB"},
             {"after MuteAudio",
              "a.scenario:1:16: a verb or 'expect' is missing: use SECONDS VERB or after METHOD VERB"},
             {"after MuteAudio colour=1 pause", "a.scenario:1:17: MuteAudio has no key 'colour': use onoff"},
             {"after GetSTCCount x=1 pause",
              "a.scenario:1:19: GetSTCCount has no key 'x': it takes no KEY=VALUE"},
             {"after MuteAudio onoff=2 pause",
              "a.scenario:1:23: '2' is not a value of onoff: use 1, 0, on, off, true or false"},
             {"after MuteAudio onoff=1 onoff=0 pause",
              "a.scenario:1:25: the key 'onoff' is given more than once: use it once"},
             {"after GetAudio index=-1 pause",
              "a.scenario:1:22: '-1' is not a value of index: use a number from 0 to 4294967295"},
             {"after GetCurrentISDBText mode=X pause",
              "a.scenario:1:31: 'X' is not a value of mode: use a number, or CAPTION, SUPERIMPOSE"},
             {"expect", "a.scenario:1:7: METHOD is missing: use expect METHOD within SECONDS or expect no "
                        "METHOD for SECONDS"},
             {"expect no",
              "a.scenario:1:10: METHOD is missing: use expect no METHOD [KEY=VALUE...] for SECONDS"},
             {"expect MuteAudio", "a.scenario:1:17: 'within SECONDS' is missing: use expect METHOD "
                                  "[KEY=VALUE...] within SECONDS"},
             {"expect MuteAudio for 2",
              "a.scenario:1:18: unexpected word 'for': use expect METHOD [KEY=VALUE...] within SECONDS"},
             {"expect no MuteAudio within 2",
              "a.scenario:1:21: unexpected word 'within': use expect no METHOD [KEY=VALUE...] for SECONDS"},
             {"expect MuteAudio within",
              "a.scenario:1:24: SECONDS is missing: use expect METHOD [KEY=VALUE...] within SECONDS"},
             {"expect MuteAudio within long",
              "a.scenario:1:25: 'long' is not a time: use a number of seconds, 0 to 1000000"},
             {"expect MuteAudio within 2 s",
              "a.scenario:1:27: unexpected word 's': use expect METHOD [KEY=VALUE...] within SECONDS"},
             {"1 load \"x", "a.scenario:1:8: a quotation mark is not closed: use \"TEXT\""},
             {"include", "a.scenario:1:8: FILE is missing: use include FILE"},
             {"include a b", "a.scenario:1:11: unexpected word 'b': use include FILE"},
             {"include b.scenario", "a.scenario:1:9: cannot open b.scenario: No such file or directory"},
             {"include a.scenario", "a.scenario:1:9: a.scenario includes itself: remove one of the includes"},
         }) {
        EXPECT_EQ(ErrorOf(text), error) << text;
    }
}

TEST(ScenarioParser, StopsAfter100Errors)
{
    std::string many;
    std::string errors;
    for (int line = 1; line <= 100; ++line) {
        many += "1 bad\n";
        errors += "a.scenario:" + std::to_string(line) + ":3: bad verb in ''\n";
    }
    EXPECT_EQ(ErrorOf(many + "1 pause") + "\n", errors);
    std::string const stopped =
        errors + "zviptv-sim: stopped after 100 errors: fix these, then run the scenario again to see more";
    EXPECT_EQ(ErrorOf(many + "1 bad"), stopped);
    EXPECT_EQ(ErrorOf({{"a.scenario", many + "include b.scenario\nx"}, {"b.scenario", "x\nx\nx"}}), stopped);
}

TEST(ScenarioParser, IgnoresAByteOrderMark)
{
    Scenario const scenario = Parsed({{"a.scenario", "\xEF\xBB\xBF"
                                                     "1 pause\ninclude b.scenario"},
                                      {"b.scenario", "\xEF\xBB\xBF# no step\n2 play"}});
    ASSERT_EQ(scenario.steps.size(), 2U);
    EXPECT_EQ(scenario.steps[0].text, "1 pause");
    EXPECT_EQ(ToText(scenario.steps[0].place), "a.scenario:1:1");
    EXPECT_EQ(ToText(scenario.steps[1].place), "b.scenario:2:1");
    EXPECT_EQ(ErrorOf("\xEF\xBB\xBF"
                      "1 bad"),
              "a.scenario:1:3: bad verb in ''");
    EXPECT_THAT(ErrorOf("1 pause\n\xEF\xBB\xBF"
                        "1 pause"),
                testing::StartsWith("a.scenario:2:1: unknown beginning of a step"));
}

TEST(ScenarioParser, RefusesNulBytes)
{
    using namespace std::string_literals;
    std::string const advice = "a NUL byte: the file is not plain text; save it as UTF-8 text";
    for (auto const& [text, place] : std::vector<std::pair<std::string, std::string>>{
             {"1 pau\0se"s, "1:6"},
             {"1 pause\n2 load \"Z\xC3\xBCrich\0\""s, "2:15"},
             {"# a comment\0"s, "1:12"},
             {"\0"s, "1:1"},
             {"1 pause \0"s, "1:9"},
         }) {
        EXPECT_EQ(ErrorOf(text), "a.scenario:" + place + ": " + advice) << place;
    }
    EXPECT_EQ(ErrorOf("1\0 \0p\0a\0u\0s\0e\0\n\0 1\0 \0x\0\n\0"s), "a.scenario:1:2: " + advice)
        << "a file in UTF-16 is one error";
    EXPECT_EQ(ErrorOf({{"a.scenario", "include b.scenario\n1 bad"}, {"b.scenario", "1 bad\n\0"s}}),
              "b.scenario:1:3: bad verb in ''\nb.scenario:2:1: " + advice +
                  "\na.scenario:2:3: bad verb in ''");
}

TEST(ScenarioParser, AcceptsLineEndsOfOtherSystems)
{
    Scenario const scenario = Parsed(
        "# two steps\r\n\r\n1 load \"a b.ts\"\r\nafter SetAppID AppID=x expect no MuteAudio for 2\r\n");
    ASSERT_EQ(scenario.steps.size(), 2U);
    EXPECT_THAT(scenario.steps[0].verb, testing::ElementsAre("load", "a b.ts"));
    EXPECT_EQ(scenario.steps[0].text, "1 load \"a b.ts\"");
    EXPECT_TRUE(scenario.steps[1].after->Matches({"SetAppID", {{"AppID", "x"}}}));
    EXPECT_EQ(scenario.steps[1].expectation->seconds, 2);
    EXPECT_EQ(ErrorOf("1 pause\r\n1 bad\r\n"), "a.scenario:2:3: bad verb in ''");
}

TEST(ScenarioParser, CountsCharactersNotBytes)
{
    EXPECT_EQ(ErrorOf("after SetAppID AppID=Z\xC3\xBCrich bad x"), "a.scenario:1:33: bad verb in ''");
}

TEST(ScenarioParser, ListsTheMethodsOfTheProtocol)
{
    EXPECT_THAT(
        ErrorOf("after muteaudio pause"),
        testing::AllOf(
            testing::StartsWith("a.scenario:1:7: unknown method 'muteaudio': use SetCurrentAudioByIndex, "),
            testing::HasSubstr(", requestPESCB, "), testing::EndsWith(", CloneUSBToTV")));
}

TEST(ScenarioParser, ReportsEveryErrorOfEveryFile)
{
    EXPECT_EQ(
        ErrorOf({{"a.scenario", "x pause\ninclude dir/b.scenario\n1 bad"}, {"dir/b.scenario", "\n3 bad"}}),
        "a.scenario:1:1: unknown beginning of a step 'x': use SECONDS VERB, after METHOD VERB, expect METHOD "
        "within "
        "SECONDS, expect no METHOD for SECONDS, or include FILE\n"
        "dir/b.scenario:2:3: bad verb in 'dir'\n"
        "a.scenario:3:3: bad verb in ''");
}

TEST(ScenarioParser, RefusesCyclicIncludes)
{
    EXPECT_EQ(ErrorOf({{"a.scenario", "include x/b.scenario"}, {"x/b.scenario", "include ../a.scenario"}}),
              "x/b.scenario:1:9: a.scenario includes itself: remove one of the includes");
}

TEST(ScenarioParser, RefusesDeepIncludes)
{
    std::map<std::string, std::string> files{{"a.scenario", "include 1"}};
    for (int i = 1; i < 20; ++i) {
        files[std::to_string(i)] = "include " + std::to_string(i + 1);
    }
    EXPECT_EQ(ErrorOf(files), "15:1:9: includes are nested too deeply: use 16 files at most in each other");
    std::string many;
    for (int i = 0; i < 1001; ++i) {
        many += "include 1\n";
    }
    EXPECT_EQ(ErrorOf({{"a.scenario", many}, {"1", ""}}),
              "a.scenario:1001:9: too many includes: use 1000 at most");
}

TEST(ScenarioParser, RefusesTooManySteps)
{
    std::string many;
    for (int i = 0; i < 10001; ++i) {
        many += "1 pause\n";
    }
    EXPECT_EQ(ErrorOf(many), "a.scenario:10001:1: too many steps: use 10000 at most");
}

TEST(ScenarioParser, ReportsWhyTheFileCannotBeRead)
{
    EXPECT_EQ(ErrorOf(std::map<std::string, std::string>{}),
              "zviptv-sim: cannot open a.scenario: No such file or directory; check that it is a file that "
              "can be read");
}

/// Values that are equal in the protocol are equal in a scenario.
TEST(ScenarioPattern, ComparesDecodedValues)
{
    auto const matches = [](std::string const& pattern, SeenRequest const& request) {
        return Parsed("after " + pattern + " pause").steps.at(0).after->Matches(request);
    };
    EXPECT_TRUE(matches("MuteAudio", {"MuteAudio", {{"onoff", "0"}}}));
    EXPECT_FALSE(matches("MuteAudio", {"MuteVideo", {{"onoff", "0"}}}));
    for (char const* const on : {"1", "on", "true"}) {
        EXPECT_TRUE(matches(std::string("MuteAudio onoff=") + on, {"MuteAudio", {{"onoff", "1"}}})) << on;
        EXPECT_FALSE(matches(std::string("MuteAudio onoff=") + on, {"MuteAudio", {{"onoff", "0"}}})) << on;
    }
    EXPECT_TRUE(matches("GetAudio index=07", {"GetAudio", {{"index", "7"}}}));
    EXPECT_FALSE(matches("GetAudio index=7", {"GetAudio", {{"index", "8"}}}));
    EXPECT_FALSE(matches("GetAudio index=7", {"GetAudio", {}}));
    EXPECT_FALSE(matches("GetAudio index=7", {"GetAudio", {{"index", "seven"}}}));
    EXPECT_TRUE(matches("SizeOfISDBText mode=CAPTION", {"SizeOfISDBText", {{"mode", "0"}}}));
    EXPECT_TRUE(matches("SizeOfISDBText mode=1", {"SizeOfISDBText", {{"mode", "1"}}}));
    EXPECT_TRUE(matches("SetAppID AppID=", {"SetAppID", {{"AppID", ""}}}));
    EXPECT_FALSE(matches("SetAppID AppID=a", {"SetAppID", {{"AppID", "A"}}}));
}

} // namespace
} // namespace zviptv::sim
