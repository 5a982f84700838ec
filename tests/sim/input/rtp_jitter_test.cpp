// SPDX-License-Identifier: MIT
#include "input/RtpJitter.h"

#include <gtest/gtest.h>

namespace zviptv::test {
namespace {

using sim::RtpJitter;

TEST(RtpJitter, IsZeroForPacketsOnTime)
{
    RtpJitter jitter;
    for (int i = 0; i < 100; ++i) {
        jitter.Add(1'000'000 + i * 10'000,
                   static_cast<std::uint32_t>(4294967000U + 900U * static_cast<unsigned>(i)));
    }
    EXPECT_EQ(jitter.Microseconds(), 0U);
}

/// J += (|D| - J) / 16, RFC 3550 A.8: 8 ms late, then on time: 8 ms early.
TEST(RtpJitter, FollowsTheFormulaOfTheStandard)
{
    RtpJitter jitter;
    jitter.Add(0, 0);
    jitter.Add(18'000, 900); // sent 10 ms apart, come 18 ms apart
    EXPECT_EQ(jitter.Microseconds(), 500U);
    jitter.Add(20'000, 1800);               // sent 10 ms apart, come 2 ms apart
    EXPECT_EQ(jitter.Microseconds(), 969U); // 500 + (8000 - 500) / 16
}

TEST(RtpJitter, ComparesNothingAcrossARestart)
{
    RtpJitter jitter;
    jitter.Add(0, 0);
    jitter.Restart();
    jitter.Add(5'000'000, 77);
    EXPECT_EQ(jitter.Microseconds(), 0U);
}

} // namespace
} // namespace zviptv::test
