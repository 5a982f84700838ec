// SPDX-License-Identifier: MIT
#include "StreamTestSupport.h"

#include <gtest/gtest.h>

using namespace zviptv;
using namespace zviptv::sim;
using namespace zviptv::test;

namespace {

std::optional<TsPacket> Parse(TsBytes const& bytes)
{
    return ParseTsPacket(bytes);
}

/// A packet of these bytes and zeros.
TsBytes WithHead(Bytes const& head)
{
    TsBytes bytes{};
    std::copy(head.begin(), head.end(), bytes.begin());
    return bytes;
}

} // namespace

TEST(TsPacket, ReadsTheHeader)
{
    TsBytes bytes{};
    bytes[0] = 0x47;
    bytes[1] = 0x5A; // unit start, upper bits of the PID 0x1A
    bytes[2] = 0xBC;
    bytes[3] = 0x17; // payload only, counter 7
    bytes[4] = 0xEE;
    auto const packet = Parse(bytes);
    ASSERT_TRUE(packet);
    EXPECT_EQ(packet->pid, 0x1ABC);
    EXPECT_EQ(packet->continuity, 7);
    EXPECT_TRUE(packet->unitStart);
    EXPECT_TRUE(packet->hasPayload);
    EXPECT_FALSE(packet->transportError);
    EXPECT_FALSE(packet->scrambled);
    EXPECT_FALSE(packet->pcr);
    EXPECT_EQ(packet->payload.Size(), 184u);
    EXPECT_EQ(packet->payload[0], 0xEE);
}

TEST(TsPacket, SkipsTheAdaptationField)
{
    auto const bytes = ToTsBytes(MakePacket({0x100, 3, false, {1, 2, 3}, false, true, true, {}}));
    auto const packet = Parse(bytes);
    ASSERT_TRUE(packet);
    EXPECT_TRUE(packet->discontinuity);
    EXPECT_TRUE(packet->scrambled);
    EXPECT_EQ(packet->payload.Copy(), (Bytes{1, 2, 3}));
}

TEST(TsPacket, ReadsThePcr)
{
    // Base 0x1'2345'6789, extension 0x123: spelled out bit by bit.
    TsBytes const bytes = WithHead({0x47, 0x01, 0x00, 0x20, 183, 0x10, 0x91, 0xA2, 0xB3, 0xC4, 0xFF, 0x23});
    auto const packet = Parse(bytes);
    ASSERT_TRUE(packet);
    EXPECT_EQ(packet->pcr, 0x123456789ull * 300 + 0x123);
    EXPECT_FALSE(packet->hasPayload);
    EXPECT_TRUE(packet->payload.Empty());
}

TEST(TsPacket, IgnoresAPcrWithAnImpossibleExtension)
{
    TsBytes const bytes =
        WithHead({0x47, 0x01, 0x00, 0x20, 183, 0x10, 0x91, 0xA2, 0xB3, 0xC4, 0x7F, 0x2C}); // 300
    auto const packet = Parse(bytes);
    ASSERT_TRUE(packet);
    EXPECT_FALSE(packet->pcr);
}

TEST(TsPacket, IgnoresAPcrThatDoesNotFitItsField)
{
    TsBytes const bytes = WithHead({0x47, 0x01, 0x00, 0x30, 6, 0x10, 1, 2, 3, 4, 5, 6});
    auto const packet = Parse(bytes);
    ASSERT_TRUE(packet);
    EXPECT_FALSE(packet->pcr);
}

TEST(TsPacket, RefusesInconsistentHeaders)
{
    TsBytes bytes{};
    bytes[0] = 0x46;
    bytes[3] = 0x10;
    EXPECT_FALSE(Parse(bytes)) << "no sync byte";
    bytes[0] = 0x47;
    bytes[3] = 0x00;
    EXPECT_FALSE(Parse(bytes)) << "neither field nor payload";
    bytes[3] = 0x30;
    bytes[4] = 183;
    EXPECT_FALSE(Parse(bytes)) << "no room for the payload";
    bytes[4] = 182;
    EXPECT_TRUE(Parse(bytes));
    bytes[3] = 0x20;
    bytes[4] = 184;
    EXPECT_FALSE(Parse(bytes)) << "field longer than the packet";
    bytes[4] = 183;
    EXPECT_TRUE(Parse(bytes));
}

TEST(TsPacket, IgnoresADamagedPacket)
{
    auto const bytes = ToTsBytes(MakePacket({0x100, 0, true, {1}, true, false, false, 5}));
    auto const packet = Parse(bytes);
    ASSERT_TRUE(packet);
    EXPECT_TRUE(packet->transportError);
    EXPECT_FALSE(packet->pcr);
    EXPECT_FALSE(packet->hasPayload);
}
