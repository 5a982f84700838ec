#include "CtlFixture.h"

namespace zviptv::test {
namespace {

void Play(FakeService& service)
{
    service.Answer("GetSourceState", {{"result_internal", "1"}, {"sourcestate", "2"}});
    service.Answer("GetSTCCount", {{"result_internal", "1"}, {"stcCount", "135000"}});
    service.Answer("GetFirstPTS", {{"result_internal", "1"},
                                   {"firstPTS", "90000"},
                                   {"timebaseden", "90000"},
                                   {"timebasenum", "1"},
                                   {"currenttime", "0"}});
    // 1280 x 720, 60000/1001, 16:9
    service.Answer(
        "GetResolution",
        {{"result_internal", "1"},
         {"resolution", "2"},
         {"resolutioninfo", FromHex("00 05 00 00 d0 02 00 00 60 ea 00 00 e9 03 00 00 10 00 09 00 00 00 00 00 "
                                    "00 00 00 00 00 00 00 00")}});
    service.Answer("GetCurrentAudioInfo",
                   {{"result_internal", "1"}, {"landCode", "6647399"}, {"index", "0"}});
    service.Answer("GetAudio",
                   {{"result_internal", "1"},
                    {"audio", FromHex("67 6e 65 00 02 00 00 00 01 01 05 00 80 bb 00 00 00 dc 05 00 06 00 81 "
                                      "00 00 00 00 00 00 00 00 00")}});
    service.Answer("GetRatingLockState", {{"result_internal", "1"}, {"lockState", "0"}});
    service.Answer("FlagServiceLocked", {{"result_internal", "1"}, {"outServiceLocked", "1"}});
}

TEST_F(CtlTest, StatusTellsWhatIsPlayed)
{
    Play(m_service);
    EXPECT_EQ("source:         playing\n"
              "clock (STC):    135000 (1.500 s)\n"
              "first PTS:      90000 (1.000 s, time base 1/90000)\n"
              "picture:        hd, 1280x720, 59.94 frames/s, 16:9\n"
              "audio:          0: eng, ac3, 6 channels, pid 0x0101\n"
              "programme:      not locked\n"
              "service:        locked\n",
              RunCtl({"status"}).output);
    Json::Value const json = ParseJson(RunCtl({"status", "--json"}).output);
    EXPECT_TRUE(json["result"].asBool());
    EXPECT_EQ(2, json["sourceState"].asInt());
    EXPECT_EQ(135000, json["stc"].asInt());
    EXPECT_EQ(90000, json["firstPts"].asInt());
    EXPECT_EQ(2, json["resolution"].asInt());
    EXPECT_EQ(1280, json["picture"]["width"].asInt());
    EXPECT_EQ("eng", json["audio"]["languageCode"].asString());
    EXPECT_EQ(6, json["audio"]["channels"].asInt());
    EXPECT_EQ(0, json["audioIndex"].asInt());
    EXPECT_FALSE(json["programmeLocked"].asBool());
    EXPECT_TRUE(json["serviceLocked"].asBool());
}

TEST_F(CtlTest, StatusShowsADashForWhatIsNotTold)
{
    Play(m_service);
    m_service.Answer("GetSTCCount", {{"result_internal", "0"}, {"stcCount", "0"}});
    m_service.Answer("GetCurrentAudioInfo", {{"result_internal", "1"}, {"landCode", "0"}, {"index", "-1"}});
    CtlResult const result = RunCtl({"status"});
    EXPECT_EQ(0, result.code);
    EXPECT_THAT(result.output, testing::HasSubstr("clock (STC):    -\n"));
    EXPECT_THAT(result.output, testing::HasSubstr("audio:          -\n"));
    Json::Value const json = ParseJson(RunCtl({"status", "--json"}).output);
    EXPECT_TRUE(json["stc"].isNull());
    EXPECT_TRUE(json["audio"].isNull());
}

/// In the words' JSON; `call` gives the record as it came.
TEST_F(CtlTest, NumbersThatAreNotKnownAreNull)
{
    Play(m_service);
    m_service.Answer("GetAudio",
                     {{"result_internal", "1"}, {"audio", FromHex("67 6e 65 00 02 00 00 00 01 01")}});
    m_service.Answer("GetResolution", {{"result_internal", "1"},
                                       {"resolution", "2"},
                                       {"resolutioninfo", FromHex("00 05 00 00 d0 02 00 00")}});
    Json::Value const json = ParseJson(RunCtl({"status", "--json"}).output);
    for (char const* const member : {"sampleRate", "bitRate", "channels"}) {
        EXPECT_TRUE(json["audio"].isMember(member) && json["audio"][member].isNull()) << member;
    }
    for (char const* const member :
         {"frameRateNumerator", "frameRateDenominator", "aspectWidth", "aspectHeight"}) {
        EXPECT_TRUE(json["picture"].isMember(member) && json["picture"][member].isNull()) << member;
    }
    EXPECT_EQ(0, json["audio"]["audioType"].asInt());
    EXPECT_TRUE(json["audio"]["audioType"].isNumeric());
    EXPECT_EQ(720, json["picture"]["height"].asInt());
    Json::Value const raw = ParseJson(RunCtl({"call", "GetAudio", "0", "--json"}).output);
    EXPECT_TRUE(raw["audio"]["channels"].isNumeric());
}

TEST_F(CtlTest, StatusFailsAsACallDoes)
{
    Play(m_service);
    m_service.Answer("GetResolution", {{"result_internal", "1"}, {"resolution", "high"}});
    EXPECT_EQ(5, RunCtl({"status"}).code);
    m_service.AnswerError("GetSTCCount");
    EXPECT_EQ(4, RunCtl({"status"}).code);
}

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
                              "{\"program\":\"\",\"result\":true}"},
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

TEST_F(CtlTest, GuideDataThatIsNotCopiedEndsWithOne)
{
    m_service.Answer("CloneUSBToTV", {{"data", "0"}});
    CtlResult const result = RunCtl({"guide", "load", "/x"});
    EXPECT_EQ(1, result.code);
    EXPECT_EQ("the service refused to copy guide data from /x\n", result.output);
}

} // namespace
} // namespace zviptv::test
