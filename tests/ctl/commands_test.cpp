// SPDX-License-Identifier: MIT
#include "CtlFixture.h"

namespace zviptv::test {
namespace {

// eng, AC-3, pid 0x0101, 48000 Hz, 384000 bit/s, 6 channels
std::string EnglishCode()
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

/// A service with two audio tracks, of which the second is selected.
class CommandsTest : public CtlTest
{
protected:
    CommandsTest()
    {
        m_service.Answer("SizeOfAudio", {{"result_internal", "1"}, {"size", "2"}});
        m_service.AnswerBy("GetAudio", [](WireMessage const& request) {
            std::string const audio = request.Value("index") == "0" ? EnglishCode() : Unknown();
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
        EXPECT_EQ(result.code, 0) << result.errors;
        EXPECT_EQ(result.output, output);
        EXPECT_EQ(m_service.Requests().size(), 1U);
        return m_service.LastRequest().entries;
    }
};

TEST_F(CommandsTest, RefusesAnImpossibleListWithoutACall)
{
    m_service.Answer("SizeOfAudio", {{"result_internal", "1"}, {"size", "-1"}});
    CtlResult const result = RunCtl({"audio", "list"});
    EXPECT_EQ(result.code, 5);
    EXPECT_EQ(
        result.errors,
        "zviptvctl: the service announces 4294967295 entries for GetAudio, more than a programme can have\n");
    EXPECT_EQ(m_service.Requests().size(), 1U);
}

TEST_F(CommandsTest, AudioListIsATable)
{
    EXPECT_EQ(RunCtl({"audio", "list"}).output,
              "  #  language  coding  channels  sample rate  bit rate      pid\n"
              "  0  eng       ac3     6         48000 Hz     384000 bit/s  0x0101\n"
              "* 1  -         aac     -         -            -             0x0102\n");
    Json::Value const json = ParseJson(RunCtl({"--json", "audio", "list"}).output);
    EXPECT_TRUE(json["result"].asBool());
    EXPECT_EQ(json["current"].asInt(), 1);
    ASSERT_EQ(json["audio"].size(), 2U);
    EXPECT_EQ(json["audio"][0]["languageCode"].asString(), "eng");
    EXPECT_EQ(json["audio"][0]["pid"].asInt(), 257);
    EXPECT_EQ(json["audio"][0]["channels"].asInt(), 6);
    EXPECT_TRUE(json["audio"][1]["channels"].isNull());
}

TEST_F(CommandsTest, ARefusedListEndsWithExitCode1)
{
    m_service.Answer("SizeOfAudio", {{"result_internal", "0"}, {"size", "0"}});
    CtlResult const result = RunCtl({"audio", "list"});
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors,
              "zviptvctl: the service refused to list the audio tracks: 'zviptvctl status' shows whether it "
              "plays\n");
    CtlResult const json = RunCtl({"audio", "list", "--json"});
    EXPECT_EQ(json.output, "{\"result\":false}\n");
    EXPECT_EQ(json.errors, result.errors);
}

TEST_F(CommandsTest, SelectingSendsTheIndex)
{
    EXPECT_EQ(RequestOf({"audio", "select", "1"}, "audio track 1 selected\n"),
              Entries({{"functionname", "SetCurrentAudioByIndex"}, {"handleID", "256"}, {"index", "1"}}));
    EXPECT_EQ(RequestOf({"ttx", "select", "2"}, "teletext entry 2 selected\n"),
              Entries({{"functionname", "SetCurrentTTX"}, {"handleID", "256"}, {"index", "2"}}));
    EXPECT_EQ(RequestOf({"subtitle", "select", "3"}, "subtitle 3 selected\n"),
              Entries({{"functionname", "SetCurrentHybridSBT"}, {"handleID", "256"}, {"index", "3"}}));
    EXPECT_EQ(
        RequestOf({"captions", "select", "superimpose", "0"}, "superimpose 0 selected\n"),
        Entries(
            {{"functionname", "SetCurrentISDBText"}, {"handleID", "256"}, {"mode", "1"}, {"index", "0"}}));
}

TEST_F(CommandsTest, ARefusalNamesTheCommandToCheck)
{
    m_service.AnswerByDefault(Entries({{"result_internal", "0"}}));
    std::vector<std::pair<Words, std::string>> const refusals = {
        {{"audio", "select", "9"}, "select audio track 9: 'zviptvctl audio list' lists them"},
        {{"ttx", "select", "9"}, "select teletext entry 9: 'zviptvctl ttx list' lists them"},
        {{"subtitle", "select", "9"}, "select subtitle 9: 'zviptvctl subtitle list' lists them"},
        {{"captions", "select", "caption", "9"}, "select caption 9: 'zviptvctl captions list' lists them"},
        {{"mute", "video", "on"}, "mute the video: 'zviptvctl status' shows whether it plays"},
        {{"unlock", "all"}, "change the lock: 'zviptvctl rating' shows what is locked"},
        {{"unlock", "pin"}, "unlock the programme: 'zviptvctl rating' shows what is locked"},
    };
    for (auto const& [command, words] : refusals) {
        CtlResult const refused = RunCtl(command);
        EXPECT_EQ(refused.code, 1);
        EXPECT_EQ(refused.output, "");
        EXPECT_EQ(refused.errors, "zviptvctl: the service refused to " + words + "\n");
    }
}

TEST_F(CommandsTest, MuteAndUnlock)
{
    EXPECT_EQ(RequestOf({"mute", "audio", "on"}, "audio muted\n"),
              Entries({{"functionname", "MuteAudio"}, {"handleID", "256"}, {"onoff", "1"}}));
    EXPECT_EQ(RequestOf({"mute", "video", "off"}, "video not muted\n"),
              Entries({{"functionname", "MuteVideo"}, {"handleID", "256"}, {"onoff", "0"}}));
    EXPECT_EQ(RequestOf({"unlock", "programme"}, "the present programme is unlocked\n").back().bytes, "1");
    EXPECT_EQ(RequestOf({"unlock", "service"}, "the service is unlocked until another one is selected\n")
                  .back()
                  .bytes,
              "2");
    EXPECT_EQ(RequestOf({"unlock", "all"}, "everything is unlocked until the television is switched off\n")
                  .back()
                  .bytes,
              "3");
    EXPECT_EQ(RequestOf({"unlock", "lock"}, "locked again\n"),
              Entries({{"functionname", "SetUnlockedInfo"}, {"handleID", "256"}, {"ratingInfo", "0"}}));
    EXPECT_EQ(RequestOf({"unlock", "pin"}, "the locked programme is unlocked\n"),
              Entries({{"functionname", "UnMuteByRatingPin"}, {"handleID", "256"}}));
}

TEST_F(CommandsTest, TeletextAndSubtitleLists)
{
    m_service.Answer("SizeOfTTX", {{"result_internal", "1"}, {"size", "1"}});
    m_service.Answer("GetTTX", {{"result_internal", "1"},
                                {"ttx", FromHex("75 65 64 00 bc 1a 08 88 02 07 00 00 00 00 00 00")}});
    m_service.Answer("GetCurrentTTX", {{"result_internal", "0"}, {"landCode", "0"}, {"index", "0"}});
    EXPECT_EQ(RunCtl({"ttx", "list"}).output, "  #  language  page  type  pid\n"
                                              "  0  deu       888   2     0x1abc\n");
    EXPECT_TRUE(ParseJson(RunCtl({"ttx", "list", "--json"}).output)["current"].isNull());

    m_service.Answer("SizeOfHybridSBT", {{"result_internal", "1"}, {"size", "5"}});
    m_service.AnswerBy("GetHybridSBT", [](WireMessage const& request) {
        // The list is shorter than announced.
        return Entries(
            {{"result_internal", request.Value("index") == "0" ? "1" : "0"},
             {"landCode", "0"},
             {"hybridSbt",
              FromHex("61 72 66 00 01 00 00 00 01 02 07 00 02 00 20 01 00 00 09 00 00 00 00 00")}});
    });
    m_service.Answer("GetCurrentHybridSBT", {{"result_internal", "1"}, {"landCode", "0"}, {"index", "0"}});
    EXPECT_EQ(RunCtl({"subtitle", "list"}).output, "  #  language  kind  page  hard of hearing  pid\n"
                                                   "* 0  fra       dvb   7     yes              0x0201\n");
    m_service.Answer("SizeOfHybridSBT", {{"result_internal", "1"}, {"size", "0"}});
    EXPECT_EQ(RunCtl({"subtitle", "list"}).output, "no subtitles\n");
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
    EXPECT_EQ(RunCtl({"captions", "list"}).output, "caption mode: selectable\n"
                                                   "  type     #  language  tag   pid\n"
                                                   "* caption  0  jpn       0x30  0x0130\n");
    Json::Value const json = ParseJson(RunCtl({"captions", "list", "--json"}).output);
    EXPECT_EQ(json["captions"].size(), 1U);
    EXPECT_EQ(json["superimpose"], Json::Value(Json::arrayValue));
    EXPECT_EQ(json["mode"].asInt(), 1);
}

TEST_F(CommandsTest, RatingShowsLocksToo)
{
    m_service.Answer(
        "GetRatingInfo",
        {{"result_internal", "1"}, {"ratingInfoSize", "2"}, {"ratingInfo", FromHex("00 00 0c 01 02 03")}});
    m_service.Answer("GetRatingLockState", {{"result_internal", "1"}, {"lockState", "1"}});
    m_service.Answer("FlagServiceLocked", {{"result_internal", "0"}, {"outServiceLocked", "1"}});
    EXPECT_EQ(RunCtl({"rating"}).output, "  region  dimension  value\n"
                                         "  0       0          12 years\n"
                                         "  1       2          3\n"
                                         "programme: locked\n"
                                         "service:   -\n");
    Json::Value const json = ParseJson(RunCtl({"rating", "--json"}).output);
    EXPECT_TRUE(json["programmeLocked"].asBool());
    EXPECT_TRUE(json["serviceLocked"].isNull());
    EXPECT_EQ(json["ratings"].size(), 2U);
}

} // namespace
} // namespace zviptv::test
