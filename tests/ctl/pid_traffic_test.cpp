// SPDX-License-Identifier: MIT
#include "output/PidTraffic.h"

#include <gmock/gmock.h>

using zviptv::ctl::PidTraffic;

namespace {

/// Also of those that come late in the window: one window for all.
TEST(PidTrafficTest, SumsTheRates)
{
    PidTraffic::Clock::time_point const start = PidTraffic::Clock::now() - std::chrono::seconds(100);
    PidTraffic traffic(start);
    traffic.Add(0x100, 6000);
    traffic.Add(0x101, 2000);
    traffic.Measure(start + std::chrono::seconds(2));
    EXPECT_EQ(traffic.Text(),
              "2 packets, 8000 bytes, 4.0 kB/s; 0x0100: 1 packet, 3.0 kB/s; 0x0101: 1 packet, 1.0 kB/s");
    traffic.Add(0x100, 1000);
    traffic.Add(0x102, 500);
    traffic.Measure(start + std::chrono::seconds(3));
    EXPECT_EQ(traffic.Total(), "4 packets, 1.5 kB/s");
    EXPECT_THAT(traffic.Rates(), testing::ElementsAre(": 0x0100 1.0", ", 0x0101 0.0", ", 0x0102 0.5"));
}

} // namespace
