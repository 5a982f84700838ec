// SPDX-License-Identifier: MIT
#include "CtlFixture.h"

namespace zviptv::test {
namespace {

TEST_F(CtlTest, JsonIsOneObjectOnOneLine)
{
    m_service.Answer("GetFirstPTS", {{"result_internal", "1"},
                                     {"firstPTS", "18446744073709551615"},
                                     {"timebaseden", "90000"},
                                     {"timebasenum", "1"},
                                     {"currenttime", "12"}});
    CtlResult const result = RunCtl({"--json", "call", "GetFirstPTS"});
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.output,
              "{\"a\":90000,\"b\":1,\"now\":12,\"pts\":18446744073709551615,\"result\":true}\n");
}

TEST_F(CtlTest, JsonNamesLanguagesTwice)
{
    m_service.Answer("GetCurrentAudioInfo",
                     {{"result_internal", "1"}, {"landCode", "6647399"}, {"index", "2"}});
    CtlResult const result = RunCtl({"call", "GetCurrentAudioInfo", "--json"});
    EXPECT_EQ(result.output, "{\"index\":2,\"language\":6647399,\"languageCode\":\"eng\",\"result\":true}\n");
}

TEST_F(CtlTest, JsonOfARefusalContainsTheValues)
{
    m_service.Answer("GetSourceState", {{"result_internal", "0"}, {"sourcestate", "4"}});
    CtlResult const result = RunCtl({"call", "--json", "GetSourceState"});
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.output, "{\"result\":false,\"state\":4}\n");
}

TEST_F(CtlTest, JsonRecordsAreObjectsWithEveryField)
{
    m_service.Answer("GetTTX", {{"result_internal", "1"},
                                {"ttx", FromHex("75 65 64 00 bc 1a 08 88 02 07 00 00 00 00 00 00")}});
    Json::Value const json = ParseJson(RunCtl({"--json", "call", "GetTTX", "0"}).output);
    EXPECT_EQ(
        json,
        ParseJson(R"({"result":true,"ttx":{"language":6579573,"languageCode":"deu","pid":6844,"magazine":8,
                            "page":136,"type":2,"componentTag":7}})"));
}

TEST_F(CtlTest, JsonRatingsAreAnArray)
{
    m_service.Answer(
        "GetRatingInfo",
        {{"result_internal", "1"}, {"ratingInfoSize", "2"}, {"ratingInfo", FromHex("00 00 0c ff fe fd")}});
    Json::Value const json = ParseJson(RunCtl({"--json", "call", "GetRatingInfo"}).output);
    EXPECT_EQ(json, ParseJson(R"({"result":true,"ratings":[{"region":0,"dimension":0,"value":12},
                            {"region":255,"dimension":254,"value":253}]})"));
    m_service.Answer("GetRatingInfo",
                     {{"result_internal", "1"}, {"ratingInfoSize", "0"}, {"ratingInfo", ""}});
    EXPECT_EQ(RunCtl({"--json", "call", "GetRatingInfo"}).output, "{\"ratings\":[],\"result\":true}\n");
}

TEST_F(CtlTest, JsonTextsAreUtf8)
{
    m_service.Answer("GetGenre", {{"data", "\xed\x95\x9c \"x\"\n\xff"}});
    EXPECT_EQ(RunCtl({"--json", "call", "GetGenre", "1"}).output,
              "{\"genre\":\"\xed\x95\x9c \\\"x\\\"\\n\xef\xbf\xbd\",\"result\":true}\n");
}

TEST_F(CtlTest, OptionsSelectTheHandle)
{
    EXPECT_EQ(RunCtl({"--profile", "2", "--id", "0x10005", "call", "MuteAudio", "1"}).code, 0);
    EXPECT_EQ(m_service.LastRequest().Value("handleID"), "517");
}

TEST_F(CtlTest, WritesTheLogToStandardErrorOnlyOnRequest)
{
    CtlResult const result = RunCtl({"call", "MuteAudio", "1", "--log"});
    EXPECT_EQ(result.output, "result: true\n");
    EXPECT_THAT(result.errors, testing::HasSubstr("[info] PlayerControlProxy.cpp: MuteAudio("));
    EXPECT_THAT(result.errors, testing::HasSubstr("[error] "));
}

} // namespace
} // namespace zviptv::test
