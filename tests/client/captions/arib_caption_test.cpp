// SPDX-License-Identifier: MIT
#include "StreamBuilder.h"

#include <zviptv/client/CaptionDecoder.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>

namespace zviptv::test {
namespace {

constexpr unsigned Management = 0;
constexpr unsigned FirstLanguage = 1;
constexpr unsigned SecondLanguage = 2;
constexpr unsigned OtherGroup = 0x20; // the two groups alternate

Bytes Size(std::size_t size, unsigned bytes)
{
    Bytes field;
    while (bytes-- > 0) {
        field.push_back(static_cast<std::uint8_t>(size >> 8U * bytes));
    }
    return field;
}

/// The payload of a PES packet with one data group.
Bytes Field(unsigned group, Bytes const& data, std::uint8_t identifier = 0x80)
{
    Bytes const head{identifier, 0xFF, 0xF1, 0xAA, static_cast<std::uint8_t>(group << 2U), 0, 0};
    return head + Size(data.size(), 2) + data + Bytes{0x12, 0x34};
}

Bytes Unit(std::uint8_t kind, Bytes const& data)
{
    return Bytes{0x1F, kind} + Size(data.size(), 3) + data;
}

/// A statement without a time.
Bytes Statement(Bytes const& units)
{
    return Bytes{0x3F} + Size(units.size(), 3) + units;
}

/// A field whose statement has this text.
Bytes Text(Bytes const& text, unsigned group = FirstLanguage)
{
    return Field(group, Statement(Unit(0x20, text)));
}

Bytes const Languages{0x3F, 2, 0x10, 'j', 'p', 'n', 0x80, 0x30, 'e', 'n', 'g', 0x80, 0, 0, 0};
Bytes const Clear{0x0C};
Bytes const A{0xA2}; // あ, in the set above 0xA0
Bytes const I{0xA4}; // い

} // namespace

TEST(AribCaptionDecoder, LanguagesComeFromTheManagementData)
{
    AribCaptionDecoder decoder;
    EXPECT_EQ(decoder.Decode(Text(A), 1)->language, "") << "before it has come";
    EXPECT_FALSE(decoder.Decode(Field(Management, Languages), 2));
    EXPECT_EQ(decoder.Decode(Text(A), 3)->language, "jpn");
    EXPECT_EQ(decoder.Decode(Text(A, SecondLanguage), 4)->language, "eng");
    EXPECT_EQ(decoder.Decode(Text(A, FirstLanguage | OtherGroup), 5)->language, "jpn");
    EXPECT_EQ(decoder.Decode(Text(A, 3), 6)->language, "") << "which it does not list";
}

TEST(AribCaptionDecoder, CaptionsAndSuperimposedTextDiffer)
{
    AribCaptionDecoder decoder;
    auto const caption = decoder.Decode(Text(A), 0x1FFFFFFFF);
    ASSERT_TRUE(caption);
    EXPECT_EQ(caption->kind, CaptionKind::AribCaption);
    EXPECT_EQ(caption->pts, 0x1FFFFFFFFU);
    EXPECT_EQ(caption->page, 0U);
    EXPECT_EQ(caption->Text(), "あ");
    auto const superimposed = decoder.Decode(Field(FirstLanguage, Statement(Unit(0x20, I)), 0x81), {});
    ASSERT_TRUE(superimposed);
    EXPECT_EQ(superimposed->kind, CaptionKind::AribSuperimpose);
    EXPECT_EQ(superimposed->Text(), "い");
    EXPECT_FALSE(superimposed->pts);
}

TEST(AribCaptionDecoder, ClearedScreenIsAnEmptyCaption)
{
    AribCaptionDecoder decoder;
    auto const caption = decoder.Decode(Text(Clear), 1);
    ASSERT_TRUE(caption);
    EXPECT_TRUE(caption->IsEmpty());
    EXPECT_FALSE(decoder.Decode(Text({0x87}), 2)) << "a colour alone changes nothing on the screen";
    EXPECT_FALSE(decoder.Decode(Field(FirstLanguage, Statement(Unit(0x30, {0}))), 3)) << "nor does a DRCS";
}

TEST(AribCaptionDecoder, PositionsMakeLines)
{
    AribCaptionDecoder decoder;
    Bytes const positioned = Clear + Bytes{0x1C, 0x45, 0x41} + A + I + Bytes{0x1C, 0x47, 0x41} + I;
    EXPECT_EQ(decoder.Decode(Text(positioned), 1)->Text(), "あい\nい");
    EXPECT_EQ(decoder.Decode(Text(A + Bytes{0x0D} + I), 2)->Text(), "あ\nい") << "also a line's end does";
}

TEST(AribCaptionDecoder, WritingFormatDoesNotBreakLines)
{
    AribCaptionDecoder decoder;
    Bytes const format{0x9B, '7', ' ', 'S'};                             // SWF
    Bytes const area{0x9B, '6', '2', '0', ';', '4', '8', '0', ' ', 'V'}; // SDF
    EXPECT_EQ(decoder.Decode(Text(Clear + format + A + I + A), 1)->Text(), "あいあ");
    EXPECT_EQ(decoder.Decode(Text(Clear + format + area + A + I + A), 2)->Text(), "あいあ");
}

TEST(AribCaptionDecoder, RunsHaveColoursAndSizes)
{
    AribCaptionDecoder decoder;
    auto const caption = decoder.Decode(Text(Bytes{0x83} + A + Bytes{0x88} + I), 1);
    ASSERT_TRUE(caption);
    ASSERT_EQ(caption->lines.size(), 1U);
    auto const& runs = caption->lines[0].runs;
    ASSERT_EQ(runs.size(), 2U);
    EXPECT_EQ(runs[0].text, "あ");
    EXPECT_EQ(runs[0].foreground, (Colour{255, 255, 0}));
    EXPECT_FALSE(runs[0].background);
    EXPECT_FALSE(runs[0].isSmall);
    EXPECT_EQ(runs[1].text, "い");
    EXPECT_TRUE(runs[1].isSmall);
}

TEST(AribCaptionDecoder, EveryStatementIsReadFromItsBeginning)
{
    AribCaptionDecoder decoder;
    std::string text;
    for (int round = 0; round < 20; ++round) {
        text += decoder.Decode(Text(A + Bytes{0x8A, 0x1B, 0x28, 0x31}), 1)->Text();
    }
    EXPECT_EQ(text, "ああああああああああああああああああああ") << "sets and sizes do not last";
}

TEST(AribCaptionDecoder, OmitsLongControlSequences)
{
    AribCaptionDecoder decoder;
    for (std::size_t const count : {14U, 17U, 255U, 256U, 257U, 4000U}) {
        Bytes const digits(count, '1');
        auto const caption = decoder.Decode(Text(Bytes{0x9B} + digits + Bytes{'V'} + A), 1);
        ASSERT_TRUE(caption) << count;
        EXPECT_EQ(caption->Text(), "あ") << count;
    }
    EXPECT_FALSE(decoder.Decode(Text(Bytes{0x9B} + Bytes(4000, '1')), 1)) << "without an end";
    EXPECT_EQ(decoder.Decode(Text(Bytes{0x9B, '1', ';', '2', '_'} + A), 1)->Text(), "あ");
}

TEST(AribCaptionDecoder, UnitsThatDoNotFitEndTheText)
{
    AribCaptionDecoder decoder;
    Bytes units = Unit(0x20, A) + Unit(0x20, I);
    units[units.size() - 4] = 0xFF; // the size of the second one
    EXPECT_EQ(decoder.Decode(Field(FirstLanguage, Statement(units)), 1)->Text(), "あ");
    Bytes const whole = Text(A + I);
    for (std::size_t size = 0; size + 2 < whole.size(); ++size) {
        EXPECT_FALSE(decoder.Decode(ByteView(whole).Part(0, size), 1)) << size;
    }
}

TEST(AribCaptionDecoder, OmitsLongText)
{
    AribCaptionDecoder decoder;
    EXPECT_TRUE(decoder.Decode(Text(Bytes(4096, 0xA2)), 1));
    EXPECT_FALSE(decoder.Decode(Text(Bytes(4097, 0xA2)), 1));
}

} // namespace zviptv::test
