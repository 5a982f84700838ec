#include "commands/PacketLine.h"
#include "output/Answer.h"
#include "output/Table.h"
#include "output/Traffic.h"

#include <gmock/gmock.h>

#include <sstream>

using namespace zviptv::ctl;

namespace {

template <typename Value>
std::string Lines(Value const& value)
{
    std::string text;
    AddLines(text, "x", value);
    return text;
}

TEST(PrintTest, Numbers)
{
    EXPECT_EQ("x: -5\n", Lines(-5));
    EXPECT_EQ("x: 18446744073709551615\n", Lines(18446744073709551615ULL));
    EXPECT_EQ("x: true\n", Lines(true));
    EXPECT_EQ("0x0a", ToHex(10, 2));
    EXPECT_EQ("0x1fff", ToHex(0x1FFF, 4));
    EXPECT_EQ("0x0101", ToText(std::uint16_t{257}, Notation::Hexadecimal));
    EXPECT_EQ("257", ToText(std::uint16_t{257}, Notation::Plain));
}

TEST(PrintTest, EnumerationsWithTheirNames)
{
    EXPECT_EQ("x: 2 (PLAYING)\n", Lines(ZV_SOURCE_STATE_PLAYING));
    EXPECT_EQ("x: -1 (UNKNOWN)\n", Lines(ZV_SOURCE_STATE_UNKNOWN));
    EXPECT_EQ("x: 99\n", Lines(static_cast<EZVSourceState>(99)));
    EXPECT_EQ("x: 3\n", Lines(ZV_CAPTION_SERVICE_3));
    EXPECT_EQ("x: 5 (8K)\n", Lines(CVTV_RESOLUTION_8K));
}

TEST(PrintTest, LanguagesAsCodes)
{
    EXPECT_EQ("x: kor\n", Lines(ZV_LANGUAGE_KOR));
    EXPECT_EQ("x: zza\n", Lines(static_cast<EZVLanguageCode>(0x7a7a61)));
    EXPECT_EQ("x: 0 (UNKNOWN)\n", Lines(ZV_LANGUAGE_UNKNOWN));
    EXPECT_EQ("x: 12345\n", Lines(static_cast<EZVLanguageCode>(12345)));
    Json::Value json;
    AddMember(json, "language", static_cast<EZVLanguageCode>(12345));
    EXPECT_EQ("{\"language\":12345,\"languageCode\":\"\"}", Compact(json));
}

TEST(PrintTest, TextsStayOnOneLine)
{
    EXPECT_EQ("x: a\\nb\\\\\\t\\x00\\x7f\n", Lines(std::string("a\nb\\\t\0\x7f", 7)));
    EXPECT_EQ("x: \xed\x95\x9c\n", Lines(std::string("\xed\x95\x9c")));
    EXPECT_EQ("a\nb\t\\x1b[0m", PrintableText("a\nb\t\x1b[0m"));
    EXPECT_EQ("x: a\\xc2\\x9b1m\\x7f\n", Lines(std::string("a\xc2\x9b\x31m\x7f")));
}

TEST(PrintTest, TextsAreUtf8WhateverTheServiceSends)
{
    EXPECT_EQ("x: a\\xff\xc3\xa9\\xc3\n", Lines(std::string("a\xff\xc3\xa9\xc3")));
    EXPECT_EQ("\\xed\\xa0\\x80\n\\xe2\\x82", PrintableText("\xed\xa0\x80\n\xe2\x82"));
}

TEST(PrintTest, Characters)
{
    EXPECT_EQ("K", ToText('K'));
    EXPECT_EQ("\\x00", ToText('\0'));
    EXPECT_EQ("\\xff", ToText('\xff'));
    EXPECT_EQ("\"K\"", Compact(ToJson('K')));
    EXPECT_EQ("\"\xc3\xbf\"", Compact(ToJson('\xff')));
    EXPECT_EQ("\"\\u0000\"", Compact(ToJson('\0')));
}

TEST(PrintTest, RecordsFieldByField)
{
    ZVDualSound sound{};
    sound.mode = ZV_MULTI_SOUND_SUB;
    sound.available = 255;
    EXPECT_EQ("x.mode: 2 (SUB)\nx.available: 255\n", Lines(sound));
    EXPECT_EQ("{\"available\":255,\"mode\":2}", Compact(ToJson(sound)));
}

TEST(PrintTest, ListsWithTheirSize)
{
    EXPECT_EQ("x: 0\n", Lines(std::vector<ZVRatingInfo>{}));
    EXPECT_EQ("x: 1\nx[0].region: 1\nx[0].dimension: 2\nx[0].value: 3\n",
              Lines(std::vector<ZVRatingInfo>{{1, 2, 3}}));
    EXPECT_EQ("[]", Compact(ToJson(std::vector<ZVRatingInfo>{})));
}

TEST(PrintTest, Answers)
{
    Answer answer;
    answer.Add("stc", 5ULL);
    std::ostringstream text;
    Print(text, answer, false);
    EXPECT_EQ("stc: 5\n", text.str());
    std::ostringstream json;
    Print(json, answer, true);
    PrintError(json, "no \"bus\" \xff");
    EXPECT_EQ("{\"result\":true,\"stc\":5}\n{\"error\":\"no \\\"bus\\\" \xef\xbf\xbd\",\"result\":false}\n",
              json.str());
}

TEST(PrintTest, Tables)
{
    Table table({"#", "language"});
    EXPECT_EQ("nothing\n", table.Text("nothing"));
    table.Add({"0", "eng"});
    table.Add({"10", "-"}, true);
    EXPECT_EQ("  #   language\n"
              "  0   eng\n"
              "* 10  -\n",
              table.Text("nothing"));
}

TEST(PrintTest, Packets)
{
    std::vector<std::uint8_t> const data(2048);
    Packet const pes{2, std::uint16_t{0x0101}, 133200U, data};
    EXPECT_EQ("audio pid=0x0101 pts=133200 size=2048\n", PacketLine(pes, false));
    EXPECT_EQ("{\"pid\":257,\"pts\":133200,\"size\":2048,\"type\":2}\n", PacketLine(pes, true));
    Packet const caption{9, std::nullopt, std::nullopt, data};
    EXPECT_EQ("9 size=2048\n", PacketLine(caption, false));
    EXPECT_EQ("{\"size\":2048,\"type\":9}\n", PacketLine(caption, true));
}

TEST(PrintTest, Traffic)
{
    Traffic::Clock::time_point const start{};
    zviptv::ctl::Traffic traffic(start);
    EXPECT_EQ("0 packets, 0 bytes in 0.0 s (0.0 kB/s)", traffic.Summary(start));
    traffic.Add(3000);
    traffic.Measure(start + std::chrono::seconds(2));
    EXPECT_EQ("1 packet, 3000 bytes, 1.5 kB/s", traffic.Now());
    traffic.Add(500);
    traffic.Measure(start + std::chrono::seconds(3));
    EXPECT_EQ("2 packets, 3500 bytes, 0.5 kB/s", traffic.Now());
    EXPECT_EQ("2 packets, 3500 bytes in 3.5 s (1.0 kB/s)",
              traffic.Summary(start + std::chrono::milliseconds(3500)));
}

} // namespace
