// SPDX-License-Identifier: MIT
#include "input/RtpPacket.h"

#include "RtpBytes.h"

#include <gtest/gtest.h>

namespace zviptv::test {
namespace {

using sim::ParseRtpPacket;

Bytes const Payload{0x47, 1, 2, 3, 4};

TEST(RtpPacket, ReturnsItsHeader)
{
    Bytes const datagram{0x80, 0x21, 0x12, 0x34, 1, 2, 3, 4, 0xA, 0xB, 0xC, 0xD, 0x47};
    auto const packet = ParseRtpPacket(datagram);
    ASSERT_TRUE(packet);
    EXPECT_EQ(packet->sequence, 0x1234);
    EXPECT_EQ(packet->timestamp, 0x01020304U);
    EXPECT_EQ(packet->source, 0x0A0B0C0DU);
    EXPECT_EQ(packet->payload.Copy(), Bytes{0x47});
}

TEST(RtpPacket, RemovesContributorsExtensionAndPadding)
{
    for (bool const hasContributors : {false, true}) {
        for (bool const hasExtension : {false, true}) {
            for (int const padding : {0, 1, 4, 255}) {
                RtpParts parts;
                parts.payload = Payload;
                parts.padding = static_cast<std::uint8_t>(padding);
                if (hasContributors) {
                    parts.contributors = {1, 2, 0x47474747};
                }
                if (hasExtension) {
                    parts.extension = Bytes(8, 0x47);
                }
                Bytes const datagram = MakeRtp(parts);
                auto const packet = ParseRtpPacket(datagram);
                ASSERT_TRUE(packet) << padding;
                EXPECT_EQ(packet->payload.Copy(), Payload) << padding;
            }
        }
    }
}

TEST(RtpPacket, MayHaveAnEmptyExtensionAndPayload)
{
    RtpParts parts;
    parts.extension = Bytes();
    Bytes const datagram = MakeRtp(parts);
    auto const packet = ParseRtpPacket(datagram);
    ASSERT_TRUE(packet);
    EXPECT_TRUE(packet->payload.Empty());
}

TEST(RtpPacket, RefusesIncompletePackets)
{
    RtpParts parts;
    parts.contributors = {1, 2};
    parts.extension = Bytes(8, 0);
    Bytes const whole = MakeRtp(parts);
    for (std::size_t size = 0; size < whole.size(); ++size) {
        Bytes const part(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_FALSE(ParseRtpPacket(part)) << size;
    }
    EXPECT_TRUE(ParseRtpPacket(whole));
}

TEST(RtpPacket, RefusesOtherVersionsAndPaddingThatDoesNotFit)
{
    RtpParts parts;
    parts.payload = Payload;
    for (int const version : {0, 1, 3}) {
        Bytes datagram = MakeRtp(parts);
        datagram[0] = static_cast<std::uint8_t>((datagram[0] & 0x3F) | version << 6);
        EXPECT_FALSE(ParseRtpPacket(datagram)) << version;
    }
    for (int const padding : {0, 6, 255}) { // the payload has five bytes
        Bytes datagram = MakeRtp(parts);
        datagram[0] |= 0x20;
        datagram.back() = static_cast<std::uint8_t>(padding);
        EXPECT_FALSE(ParseRtpPacket(datagram)) << padding;
    }
}

} // namespace
} // namespace zviptv::test
