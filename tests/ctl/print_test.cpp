// SPDX-License-Identifier: MIT
#include "commands/PacketLine.h"
#include "common/PrintableText.h"
#include "output/Answer.h"
#include "output/Table.h"
#include "output/Traffic.h"

#include <gmock/gmock.h>

#include <sstream>

using namespace zviptv;
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
    EXPECT_EQ(Lines(-5), "x: -5\n");
    EXPECT_EQ(Lines(18446744073709551615ULL), "x: 18446744073709551615\n");
    EXPECT_EQ(Lines(true), "x: true\n");
    EXPECT_EQ(ToHex(10, 2), "0x0a");
    EXPECT_EQ(ToHex(0x1FFF, 4), "0x1fff");
    EXPECT_EQ(ToText(std::uint16_t{257}, Notation::Hexadecimal), "0x0101");
    EXPECT_EQ(ToText(std::uint16_t{257}, Notation::Plain), "257");
}

TEST(PrintTest, EnumerationsWithTheirNames)
{
    EXPECT_EQ(Lines(ZV_SOURCE_STATE_PLAYING), "x: 2 (PLAYING)\n");
    EXPECT_EQ(Lines(ZV_SOURCE_STATE_UNKNOWN), "x: -1 (UNKNOWN)\n");
    EXPECT_EQ(Lines(static_cast<EZVSourceState>(99)), "x: 99\n");
    EXPECT_EQ(Lines(ZV_CAPTION_SERVICE_3), "x: 3\n");
    EXPECT_EQ(Lines(CVTV_RESOLUTION_8K), "x: 5 (8K)\n");
}

TEST(PrintTest, LanguagesAsCodes)
{
    EXPECT_EQ(Lines(ZV_LANGUAGE_KOR), "x: kor\n");
    EXPECT_EQ(Lines(static_cast<EZVLanguageCode>(0x7a7a61)), "x: zza\n");
    EXPECT_EQ(Lines(ZV_LANGUAGE_UNKNOWN), "x: 0 (UNKNOWN)\n");
    EXPECT_EQ(Lines(static_cast<EZVLanguageCode>(12345)), "x: 12345\n");
    Json::Value json;
    AddMember(json, "language", static_cast<EZVLanguageCode>(12345));
    EXPECT_EQ(Compact(json), "{\"language\":12345,\"languageCode\":\"\"}");
}

TEST(PrintTest, TextsStayOnOneLine)
{
    EXPECT_EQ(Lines(std::string("a\nb\\\t\0\x7f", 7)), "x: a\\nb\\\\\\t\\x00\\x7f\n");
    EXPECT_EQ(Lines(std::string("\xed\x95\x9c")), "x: \xed\x95\x9c\n");
    EXPECT_EQ(PrintableText("a\nb\t\x1b[0m"), "a\nb\t\\x1b[0m");
    EXPECT_EQ(Lines(std::string("a\xc2\x9b\x31m\x7f")), "x: a\\xc2\\x9b1m\\x7f\n");
}

TEST(PrintTest, TextsAreAlwaysUtf8)
{
    EXPECT_EQ(Lines(std::string("a\xff\xc3\xa9\xc3")), "x: a\\xff\xc3\xa9\\xc3\n");
    EXPECT_EQ(PrintableText("\xed\xa0\x80\n\xe2\x82"), "\\xed\\xa0\\x80\n\\xe2\\x82");
    EXPECT_EQ(PrintableText("\xef\xbf\xbd\xef\xbf\xbe\xef\xbf\xbf"), "\uFFFD\\xef\\xbf\\xbe\\xef\\xbf\\xbf");
}

TEST(PrintTest, JsonHasNoControlCharacters)
{
    EXPECT_EQ(Compact(ToJson(std::string("\x1b[2J\x7f\xc2\x80\xc2\x9b\xc2\xa0\xc3\x9b"))),
              "\"\\u001b[2J\\u007f\\u0080\\u009b\xc2\xa0\xc3\x9b\"");
}

TEST(PrintTest, Characters)
{
    EXPECT_EQ(ToText('K'), "K");
    EXPECT_EQ(ToText('\0'), "\\x00");
    EXPECT_EQ(ToText('\xff'), "\\xff");
    EXPECT_EQ(Compact(ToJson('K')), "\"K\"");
    EXPECT_EQ(Compact(ToJson('\xff')), "\"\xc3\xbf\"");
    EXPECT_EQ(Compact(ToJson('\0')), "\"\\u0000\"");
}

TEST(PrintTest, RecordsFieldByField)
{
    ZVDualSound sound{};
    sound.mode = ZV_MULTI_SOUND_SUB;
    sound.available = 255;
    EXPECT_EQ(Lines(sound), "x.mode: 2 (SUB)\nx.available: 255\n");
    EXPECT_EQ(Compact(ToJson(sound)), "{\"available\":255,\"mode\":2}");
}

TEST(PrintTest, ListsWithTheirSize)
{
    EXPECT_EQ(Lines(std::vector<ZVRatingInfo>{}), "x: 0\n");
    EXPECT_EQ(Lines(std::vector<ZVRatingInfo>{{1, 2, 3}}),
              "x: 1\nx[0].region: 1\nx[0].dimension: 2\nx[0].value: 3\n");
    EXPECT_EQ(Compact(ToJson(std::vector<ZVRatingInfo>{})), "[]");
}

TEST(PrintTest, Answers)
{
    Answer answer;
    answer.Add("stc", 5ULL);
    std::ostringstream text;
    Print(text, answer, false);
    EXPECT_EQ(text.str(), "stc: 5\n");
    std::ostringstream json;
    Print(json, answer, true);
    PrintError(json, "no \"bus\" \xff");
    EXPECT_EQ(json.str(),
              "{\"result\":true,\"stc\":5}\n{\"error\":\"no \\\"bus\\\" \xef\xbf\xbd\",\"result\":false}\n");
}

TEST(PrintTest, Tables)
{
    Table table({"#", "language"});
    EXPECT_EQ(table.Text("nothing"), "nothing\n");
    table.Add({"0", "eng"});
    table.Add({"10", "-"}, true);
    EXPECT_EQ(table.Text("nothing"), "  #   language\n"
                                     "  0   eng\n"
                                     "* 10  -\n");
}

TEST(PrintTest, Packets)
{
    std::vector<std::uint8_t> const data(2048);
    Packet const pes{2, std::uint16_t{0x0101}, 133200U, data};
    EXPECT_EQ(PacketLine(pes, false), "audio pid=0x0101 pts=133200 size=2048\n");
    EXPECT_EQ(PacketLine(pes, true), "{\"pid\":257,\"pts\":133200,\"size\":2048,\"type\":2}\n");
    Packet const caption{9, std::nullopt, std::nullopt, data};
    EXPECT_EQ(PacketLine(caption, false), "9 size=2048\n");
    EXPECT_EQ(PacketLine(caption, true), "{\"size\":2048,\"type\":9}\n");
}

TEST(PrintTest, Traffic)
{
    Traffic::Clock::time_point const start{};
    zviptv::ctl::Traffic traffic(start);
    EXPECT_EQ(traffic.Summary(start), "0 packets, 0 bytes in 0.0 s (0.0 kB/s)");
    traffic.Add(3000);
    traffic.Measure(start + std::chrono::seconds(2));
    EXPECT_EQ(traffic.Now(), "1 packet, 3000 bytes, 1.5 kB/s");
    traffic.Add(500);
    traffic.Measure(start + std::chrono::seconds(3));
    EXPECT_EQ(traffic.Now(), "2 packets, 3500 bytes, 0.5 kB/s");
    EXPECT_EQ(traffic.Summary(start + std::chrono::milliseconds(3500)),
              "2 packets, 3500 bytes in 3.5 s (1.0 kB/s)");
}

} // namespace
