// SPDX-License-Identifier: MIT
#include "guide/Rating.h"

#include <gtest/gtest.h>

namespace zviptv::sim {
namespace {

TEST(Rating, TakesTheAgeFromANumber)
{
    EXPECT_EQ(MinimumAge("12"), 12u);
    EXPECT_EQ(MinimumAge("0"), 0u);
    EXPECT_EQ(MinimumAge("16+"), 16u);
    EXPECT_EQ(MinimumAge("FSK 6"), 6u);
    EXPECT_EQ(MinimumAge("12A"), 12u);
    EXPECT_EQ(MinimumAge("PG-13"), 13u);
    EXPECT_EQ(MinimumAge("TV-Y7"), 7u);
    EXPECT_EQ(MinimumAge("TV-14"), 14u);
    EXPECT_EQ(MinimumAge("R18"), 18u);
}

TEST(Rating, TakesTheAgeFromAWord)
{
    EXPECT_EQ(MinimumAge("G"), 0u);
    EXPECT_EQ(MinimumAge("U"), 0u);
    EXPECT_EQ(MinimumAge("R"), 17u);
    EXPECT_EQ(MinimumAge("TV-MA"), 17u);
    EXPECT_EQ(MinimumAge("NC-17"), 18u);
}

TEST(Rating, OtherValuesNameNoAge)
{
    for (char const* value : {"", "PG", "TV-PG", "Not rated", "22", "120", "1984 classic", "x"}) {
        EXPECT_EQ(MinimumAge(value), std::nullopt) << value;
    }
}

} // namespace
} // namespace zviptv::sim
