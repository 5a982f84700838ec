// SPDX-License-Identifier: MIT
#include "trace/Values.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace zviptv::trace;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

struct Decoded
{
    Value value;
    Problems problems;
};

/// The value of a key in the request, or the reply, of a function.
Decoded DecodeOf(char const* endpoint, char const* function, bool isReply, char const* key,
                 std::string_view bytes)
{
    Function const& found = *Schema::Get().Find(endpoint, function);
    Decoded decoded;
    ParsedEntry const entry{key, bytes, {}};
    decoded.value =
        Decode(entry, (isReply ? found.reply : found.request).find(key)->second, decoded.problems);
    return decoded;
}

} // namespace

TEST(ValuesTest, FlagsAreTrueForEveryNumberButZero)
{
    for (char const* const text : {"1", "2", "-1", " +7x"}) {
        Decoded const flag = DecodeOf("PLAYERCONTROL", "MuteAudio", false, "onoff", text);
        EXPECT_EQ(flag.value.text, "true") << text;
        EXPECT_EQ(flag.value.json, Json::Value(true)) << text;
    }
    EXPECT_EQ(DecodeOf("PLAYERCONTROL", "MuteAudio", false, "onoff", "0").value.json, Json::Value(false));
}

TEST(ValuesTest, NumbersHave64Bits)
{
    Decoded const clock = DecodeOf("PLAYERCONTROL", "GetSTCCount", true, "stcCount", "18446744073709551615");
    EXPECT_EQ(clock.value.text, "18446744073709551615");
    EXPECT_EQ(clock.value.json.asUInt64(), 18446744073709551615U);
    EXPECT_EQ(DecodeOf("PLAYERCONTROL", "SetCurrentAudioByIndex", false, "index", "-1").value.json.asInt(),
              -1);
}

TEST(ValuesTest, ReportsATextThatIsNotANumber)
{
    for (char const* const text : {"", "two", "-", "+ 1"}) {
        Decoded const index = DecodeOf("PLAYERCONTROL", "SetCurrentAudioByIndex", false, "index", text);
        EXPECT_THAT(index.problems, ElementsAre("index is not a number")) << text;
        EXPECT_EQ(index.value.json, Json::Value(text));
    }
}

TEST(ValuesTest, EnumerationsHaveNames)
{
    Decoded const mode = DecodeOf("PLAYERCONTROL", "SetDigitalDualSound", false, "mode", "1");
    EXPECT_EQ(mode.value.text, "MAIN");
    EXPECT_EQ(mode.value.name, "MAIN");
    EXPECT_EQ(mode.value.json.asInt(), 1);
    Decoded const unknown = DecodeOf("PLAYERCONTROL", "SetDigitalDualSound", false, "mode", "17");
    EXPECT_EQ(unknown.value.text, "17");
    EXPECT_EQ(unknown.value.name, "");
}

TEST(ValuesTest, LanguagesAreTheirCodes)
{
    Decoded const english = DecodeOf("BROADCASTDATA", "GetCurrentAudioInfo", true, "landCode", "6647399");
    EXPECT_EQ(english.value.text, "eng");
    Decoded const rare = DecodeOf("BROADCASTDATA", "GetCurrentAudioInfo", true, "landCode", "7496048");
    EXPECT_EQ(rare.value.name, "rap");
    EXPECT_EQ(DecodeOf("BROADCASTDATA", "GetCurrentAudioInfo", true, "landCode", "0").value.text, "UNKNOWN");
}

TEST(ValuesTest, ReadsRecordsByTheirLayout)
{
    std::string bytes("gne\0\1\0\0\0\x05\1\x30\3\x80\xbb\0\0\0\xee\2\0\2\1\x0f", 23);
    bytes.resize(32);
    Decoded const audio = DecodeOf("BROADCASTDATA", "GetAudio", true, "audio", bytes);
    EXPECT_THAT(audio.problems, IsEmpty());
    EXPECT_EQ(audio.value.text, "{language=eng encoding=MPEG pid=0x0105 componentTag=0x30 audioType=3 "
                                "sampleRate=48000 bitRate=192000 channels=2 dualMono=1 streamType=0x0f}");
    EXPECT_EQ(audio.value.json["pid"].asInt(), 0x105);
    EXPECT_EQ(audio.value.json["encoding"].asInt(), 1);
    EXPECT_EQ(audio.value.json["encodingName"].asString(), "MPEG");
    EXPECT_EQ(audio.value.json["languageName"].asString(), "eng");
}

TEST(ValuesTest, ReportsShortRecordsAndKeepsCompleteElements)
{
    Decoded const audio = DecodeOf("BROADCASTDATA", "GetAudio", true, "audio", "short");
    EXPECT_THAT(audio.problems, ElementsAre("audio has 5 bytes, not 32"));
    EXPECT_TRUE(audio.value.json.isNull());
    Decoded const ratings = DecodeOf("BROADCASTDATA", "GetRatingInfo", true, "ratingInfo",
                                     std::string_view("\1\2\3\0\0\x0c\7", 7));
    EXPECT_EQ(ratings.value.text, "{region=1 dimension=2 value=3} {region=0 dimension=0 value=12}");
    EXPECT_EQ(ratings.value.json.size(), 2U);
}

TEST(ValuesTest, TextsFitOnALineAndInJson)
{
    EXPECT_EQ(DecodeOf("PLAYERCONTROL", "SetAppID", false, "AppID", "org.example").value.text, "org.example");
    Decoded const odd = DecodeOf("PLAYERCONTROL", "SetAppID", false, "AppID", "a b\n\xff");
    EXPECT_EQ(odd.value.text, "\"a b\\n\\xff\"");
    EXPECT_EQ(odd.value.json.asString(), "a b\n\xEF\xBF\xBD");
    EXPECT_EQ(DecodeOf("PLAYERCONTROL", "SetAppID", false, "AppID", "a\"b").value.text, R"("a\"b")");
    EXPECT_EQ(DecodeOf("IPTVDATASUBSCRIBER", "PESCB", false, "pesData", "12345").value.text, "5 bytes");
}
