// SPDX-License-Identifier: MIT
#include "TeletextBuilder.h"

#include <zviptv/client/CaptionDecoder.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

namespace zviptv::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

Bytes const AribField{0x80, 0xFF, 0xF0, 1 << 2, 0, 0, 0, 11, 0x3F, 0, 0, 7, 0x1F, 0x20, 0, 0, 2, 0xA2, 0xA4};

Bytes TeletextField(std::string const& text)
{
    TeletextBuilder page;
    page.Header(0x888, TeletextFlags::Erase | TeletextFlags::Subtitle);
    return page.Row(8, 22, "\v\v" + text + "\n\n").Field();
}

PesPacket Packet(PesKind kind, std::uint16_t pid, Bytes const& field, std::uint64_t pts = 1)
{
    auto const bytes = std::make_shared<Bytes const>(MakePes(pts, field));
    return {kind, pid, bytes, ByteView(*bytes)};
}

} // namespace

TEST(CaptionDecoder, StreamsAreDecodedIndependently)
{
    CaptionDecoder decoder;
    EXPECT_THAT(decoder.Decode(Packet(PesKind::Teletext, 0x100, TeletextField("one"), 5)), IsEmpty());
    EXPECT_THAT(decoder.Decode(Packet(PesKind::Teletext, 0x200, TeletextField("two"), 6)), IsEmpty());
    auto const captions = decoder.Flush();
    ASSERT_EQ(captions.size(), 2U);
    EXPECT_EQ(captions[0].pid, 0x100);
    EXPECT_EQ(captions[0].pts, 5U);
    EXPECT_EQ(captions[0].Text(), "one");
    EXPECT_EQ(captions[1].pid, 0x200);
    EXPECT_EQ(captions[1].Text(), "two");
}

TEST(CaptionDecoder, TheKindSelectsTheDecoder)
{
    CaptionDecoder decoder;
    auto const captions = decoder.Decode(Packet(PesKind::Caption, 0x130, AribField, 9));
    ASSERT_EQ(captions.size(), 1U);
    EXPECT_EQ(captions[0].pid, 0x130);
    EXPECT_EQ(captions[0].pts, 9U);
    EXPECT_EQ(captions[0].Text(), "あい");
    for (PesKind const kind : {PesKind::Other, PesKind::Video, PesKind::Audio, PesKind::Subtitle}) {
        EXPECT_THAT(decoder.Decode(Packet(kind, 0x130, AribField)), IsEmpty());
    }
    EXPECT_THAT(decoder.Decode(Packet(PesKind::Teletext, 0x130, AribField)), IsEmpty());
    EXPECT_THAT(decoder.Decode(PesPacket(PesKind::Caption, 0x130, nullptr, ByteView(AribField))), IsEmpty())
        << "without a PES header";
    EXPECT_EQ(decoder.Decode(CaptionData(PesKind::Caption, nullptr, ByteView(AribField))).size(), 1U);
}

TEST(CaptionDecoder, SixteenStreamsOfAKindAreDecoded)
{
    CaptionDecoder decoder;
    for (std::uint16_t pid = 0; pid < 1000; ++pid) {
        std::size_t const expected = pid < 16 ? 1 : 0;
        EXPECT_EQ(decoder.Decode(Packet(PesKind::Caption, pid, AribField)).size(), expected) << pid;
    }
    EXPECT_EQ(decoder.Decode(Packet(PesKind::Caption, 0, AribField)).size(), 1U);
}

/// The value, which is moved from.
template <class Value>
Value Take(Value& value)
{
    return std::move(value);
}

/// Moves a decoder. `isFound` decodes a caption and reports whether it was found.
template <class Decoder, class Use>
void CheckMove(Decoder& first, Use const& isFound)
{
    Decoder second(Take(first));
    EXPECT_FALSE(isFound(first)) << "after a move";
    EXPECT_TRUE(isFound(second));
    first = Take(second);
    EXPECT_FALSE(isFound(second)) << "after an assignment";
    EXPECT_TRUE(isFound(first));
    second = Decoder();
    EXPECT_TRUE(isFound(second)) << "assigned to";
}

TEST(CaptionDecoder, AMovedFromDecoderFindsNoCaptions)
{
    CaptionDecoder all;
    CheckMove(all, [](CaptionDecoder& decoder) {
        bool const hasStatement = !decoder.Decode(Packet(PesKind::Caption, 0x130, AribField)).empty();
        EXPECT_EQ(decoder.Decode(CaptionData(PesKind::Caption, nullptr, ByteView(AribField))).size(),
                  hasStatement ? 1 : 0);
        decoder.Decode(Packet(PesKind::Teletext, 0x100, TeletextField("one")));
        decoder.Flush();
        return hasStatement;
    });
    AribCaptionDecoder arib;
    CheckMove(arib, [](AribCaptionDecoder& decoder) {
        return decoder.Decode(ByteView(AribField), std::nullopt).has_value();
    });
    int number = 0; // a page whose text has not changed is not reported again
    TeletextDecoder teletext;
    CheckMove(teletext, [&number](TeletextDecoder& decoder) {
        decoder.Decode(ByteView(TeletextField("page " + std::to_string(++number))), std::nullopt);
        return !decoder.Flush().empty();
    });
}

TEST(CaptionDecoder, AMovedFromPacketStaysAsItWas)
{
    PesPacket packet = Packet(PesKind::Caption, 0x130, AribField, 9);
    Bytes const whole = packet.Data().Copy();
    auto moved = std::make_unique<PesPacket>(Take(packet));
    moved.reset();
    EXPECT_EQ(packet.Data().Copy(), whole); // under AddressSanitizer, the bytes are still there
    EXPECT_EQ(packet.Pts(), 9U);
    auto const bytes = std::make_shared<Bytes const>(AribField);
    CaptionData data(PesKind::Caption, bytes, ByteView(*bytes));
    auto movedData = std::make_unique<CaptionData>(Take(data));
    movedData.reset();
    EXPECT_EQ(data.Data().Copy(), AribField);
}

TEST(CaptionDecoder, ThreadsDecodeIndependently)
{
    auto const decode = [](std::string const& text) {
        for (int round = 0; round < 100; ++round) {
            CaptionDecoder decoder;
            decoder.Decode(Packet(PesKind::Teletext, 0x100, TeletextField(text)));
            auto const pages = decoder.Flush();
            auto const statements = decoder.Decode(Packet(PesKind::Caption, 0x130, AribField));
            if (pages.size() != 1 || pages[0].Text() != text || statements.size() != 1 ||
                statements[0].Text() != "あい") {
                return false;
            }
        }
        return true;
    };
    std::vector<char> isRight(4, 0);
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < isRight.size(); ++i) {
        threads.emplace_back([&, i] { isRight[i] = decode("thread " + std::to_string(i)) ? 1 : 0; });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_THAT(isRight, ElementsAre(1, 1, 1, 1));
}

} // namespace zviptv::test
