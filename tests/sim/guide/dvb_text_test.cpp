#include "EitBuilder.h"
#include "TestSupport.h"
#include "guide/DvbText.h"

#include <gtest/gtest.h>

namespace zviptv::test {
namespace {

using sim::DecodeDvbText;

std::string Decode(std::string const& text)
{
    return DecodeDvbText(FromText(text));
}

TEST(DvbText, DefaultTableIsIso6937)
{
    EXPECT_EQ(Decode("Plain text"), "Plain text");
    EXPECT_EQ(Decode("K\xC8oln"), "Köln");
    EXPECT_EQ(Decode("\xC2\x65t\xC2\x65"), "été");
    EXPECT_EQ(Decode("\xFB\xE1"), "ßÆ");
}

TEST(DvbText, OtherTables)
{
    EXPECT_EQ(Decode("\x01\xBC\xD8\xE0"), "Мир");
    EXPECT_EQ(Decode("\x03\xC1\xE2"), "Αβ");
    EXPECT_EQ(Decode("\x05\xFDlk"), "ılk");
    EXPECT_EQ(Decode("\x0B\xA4"), "€");
    EXPECT_EQ(Decode(std::string("\x10\x00\x01K\xF6ln", 7)), "Köln");
    EXPECT_EQ(Decode(std::string("\x10\x00\x02\xA3", 4)), "Ł");
    EXPECT_EQ(Decode(std::string("\x11\x00K\x00\xF6\x30\x42", 7)), "Köあ");
    EXPECT_EQ(Decode("\x12\xB0\xA1"), "가");
    EXPECT_EQ(Decode("\x13\xD6\xD0"), "中");
    EXPECT_EQ(Decode(std::string("\x14\x4E\x2D", 3)), "中");
    EXPECT_EQ(Decode("\x15"
                     "K\xC3\xB6ln"),
              "Köln");
}

TEST(DvbText, LineBreaksAreBlanksAndEmphasisIsDropped)
{
    EXPECT_EQ(Decode("One\x8ATwo \x86three\x87"), "One Two three");
}

TEST(DvbText, WhatCannotBeReadIsMarked)
{
    EXPECT_EQ(Decode("A\xC0"
                     "B"),
              "A?B");
    EXPECT_EQ(Decode("\x1F\x01 AB"), " AB");
    EXPECT_EQ(Decode(std::string("\x10\x00\x63 AB", 6)), " AB");
    EXPECT_EQ(Decode(""), "");
    EXPECT_EQ(Decode("\x01"), "");
    EXPECT_EQ(Decode("\x15\xC3"), "?");
}

TEST(DvbText, AnyBytesGiveUtf8)
{
    for (unsigned seed = 1; seed < 20000; ++seed) {
        Bytes bytes = Noise(1 + seed % 40, seed);
        bytes[0] = static_cast<std::uint8_t>(seed % 0x30);
        ASSERT_TRUE(IsUtf8(DecodeDvbText(bytes))) << seed;
    }
}

} // namespace
} // namespace zviptv::test
