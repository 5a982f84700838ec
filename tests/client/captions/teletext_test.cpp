// SPDX-License-Identifier: MIT
#include "TeletextBuilder.h"

#include <zviptv/client/CaptionDecoder.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zviptv::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr TeletextFlags Subtitle = TeletextFlags::Erase | TeletextFlags::Subtitle;

std::vector<std::string> TextsOf(std::vector<Caption> const& captions)
{
    std::vector<std::string> texts;
    for (Caption const& caption : captions) {
        texts.push_back(std::to_string(caption.page) + ": " + caption.Text());
    }
    return texts;
}

TeletextBuilder OnePage(std::string const& text)
{
    return TeletextBuilder().Header(0x888, Subtitle).Row(8, 22, "\v\v" + text + "\n\n");
}

} // namespace

TEST(TeletextDecoder, PageIsCompleteWithTheNextHeader)
{
    TeletextDecoder decoder;
    EXPECT_THAT(decoder.Decode(OnePage("first").Field(), 100), IsEmpty());
    auto const captions = decoder.Decode(TeletextBuilder().Header(0x888, Subtitle).Field(), 200);
    ASSERT_THAT(TextsOf(captions), ElementsAre("888: first"));
    EXPECT_EQ(captions[0].pts, 100U) << "the time of the packet with its header";
    EXPECT_THAT(TextsOf(decoder.Flush()), ElementsAre("888: "));
}

TEST(TeletextDecoder, RowsMayArriveInLaterPackets)
{
    TeletextDecoder decoder;
    decoder.Decode(TeletextBuilder().Header(0x888, Subtitle).Field(), 100);
    decoder.Decode(TeletextBuilder().Row(8, 20, "\v\vone\n\n").Field(), 101);
    decoder.Decode(TeletextBuilder().Row(8, 22, "\v\vtwo\n\n").Field(), 102);
    auto const captions = decoder.Flush();
    ASSERT_THAT(TextsOf(captions), ElementsAre("888: one\ntwo"));
    EXPECT_EQ(captions[0].pts, 100U);
}

TEST(TeletextDecoder, ErasedPageIsReportedOnce)
{
    TeletextDecoder decoder;
    Bytes const empty = TeletextBuilder().Header(0x888, Subtitle).Field();
    EXPECT_THAT(decoder.Decode(empty + empty, 1), IsEmpty()) << "nothing was on the screen";
    decoder.Decode(OnePage("text").Field(), 2);
    EXPECT_THAT(TextsOf(decoder.Decode(empty, 3)), ElementsAre("888: text"));
    EXPECT_THAT(TextsOf(decoder.Decode(empty, 4)), ElementsAre("888: "));
    EXPECT_THAT(decoder.Decode(empty, 5), IsEmpty());
}

TEST(TeletextDecoder, MagazinesAreIndependentUnlessTheyAreSerial)
{
    TeletextDecoder decoder({{150, 888}, {}});
    decoder.Decode(TeletextBuilder().Header(0x150).Row(1, 5, "one").Field(), 1);
    decoder.Decode(OnePage("eight").Field(), 2);
    decoder.Decode(TeletextBuilder().Row(1, 6, "more").Field(), 3);
    EXPECT_THAT(TextsOf(decoder.Flush()), ElementsAre("150: one\nmore", "888: eight"));

    decoder.Decode(TeletextBuilder().Header(0x150).Row(1, 5, "other").Field(), 4);
    TeletextBuilder const serial = TeletextBuilder().Header(0x888, Subtitle | TeletextFlags::Serial);
    EXPECT_THAT(TextsOf(decoder.Decode(serial.Field(), 5)), ElementsAre("150: other\nmore"));
}

TEST(TeletextDecoder, EachSubpageBeginsWithoutTheRowsOfTheOther)
{
    TeletextDecoder decoder({{150}, {}});
    decoder.Decode(TeletextBuilder().Header(0x150, {}, 1).Row(1, 5, "one").Field(), 1);
    decoder.Decode(TeletextBuilder().Header(0x150, {}, 2).Row(1, 6, "two").Field(), 2);
    EXPECT_THAT(TextsOf(decoder.Flush()), ElementsAre("150: two"));
}

TEST(TeletextDecoder, RunsHaveColoursAndSizes)
{
    TeletextDecoder decoder;
    decoder.Decode(OnePage("\x01red\x03yellow").Field(), 1);
    auto captions = decoder.Flush();
    ASSERT_EQ(captions.size(), 1U);
    ASSERT_EQ(captions[0].lines.size(), 1U);
    auto const& runs = captions[0].lines[0].runs;
    ASSERT_EQ(runs.size(), 2U);
    EXPECT_EQ(runs[0].text, "red ") << "the code of a colour is a space";
    EXPECT_EQ(runs[0].foreground, (Colour{255, 0, 0}));
    EXPECT_EQ(runs[0].background, (Colour{0, 0, 0}));
    EXPECT_EQ(runs[1].text, "yellow");
    EXPECT_EQ(runs[1].foreground, (Colour{255, 255, 0}));
    EXPECT_FALSE(runs[1].isDoubleHeight);

    decoder.Decode(OnePage("\rtall").Field(), 2);
    captions = decoder.Flush();
    ASSERT_EQ(captions.size(), 1U);
    ASSERT_EQ(captions[0].lines.size(), 1U);
    EXPECT_EQ(captions[0].Text(), "tall");
    EXPECT_TRUE(captions[0].lines[0].runs[0].isDoubleHeight);
}

TEST(TeletextDecoder, TextOutsideTheBoxIsNotShown)
{
    TeletextDecoder decoder;
    decoder.Decode(TeletextBuilder().Header(0x888, Subtitle).Row(8, 22, "no\v\vyes\n\nno").Field(), 1);
    EXPECT_THAT(TextsOf(decoder.Flush()), ElementsAre("888: yes"));
}

TEST(TeletextDecoder, NationalCharactersAreRead)
{
    TeletextDecoder decoder;
    constexpr unsigned german = 1;
    decoder.Decode(
        TeletextBuilder().Header(0x889, Subtitle, 0, german).Row(8, 22, "\v\v{|}~[\\]\n\n").Field(), 1);
    EXPECT_THAT(TextsOf(decoder.Flush()), ElementsAre("889: äöüßÄÖÜ"));
}

TEST(TeletextDecoder, OmitsHexadecimalPagesAndDamagedHeaders)
{
    TeletextDecoder decoder;
    decoder.Decode(TeletextBuilder().Header(0x8A8, Subtitle).Row(8, 22, "\v\vhex\n\n").Field(), 1);
    EXPECT_THAT(decoder.Flush(), IsEmpty());

    Bytes field = OnePage("text").Field();
    field[1 + 4 + 2] ^= 0x03; // two bits of the page's units
    EXPECT_THAT(decoder.Decode(field, 2), IsEmpty());
    EXPECT_THAT(decoder.Flush(), IsEmpty());

    field = OnePage("text").Field();
    field[1 + 4 + 2] ^= 0x01; // one bit is corrected
    decoder.Decode(field, 3);
    EXPECT_THAT(TextsOf(decoder.Flush()), ElementsAre("888: text"));
}

TEST(TeletextDecoder, EmptyAndCutFieldsAreHarmless)
{
    TeletextDecoder decoder;
    Bytes const field = OnePage("text").Field();
    for (std::size_t size = 0; size < field.size(); ++size) {
        decoder.Decode(ByteView(field).Part(0, size), {});
    }
    decoder.Decode(field, {});
    auto const captions = decoder.Flush();
    ASSERT_THAT(TextsOf(captions), ElementsAre("888: text"));
    EXPECT_FALSE(captions[0].pts);
}

} // namespace zviptv::test
