// SPDX-License-Identifier: MIT
#include "CtlFixture.h"

namespace zviptv::test {
namespace {

struct GuideCase
{
    Words command;
    std::string function;
    WireEntries request;
    std::string data;
    std::string output;
    std::string json;
};

void PrintTo(GuideCase const& guide, std::ostream* out)
{
    *out << guide.command.front();
}

class GuideTest : public CtlTest, public testing::WithParamInterface<GuideCase>
{
};

TEST_P(GuideTest, SendsTheRequestAndPrintsTheText)
{
    GuideCase const& guide = GetParam();
    m_service.AnswerWith(guide.function, Entries({{"data", guide.data}}));
    Words words = {"guide"};
    words.insert(words.end(), guide.command.begin(), guide.command.end());
    CtlResult const text = RunCtl(words);
    EXPECT_EQ(text.output, guide.output);
    EXPECT_EQ(text.code, 0) << text.errors;
    EXPECT_EQ(m_service.LastRequest().entries, guide.request);
    words.emplace_back("--json");
    EXPECT_EQ(RunCtl(words).output, guide.json + "\n");
}

INSTANTIATE_TEST_SUITE_P(
    Commands, GuideTest,
    testing::Values(GuideCase{{"exists"},
                              "ExistXmlForIPG",
                              Entries({{"functionname", "ExistXmlForIPG"}}),
                              "0",
                              "the guide has no data\n",
                              "{\"exist\":false,\"result\":true}"},
                    GuideCase{{"now", "1"},
                              "GetPresentProgram",
                              Entries({{"functionname", "GetPresentProgram"}, {"inID", "1"}}),
                              "News\nat ten\n",
                              "News\nat ten\n",
                              "{\"program\":\"News\\nat ten\\n\",\"result\":true}"},
                    GuideCase{{"find", "1", "2"},
                              "FindProgram",
                              Entries({{"functionname", "FindProgram"}, {"inID", "1"}, {"eventID", "2"}}),
                              "",
                              "no such programme\n",
                              "{\"program\":null,\"result\":true}"},
                    GuideCase{{"get", "3"},
                              "GetProgram",
                              Entries({{"functionname", "GetProgram"}, {"index", "3"}}),
                              "a\x1b",
                              "a\\x1b\n",
                              "{\"program\":\"a\\u001b\",\"result\":true}"},
                    GuideCase{{"rating", "4"},
                              "GetRating",
                              Entries({{"functionname", "GetRating"}, {"eventID", "4"}}),
                              "12",
                              "12\n",
                              "{\"rating\":\"12\",\"result\":true}"},
                    GuideCase{{"genre", "5"},
                              "GetGenre",
                              Entries({{"functionname", "GetGenre"}, {"eventID", "5"}}),
                              "drama",
                              "drama\n",
                              "{\"genre\":\"drama\",\"result\":true}"},
                    GuideCase{{"load", "/media/usb"},
                              "CloneUSBToTV",
                              Entries({{"functionname", "CloneUSBToTV"}, {"path", "/media/usb"}}),
                              "1",
                              "guide data copied from /media/usb\n",
                              "{\"done\":true,\"result\":true}"}),
    [](testing::TestParamInfo<GuideCase> const& guide) { return guide.param.command.front(); });

TEST_F(CtlTest, GuideListAsksForTheSizeToo)
{
    m_service.Answer("GetProgramListSize", {{"data", "2"}});
    m_service.Answer("GetProgramList", {{"data", "one\ntwo"}});
    EXPECT_EQ(RunCtl({"guide", "list", "1", "2", "3"}).output, "one\ntwo\n");
    EXPECT_EQ(
        m_service.LastRequest().entries,
        Entries({{"functionname", "GetProgramList"}, {"inID", "1"}, {"startTime", "2"}, {"duration", "3"}}));
    EXPECT_EQ(RunCtl({"guide", "list", "1", "2", "3", "--json"}).output,
              "{\"list\":\"one\\ntwo\",\"result\":true,\"size\":2}\n");
}

TEST_F(CtlTest, WarnsAboutATruncatedGuideList)
{
    m_service.Answer("GetProgramListSize", {{"data", "3"}});
    m_service.Answer("GetProgramList", {{"data", "[{},{}]"}});
    CtlResult const cut = RunCtl({"guide", "list", "1", "2", "3"});
    EXPECT_EQ(cut.output, "[{},{}]\n");
    EXPECT_EQ(cut.errors,
              "zviptvctl: the list ends after 2 of 3 programmes, because a message cannot contain more: "
              "ask again with a later START\n");
    m_service.Answer("GetProgramListSize", {{"data", "2"}});
    EXPECT_EQ(RunCtl({"guide", "list", "1", "2", "3"}).errors, "");
}

/// The answer of the service, and the JSON of the command.
TEST_F(CtlTest, TheGuideIsJson)
{
    std::string const deep(2000, '[');
    for (auto const& [sent, shown] : std::vector<std::pair<std::string, std::string>>{
             {R"( {"title":"Lärm","id":18446744073709551615,"rating":null} )",
              R"({"id":18446744073709551615,"rating":null,"title":"Lärm"})"},
             {"[]", "[]"},
             {"12", R"("12")"},
             {"{} {}", R"("{} {}")"},
             {R"({"a":1,"a":2})", R"("{\"a\":1,\"a\":2}")"},
             {"[\"\xff\"]", "[\"\xef\xbf\xbd\"]"},
             {R"(["\udc00"])", R"("[\"\\udc00\"]")"},
             {deep, '"' + deep + '"'}}) {
        m_service.Answer("GetGenre", {{"data", sent}});
        EXPECT_EQ(RunCtl({"guide", "genre", "1", "--json"}).output,
                  "{\"genre\":" + shown + ",\"result\":true}\n");
    }
}

TEST_F(CtlTest, GuideDataThatIsNotCopiedEndsWithExitCode1)
{
    m_service.Answer("CloneUSBToTV", {{"data", "0"}});
    CtlResult const result = RunCtl({"guide", "load", "/x"});
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors,
              "zviptvctl: the service refused to copy guide data from /x: it reads the path as its own user; "
              "see its own messages\n");
}

} // namespace
} // namespace zviptv::test
