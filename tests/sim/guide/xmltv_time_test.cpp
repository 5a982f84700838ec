// SPDX-License-Identifier: MIT
#include "guide/XmltvTime.h"

#include <algorithm>
#include <ctime>
#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace zviptv::sim {
namespace {

constexpr std::int64_t Day = 86400;

struct Spelling
{
    char const* text;
    std::int64_t time;
};

class XmltvTimeValid : public testing::TestWithParam<Spelling>
{
};

TEST_P(XmltvTimeValid, IsRead)
{
    EXPECT_EQ(ParseXmltvTime(GetParam().text), GetParam().time) << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(Lengths, XmltvTimeValid,
                         testing::Values(Spelling{"19700101000000", 0}, Spelling{"197001010001", 60},
                                         Spelling{"1970010101", 3600}, Spelling{"19700102", Day},
                                         Spelling{"197002", 31 * Day}, Spelling{"1971", 365 * Day},
                                         Spelling{"20260329013000", 1774747800}));

INSTANTIATE_TEST_SUITE_P(
    Zones, XmltvTimeValid,
    testing::Values(Spelling{"19700101010000 +0100", 0}, Spelling{"19691231190000 -0500", 0},
                    Spelling{"19700101053000 +05:30", 0}, Spelling{"19700101020000 +02", 0},
                    Spelling{"19700101010000+0100", 0}, Spelling{"19700101000000 UTC", 0},
                    Spelling{"19700101000000 gmt", 0}, Spelling{"19700101000000Z", 0},
                    Spelling{"19700101010000 CET", 0}, Spelling{"19700101020000 CEST", 0},
                    Spelling{"200007281733 BST", 964801980}, Spelling{"19691231190000 EST", 0},
                    Spelling{"19691231170000 PDT", 0}, Spelling{"  19700101000000 \t+0000\n", 0}));

// The clock jumps, as the offsets show: one hour of local time is missing or occurs twice.
INSTANTIATE_TEST_SUITE_P(SummerTime, XmltvTimeValid,
                         testing::Values(Spelling{"20260329015959 +0100", 1774745999},
                                         Spelling{"20260329030000 +0200", 1774746000},
                                         Spelling{"20261025025959 +0200", 1792889999},
                                         Spelling{"20261025020000 +0100", 1792890000}));

INSTANTIATE_TEST_SUITE_P(LeapDays, XmltvTimeValid,
                         testing::Values(Spelling{"20240229", 1709164800}, Spelling{"20000229", 951782400},
                                         Spelling{"20240301", 1709251200}));

class XmltvTimeInvalid : public testing::TestWithParam<char const*>
{
};

TEST_P(XmltvTimeInvalid, IsRejected)
{
    EXPECT_EQ(ParseXmltvTime(GetParam()), std::nullopt) << GetParam();
}

INSTANTIATE_TEST_SUITE_P(Dates, XmltvTimeInvalid,
                         testing::Values("", " ", "2026022", "20260229", "21000229", "20260431", "20261301",
                                         "20260001", "20260100", "20260132", "0000", "2026010124",
                                         "202601012360", "20260101235960", "202601012359590", "abcd", "-2026",
                                         "2026-01-01", "20260101T100000", "202601011"));

INSTANTIATE_TEST_SUITE_P(Zones, XmltvTimeInvalid,
                         testing::Values("20260101 XYZ", "20260101 +", "20260101 +1", "20260101 +100",
                                         "20260101 +1500", "20260101 +0160", "20260101 +01000",
                                         "20260101 +01:0", "20260101 +01:000", "20260101 + 0100",
                                         "20260101 CET CET", "20260101 +0100x", "20260101 +01:00:00",
                                         "20260101 0100", "20260101 +0100:"));

TEST(XmltvTime, EveryDayOfFourCenturiesFollowsTheOneBefore)
{
    std::int64_t expected = 0;
    for (int year = 1970; year < 2370; ++year) {
        for (int month = 1; month <= 12; ++month) {
            for (int day = 1; day <= 31; ++day) {
                char text[16];
                std::snprintf(text, sizeof text, "%04u%02u%02u", static_cast<unsigned>(year) % 10000u,
                              static_cast<unsigned>(month) % 100u, static_cast<unsigned>(day) % 100u);
                auto const time = ParseXmltvTime(text);
                if (!time) {
                    continue;
                }
                ASSERT_EQ(*time, expected) << text;
                expected += Day;
            }
        }
    }
    EXPECT_EQ(expected, 146097 * Day);
}

TEST(XmltvTime, AgreesWithTheSystemsCalendar)
{
    std::mt19937 random(1);
    // With 32 bits, the calendar ends in 2038.
    constexpr std::int64_t end = std::min<std::int64_t>(0xFFFFFFFF, std::numeric_limits<std::time_t>::max());
    std::uniform_int_distribution<std::time_t> any(0, static_cast<std::time_t>(end));
    for (int i = 0; i < 10000; ++i) {
        std::time_t const time = any(random);
        std::tm parts{};
        gmtime_r(&time, &parts);
        char text[32];
        std::strftime(text, sizeof text, "%Y%m%d%H%M%S +0000", &parts);
        ASSERT_EQ(ParseXmltvTime(text), time) << text;
    }
}

} // namespace
} // namespace zviptv::sim
