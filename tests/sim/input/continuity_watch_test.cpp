// SPDX-License-Identifier: MIT
#include "input/ContinuityWatch.h"

#include "StreamTestSupport.h"

#include <gtest/gtest.h>

namespace zviptv::test {
namespace {

class ContinuityWatchTest : public testing::Test
{
protected:
    void Push(std::uint16_t pid, int counter, Bytes payload = {1}, bool discontinuity = false)
    {
        PacketParts parts;
        parts.pid = pid;
        parts.counter = static_cast<std::uint8_t>(counter);
        parts.payload = std::move(payload);
        parts.discontinuity = discontinuity;
        m_watch.Push(ToTsBytes(MakePacket(parts)));
    }

    sim::ContinuityWatch m_watch;
};

TEST_F(ContinuityWatchTest, CountsEachPidSeparately)
{
    for (int i = 0; i < 40; ++i) {
        Push(0x100, i & 0x0F);
        Push(0x101, (i + 7) & 0x0F);
    }
    EXPECT_EQ(m_watch.Gaps(), 0U);
    Push(0x100, 9); // 8 is missing
    Push(0x101, 0xF);
    EXPECT_EQ(m_watch.Gaps(), 1U);
}

TEST_F(ContinuityWatchTest, RecognisesDuplicatesDiscontinuitiesAndUncountedPackets)
{
    Push(0x100, 3);
    Push(0x100, 3);            // a duplicate
    Push(0x100, 9, {1}, true); // announced
    Push(0x100, 9, {});        // without payload
    Push(0x100, 10);
    Push(0x1FFF, 1);
    Push(0x1FFF, 9);
    EXPECT_EQ(m_watch.Gaps(), 0U);
}

} // namespace
} // namespace zviptv::test
