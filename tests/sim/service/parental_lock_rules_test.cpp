// SPDX-License-Identifier: MIT
#include "playback/ParentalLock.h"

#include <gtest/gtest.h>

namespace zviptv::sim {
namespace {

TEST(ParentalLockRules, AnotherProgrammeOfTheServiceLeavesTheServiceUnlocked)
{
    ParentalLock lock(12, true);
    lock.Follow({1, 100, 18});
    lock.Unlock(ZV_PARENTAL_UNLOCKED_SERVICE);
    lock.Follow({1, 200, 16});
    EXPECT_FALSE(lock.IsServiceLocked());
    EXPECT_FALSE(lock.IsProgrammeLocked());
}

TEST(ParentalLockRules, AnotherServiceIsLockedAgain)
{
    ParentalLock lock(12, true);
    lock.Follow({1, 100, 18});
    lock.Unlock(ZV_PARENTAL_UNLOCKED_SERVICE);
    lock.Follow({2, 100, 18});
    EXPECT_TRUE(lock.IsServiceLocked());
    EXPECT_TRUE(lock.IsProgrammeLocked());
}

TEST(ParentalLockRules, AnotherServiceStaysUnlockedIfAllIs)
{
    ParentalLock lock(12, true);
    lock.Follow({1, 100, 18});
    lock.Unlock(ZV_PARENTAL_UNLOCKED_ALL);
    lock.Follow({2, 100, 18});
    EXPECT_FALSE(lock.IsServiceLocked());
    EXPECT_FALSE(lock.IsProgrammeLocked());
}

} // namespace
} // namespace zviptv::sim
