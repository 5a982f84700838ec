#include "CtlFixture.h"

namespace zviptv::test {
namespace {

// eng, AC-3, pid 0x0101, 48000 Hz, 384000 bit/s, 6 channels
std::string English()
{
    return FromHex(
        "67 6e 65 00 02 00 00 00 01 01 05 00 80 bb 00 00 00 dc 05 00 06 00 81 00 00 00 00 00 00 00 00 00");
}

// no language, AAC, pid 0x0102, nothing else known
std::string Unknown()
{
    return FromHex(
        "00 00 00 00 04 00 00 00 02 01 00 00 00 00 00 00 00 00 00 00 00 00 0f 00 00 00 00 00 00 00 00 00");
}

/// A service with two audio tracks, of which the second is heard.
class CommandsTest : public CtlTest
{
protected:
    CommandsTest()
    {
        m_service.Answer("SizeOfAudio", {{"result_internal", "1"}, {"size", "2"}});
        m_service.AnswerBy("GetAudio", [](WireMessage const& request) {
            std::string const audio = request.Value("index") == "0" ? English() : Unknown();
            return Entries({{"result_internal", "1"}, {"audio", audio}});
        });
        m_service.Answer("GetCurrentAudioInfo",
                         {{"result_internal", "1"}, {"landCode", "0"}, {"index", "1"}});
    }

    /// The one request that the command made.
    WireEntries RequestOf(Words const& command, std::string const& output)
    {
        m_service.ClearRecords();
        CtlResult const result = RunCtl(command);
        EXPECT_EQ(0, result.code) << result.errors;
        EXPECT_EQ(output, result.output);
        EXPECT_EQ(1U, m_service.Requests().size());
        return m_service.LastRequest().entries;
    }
};

TEST_F(CommandsTest, AListThatCannotBeIsNotAskedFor)
{
    m_service.Answer("SizeOfAudio", {{"result_internal", "1"}, {"size", "-1"}});
    CtlResult const result = RunCtl({"audio", "list"});
    EXPECT_EQ(5, result.code);
    EXPECT_EQ(
        "zviptvctl: the service announces 4294967295 entries for GetAudio, more than a programme can have\n",
        result.errors);
    EXPECT_EQ(1U, m_service.Requests().size());
}

TEST_F(CommandsTest, AudioListIsATable)
{
    EXPECT_EQ("  #  language  coding  channels  sample rate  bit rate      pid\n"
              "  0  eng       ac3     6         48000 Hz     384000 bit/s  0x0101\n"
              "* 1  -         aac     -         -            -             0x0102\n",
              RunCtl({"audio", "list"}).output);
    Json::Value const json = ParseJson(RunCtl({"--json", "audio", "list"}).output);
    EXPECT_TRUE(json["result"].asBool());
    EXPECT_EQ(1, json["current"].asInt());
    ASSERT_EQ(2U, json["audio"].size());
    EXPECT_EQ("eng", json["audio"][0]["languageCode"].asString());
    EXPECT_EQ(257, json["audio"][0]["pid"].asInt());
    EXPECT_EQ(6, json["audio"][0]["channels"].asInt());
    EXPECT_TRUE(json["audio"][1]["channels"].isNull());
}

TEST_F(CommandsTest, ARefusedListEndsWithOne)
{
    m_service.Answer("SizeOfAudio", {{"result_internal", "0"}, {"size", "0"}});
    CtlResult const result = RunCtl({"audio", "list"});
    EXPECT_EQ(1, result.code);
    EXPECT_EQ("", result.output);
    EXPECT_EQ("zviptvctl: the service refused to list the audio tracks: 'zviptvctl status' shows whether it "
              "plays\n",
              result.errors);
    CtlResult const json = RunCtl({"audio", "list", "--json"});
    EXPECT_EQ("{\"result\":false}\n", json.output);
    EXPECT_EQ(result.errors, json.errors);
}

TEST_F(CommandsTest, SelectingAsksForTheIndex)
{
    EXPECT_EQ(Entries({{"functionname", "SetCurrentAudioByIndex"}, {"handleID", "256"}, {"index", "1"}}),
              RequestOf({"audio", "select", "1"}, "audio track 1 selected\n"));
    EXPECT_EQ(Entries({{"functionname", "SetCurrentTTX"}, {"handleID", "256"}, {"index", "2"}}),
              RequestOf({"ttx", "select", "2"}, "teletext entry 2 selected\n"));
    EXPECT_EQ(Entries({{"functionname", "SetCurrentHybridSBT"}, {"handleID", "256"}, {"index", "3"}}),
              RequestOf({"subtitle", "select", "3"}, "subtitle 3 selected\n"));
    EXPECT_EQ(
        Entries({{"functionname", "SetCurrentISDBText"}, {"handleID", "256"}, {"mode", "1"}, {"index", "0"}}),
        RequestOf({"captions", "select", "superimpose", "0"}, "superimpose 0 selected\n"));
}

TEST_F(CommandsTest, ARefusalSaysWhatToLookAt)
{
    m_service.AnswerByDefault(Entries({{"result_internal", "0"}}));
    std::vector<std::pair<Words, std::string>> const refusals = {
        {{"audio", "select", "9"}, "select audio track 9: 'zviptvctl audio list' shows which there are"},
        {{"ttx", "select", "9"}, "select teletext entry 9: 'zviptvctl ttx list' shows which there are"},
        {{"subtitle", "select", "9"}, "select subtitle 9: 'zviptvctl subtitle list' shows which there are"},
        {{"captions", "select", "caption", "9"},
         "select caption 9: 'zviptvctl captions list' shows which there are"},
        {{"mute", "video", "on"}, "mute the video: 'zviptvctl status' shows whether it plays"},
        {{"unlock", "all"}, "change the lock: 'zviptvctl rating' shows what is locked"},
        {{"unlock", "pin"}, "lift the mute: 'zviptvctl rating' shows what is locked"},
    };
    for (auto const& [command, words] : refusals) {
        CtlResult const refused = RunCtl(command);
        EXPECT_EQ(1, refused.code);
        EXPECT_EQ("", refused.output);
        EXPECT_EQ("zviptvctl: the service refused to " + words + "\n", refused.errors);
    }
}

TEST_F(CommandsTest, MuteAndUnlock)
{
    EXPECT_EQ(Entries({{"functionname", "MuteAudio"}, {"handleID", "256"}, {"onoff", "1"}}),
              RequestOf({"mute", "audio", "on"}, "audio muted\n"));
    EXPECT_EQ(Entries({{"functionname", "MuteVideo"}, {"handleID", "256"}, {"onoff", "0"}}),
              RequestOf({"mute", "video", "off"}, "video not muted\n"));
    EXPECT_EQ("1", RequestOf({"unlock", "programme"}, "the present programme is unlocked\n").back().bytes);
    EXPECT_EQ("2", RequestOf({"unlock", "service"}, "the service is unlocked until another one is selected\n")
                       .back()
                       .bytes);
    EXPECT_EQ(
        "3",
        RequestOf({"unlock", "all"}, "everything is unlocked until the set is switched off\n").back().bytes);
    EXPECT_EQ(Entries({{"functionname", "SetUnlockedInfo"}, {"handleID", "256"}, {"ratingInfo", "0"}}),
              RequestOf({"unlock", "lock"}, "locked again\n"));
    EXPECT_EQ(Entries({{"functionname", "UnMuteByRatingPin"}, {"handleID", "256"}}),
              RequestOf({"unlock", "pin"}, "the mute of the locked programme is lifted\n"));
}

TEST_F(CommandsTest, TeletextAndSubtitleLists)
{
    m_service.Answer("SizeOfTTX", {{"result_internal", "1"}, {"size", "1"}});
    m_service.Answer("GetTTX", {{"result_internal", "1"},
                                {"ttx", FromHex("75 65 64 00 bc 1a 08 88 02 07 00 00 00 00 00 00")}});
    m_service.Answer("GetCurrentTTX", {{"result_internal", "0"}, {"landCode", "0"}, {"index", "0"}});
    EXPECT_EQ("  #  language  page  type  pid\n"
              "  0  deu       888   2     0x1abc\n",
              RunCtl({"ttx", "list"}).output);
    EXPECT_TRUE(ParseJson(RunCtl({"ttx", "list", "--json"}).output)["current"].isNull());

    m_service.Answer("SizeOfHybridSBT", {{"result_internal", "1"}, {"size", "5"}});
    m_service.AnswerBy("GetHybridSBT", [](WireMessage const& request) {
        // The list is shorter than was said.
        return Entries(
            {{"result_internal", request.Value("index") == "0" ? "1" : "0"},
             {"landCode", "0"},
             {"hybridSbt",
              FromHex("61 72 66 00 01 00 00 00 01 02 07 00 02 00 20 01 00 00 09 00 00 00 00 00")}});
    });
    m_service.Answer("GetCurrentHybridSBT", {{"result_internal", "1"}, {"landCode", "0"}, {"index", "0"}});
    EXPECT_EQ("  #  language  kind  page  hard of hearing  pid\n"
              "* 0  fra       dvb   7     yes              0x0201\n",
              RunCtl({"subtitle", "list"}).output);
    m_service.Answer("SizeOfHybridSBT", {{"result_internal", "1"}, {"size", "0"}});
    EXPECT_EQ("no subtitles\n", RunCtl({"subtitle", "list"}).output);
}

TEST_F(CommandsTest, CaptionList)
{
    m_service.AnswerBy("SizeOfISDBText", [](WireMessage const& request) {
        return Entries({{"result_internal", "1"}, {"size", request.Value("mode") == "0" ? "1" : "0"}});
    });
    m_service.Answer(
        "GetISDBText",
        {{"result_internal", "1"}, {"isdbText", FromHex("6e 70 6a 00 00 00 00 00 30 01 08 00 30 00 00 00")}});
    m_service.Answer("GetCurrentISDBText", {{"result_internal", "1"}, {"landCode", "0"}, {"index", "0"}});
    m_service.Answer("GetCaptionDataMode", {{"result_internal", "1"}, {"mode", "1"}});
    EXPECT_EQ("caption mode: selectable\n"
              "  type     #  language  tag   pid\n"
              "* caption  0  jpn       0x30  0x0130\n",
              RunCtl({"captions", "list"}).output);
    Json::Value const json = ParseJson(RunCtl({"captions", "list", "--json"}).output);
    EXPECT_EQ(1U, json["captions"].size());
    EXPECT_EQ(Json::Value(Json::arrayValue), json["superimpose"]);
    EXPECT_EQ(1, json["mode"].asInt());
}

TEST_F(CommandsTest, RatingShowsLocksToo)
{
    m_service.Answer(
        "GetRatingInfo",
        {{"result_internal", "1"}, {"ratingInfoSize", "2"}, {"ratingInfo", FromHex("00 00 0c 01 02 03")}});
    m_service.Answer("GetRatingLockState", {{"result_internal", "1"}, {"lockState", "1"}});
    m_service.Answer("FlagServiceLocked", {{"result_internal", "0"}, {"outServiceLocked", "1"}});
    EXPECT_EQ("  region  dimension  value\n"
              "  0       0          12 years\n"
              "  1       2          3\n"
              "programme: locked\n"
              "service:   -\n",
              RunCtl({"rating"}).output);
    Json::Value const json = ParseJson(RunCtl({"rating", "--json"}).output);
    EXPECT_TRUE(json["programmeLocked"].asBool());
    EXPECT_TRUE(json["serviceLocked"].isNull());
    EXPECT_EQ(2U, json["ratings"].size());
}

} // namespace
} // namespace zviptv::test
