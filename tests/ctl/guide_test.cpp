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

TEST_P(GuideTest, AsksAndShowsTheText)
{
    GuideCase const& guide = GetParam();
    m_service.AnswerWith(guide.function, Entries({{"data", guide.data}}));
    Words words = {"guide"};
    words.insert(words.end(), guide.command.begin(), guide.command.end());
    CtlResult const text = RunCtl(words);
    EXPECT_EQ(guide.output, text.output);
    EXPECT_EQ(0, text.code) << text.errors;
    EXPECT_EQ(guide.request, m_service.LastRequest().entries);
    words.emplace_back("--json");
    EXPECT_EQ(guide.json + "\n", RunCtl(words).output);
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
    EXPECT_EQ("one\ntwo\n", RunCtl({"guide", "list", "1", "2", "3"}).output);
    EXPECT_EQ(
        Entries({{"functionname", "GetProgramList"}, {"inID", "1"}, {"startTime", "2"}, {"duration", "3"}}),
        m_service.LastRequest().entries);
    EXPECT_EQ("{\"list\":\"one\\ntwo\",\"result\":true,\"size\":2}\n",
              RunCtl({"guide", "list", "1", "2", "3", "--json"}).output);
}

TEST_F(CtlTest, AGuideListThatIsCutSaysSo)
{
    m_service.Answer("GetProgramListSize", {{"data", "3"}});
    m_service.Answer("GetProgramList", {{"data", "[{},{}]"}});
    CtlResult const cut = RunCtl({"guide", "list", "1", "2", "3"});
    EXPECT_EQ("[{},{}]\n", cut.output);
    EXPECT_EQ("zviptvctl: the list ends after 2 of 3 programmes, since a message takes no more: ask again "
              "from a later "
              "START\n",
              cut.errors);
    m_service.Answer("GetProgramListSize", {{"data", "2"}});
    EXPECT_EQ("", RunCtl({"guide", "list", "1", "2", "3"}).errors);
}

/// What the service sent, and what is in the command's JSON.
TEST_F(CtlTest, TheGuidesJsonIsJson)
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
        EXPECT_EQ("{\"genre\":" + shown + ",\"result\":true}\n",
                  RunCtl({"guide", "genre", "1", "--json"}).output);
    }
}

TEST_F(CtlTest, GuideDataThatIsNotCopiedEndsWithOne)
{
    m_service.Answer("CloneUSBToTV", {{"data", "0"}});
    CtlResult const result = RunCtl({"guide", "load", "/x"});
    EXPECT_EQ(1, result.code);
    EXPECT_EQ("", result.output);
    EXPECT_EQ("zviptvctl: the service refused to copy guide data from /x: it reads the path as its own user, "
              "and may say more itself\n",
              result.errors);
}

} // namespace
} // namespace zviptv::test
