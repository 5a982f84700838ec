// SPDX-License-Identifier: MIT
#include "CtlFixture.h"

namespace zviptv::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

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

TEST_F(CtlTest, StatusShowsWhatIsPlayed)
{
    Play(m_service);
    EXPECT_EQ(RunCtl({"status"}).output, "source:         playing\n"
                                         "clock (STC):    135000 (1.500 s)\n"
                                         "first PTS:      90000 (1.000 s, time base 1/90000)\n"
                                         "picture:        hd, 1280x720, 59.94 frames/s, 16:9\n"
                                         "audio:          0: eng, ac3, 6 channels, pid 0x0101\n"
                                         "programme:      not locked\n"
                                         "service:        locked\n");
    Json::Value const json = ParseJson(RunCtl({"status", "--json"}).output);
    EXPECT_TRUE(json["result"].asBool());
    EXPECT_EQ(json["sourceState"].asInt(), 2);
    EXPECT_EQ(json["stc"].asInt(), 135000);
    EXPECT_EQ(json["firstPts"].asInt(), 90000);
    EXPECT_EQ(json["resolution"].asInt(), 2);
    EXPECT_EQ(json["picture"]["width"].asInt(), 1280);
    EXPECT_EQ(json["audio"]["languageCode"].asString(), "eng");
    EXPECT_EQ(json["audio"]["channels"].asInt(), 6);
    EXPECT_EQ(json["audioIndex"].asInt(), 0);
    EXPECT_FALSE(json["programmeLocked"].asBool());
    EXPECT_TRUE(json["serviceLocked"].asBool());
}

TEST_F(CtlTest, StatusShowsADashForUnknownValues)
{
    Play(m_service);
    m_service.Answer("GetSTCCount", {{"result_internal", "0"}, {"stcCount", "0"}});
    m_service.Answer("GetCurrentAudioInfo", {{"result_internal", "1"}, {"landCode", "0"}, {"index", "-1"}});
    CtlResult const result = RunCtl({"status"});
    EXPECT_EQ(result.code, 0);
    EXPECT_THAT(result.output, testing::HasSubstr("clock (STC):    -\n"));
    EXPECT_THAT(result.output, testing::HasSubstr("audio:          -\n"));
    Json::Value const json = ParseJson(RunCtl({"status", "--json"}).output);
    EXPECT_TRUE(json["stc"].isNull());
    EXPECT_TRUE(json["audio"].isNull());
}

/// The JSON of the words; `call` returns the received record.
TEST_F(CtlTest, UnknownNumbersAreNull)
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
    EXPECT_EQ(json["audio"]["audioType"].asInt(), 0);
    EXPECT_TRUE(json["audio"]["audioType"].isNumeric());
    EXPECT_EQ(json["picture"]["height"].asInt(), 720);
    Json::Value const raw = ParseJson(RunCtl({"call", "GetAudio", "0", "--json"}).output);
    EXPECT_TRUE(raw["audio"]["channels"].isNumeric());
}

TEST_F(CtlTest, StatusShowsWhatIsKnownWhenCallsFail)
{
    Play(m_service);
    m_service.Answer("GetResolution", {{"result_internal", "1"}, {"resolution", "high"}});
    CtlResult const unreadable = RunCtl({"status"});
    EXPECT_EQ(unreadable.code, 5);
    EXPECT_THAT(unreadable.output, HasSubstr("source:         playing\n"));
    EXPECT_THAT(unreadable.output, HasSubstr("picture:        -\n"));
    EXPECT_THAT(unreadable.output, HasSubstr("service:        locked\n"));
    EXPECT_THAT(
        unreadable.errors,
        StartsWith(
            "zviptvctl: the service's answer to GetResolution cannot be read: resolution is malformed"));

    m_service.AnswerError("GetSTCCount");
    CtlResult const both = RunCtl({"status", "--json"});
    EXPECT_EQ(both.code, 4) << "the first failure's";
    EXPECT_THAT(both.errors, HasSubstr("zviptvctl: GetSTCCount: the service answered with the error "));
    EXPECT_THAT(
        both.errors,
        HasSubstr(
            "zviptvctl: the service's answer to GetResolution cannot be read: resolution is malformed"));
    Json::Value const json = ParseJson(both.output);
    EXPECT_FALSE(json["result"].asBool());
    EXPECT_THAT(json["error"].asString(),
                testing::MatchesRegex("GetSTCCount: .*; the service's answer to GetResolution cannot be "
                                      "read: resolution is malformed: .*"));
    EXPECT_EQ(json["sourceState"].asInt(), 2);
    EXPECT_TRUE(json["stc"].isNull());
    EXPECT_TRUE(json["picture"].isNull());
    EXPECT_TRUE(json["serviceLocked"].asBool());
}

/// Each missing answer takes two seconds.
TEST_F(CtlTest, StatusAsksAServiceThatHangsNoMoreThanTwice)
{
    Play(m_service);
    for (char const* const method : {"GetSTCCount", "GetFirstPTS", "GetResolution"}) {
        m_service.AnswerNothing(method);
    }
    CtlResult const result = RunCtl({"status"});
    EXPECT_EQ(result.code, 4);
    EXPECT_THAT(result.output, HasSubstr("source:         playing\n"));
    EXPECT_THAT(result.output, HasSubstr("service:        -\n"));
    EXPECT_THAT(result.errors, HasSubstr("GetFirstPTS: no answer"));
    EXPECT_EQ(m_service.LastRequest().Value("functionname"), "GetFirstPTS");
}

TEST_F(CtlTest, StatusOfAServiceThatLeavesShowsItsLastValues)
{
    Play(m_service);
    m_service.AnswerNothing("GetSTCCount");
    auto const child = StartCtl({"status"});
    ASSERT_TRUE(m_service.WaitForRequest("GetSTCCount"));
    m_service.Vanish();
    CtlResult const result = Finish(*child);
    EXPECT_EQ(result.code, 3);
    EXPECT_THAT(result.output, StartsWith("source:         playing\nclock (STC):    -\n"));
    EXPECT_THAT(result.errors,
                testing::MatchesRegex("zviptvctl: GetSTCCount: the service left the bus; start it again\n"));
}

} // namespace
} // namespace zviptv::test
