// SPDX-License-Identifier: MIT
#include "input/RtpWindow.h"

#include <gmock/gmock.h>

#include <numeric>

namespace zviptv::test {
namespace {

using sim::RtpWindow;
using testing::ElementsAre;

/// A window into which packets go that carry a number each.
class RtpWindowTest : public testing::Test
{
protected:
    bool Push(int sequence, int mark, std::uint32_t source = 1)
    {
        std::vector<std::uint8_t> const payload{static_cast<std::uint8_t>(mark >> 8),
                                                static_cast<std::uint8_t>(mark)};
        return m_window.Push({static_cast<std::uint16_t>(sequence), 0, source, payload});
    }

    bool Push(int sequence) { return Push(sequence, sequence & 0xFFFF); }

    RtpWindow m_window{[this](ByteView payload) { m_out.push_back(payload.U16(0)); }};
    std::vector<int> m_out;
};

TEST_F(RtpWindowTest, PassesPacketsInOrderAtOnce)
{
    EXPECT_TRUE(Push(7));
    EXPECT_THAT(m_out, ElementsAre(7));
    EXPECT_FALSE(Push(8));
    EXPECT_FALSE(Push(9));
    EXPECT_THAT(m_out, ElementsAre(7, 8, 9));
    EXPECT_EQ(m_window.Count().lost + m_window.Count().duplicated + m_window.Count().reordered, 0U);
}

TEST_F(RtpWindowTest, SortsLatePackets)
{
    for (int const sequence : {10, 13, 12, 11, 14}) {
        Push(sequence);
    }
    EXPECT_THAT(m_out, ElementsAre(10, 11, 12, 13, 14));
    EXPECT_EQ(m_window.Count().reordered, 2U);
    EXPECT_EQ(m_window.Count().lost, 0U);
}

TEST_F(RtpWindowTest, SkipsAMissingPacketAfter32Others)
{
    Push(100);
    for (int sequence = 103; sequence <= 132; ++sequence) { // 101 and 102 are missing
        Push(sequence);
    }
    EXPECT_THAT(m_out, ElementsAre(100));
    Push(133);
    EXPECT_EQ(m_out.size(), 32U);
    EXPECT_EQ(m_out.at(1), 103);
    EXPECT_EQ(m_out.back(), 133);
    EXPECT_EQ(m_window.Count().lost, 2U);
    EXPECT_EQ(m_window.Count().reordered, 0U);
}

TEST_F(RtpWindowTest, CountsAPacketThatIsTooLateOnlyAsLost)
{
    Push(0);
    for (int sequence = 2; sequence <= 40; ++sequence) {
        Push(sequence);
    }
    Push(1);
    EXPECT_EQ(m_out.size(), 40U);
    EXPECT_EQ(m_window.Count().lost, 1U);
    EXPECT_EQ(m_window.Count().duplicated, 0U);
    EXPECT_EQ(m_window.Count().reordered, 0U);
}

TEST_F(RtpWindowTest, CountsDuplicatesDeliveredOrHeld)
{
    for (int const sequence : {5, 5, 6, 8, 8, 5, 7}) {
        Push(sequence);
    }
    EXPECT_THAT(m_out, ElementsAre(5, 6, 7, 8));
    EXPECT_EQ(m_window.Count().duplicated, 3U);
    EXPECT_EQ(m_window.Count().reordered, 1U);
}

TEST_F(RtpWindowTest, FollowsNumbersAroundTheWrap)
{
    for (int const sequence : {65533, 65535, 65534, 1, 0, 1, 2}) {
        Push(sequence);
    }
    EXPECT_THAT(m_out, ElementsAre(65533, 65534, 65535, 0, 1, 2));
    EXPECT_EQ(m_window.Count().reordered, 2U);
    EXPECT_EQ(m_window.Count().duplicated, 1U);
    EXPECT_EQ(m_window.Count().lost, 0U);
}

TEST_F(RtpWindowTest, LosesNothingOverManyWraps)
{
    for (int sequence = 0; sequence < 3 * 65536; ++sequence) {
        Push(sequence);
    }
    EXPECT_EQ(m_out.size(), 3U * 65536);
    EXPECT_EQ(m_window.Count().lost, 0U);
}

TEST_F(RtpWindowTest, CountsALongGap)
{
    Push(1);
    Push(2001);
    EXPECT_THAT(m_out, ElementsAre(1, 2001));
    EXPECT_EQ(m_window.Count().lost, 1999U);
}

TEST_F(RtpWindowTest, RestartsWithAnotherSource)
{
    Push(10);
    Push(12); // held
    EXPECT_TRUE(Push(500, 500, 2));
    EXPECT_THAT(m_out, ElementsAre(10, 12, 500));
    EXPECT_EQ(m_window.Count().lost, 1U);
}

TEST_F(RtpWindowTest, AcceptsAJumpThatTheNextPacketConfirms)
{
    Push(10);
    EXPECT_FALSE(Push(30000));
    EXPECT_FALSE(Push(11));
    EXPECT_FALSE(Push(30001)); // not right after it
    EXPECT_THAT(m_out, ElementsAre(10, 11));
    EXPECT_TRUE(Push(30002));
    EXPECT_THAT(m_out, ElementsAre(10, 11, 30002));
    EXPECT_FALSE(Push(30003));
    EXPECT_THAT(m_out, ElementsAre(10, 11, 30002, 30003));
    EXPECT_EQ(m_window.Count().lost, 0U);
}

} // namespace
} // namespace zviptv::test
