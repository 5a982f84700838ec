// SPDX-License-Identifier: MIT
#include <zviptv/MutexDBus.h>

#include <gtest/gtest.h>

#include <thread>
#include <type_traits>

namespace {

bool TryFromAnotherThread(CMutexDBus& mutex)
{
    bool acquired = false;
    std::thread([&] {
        acquired = mutex.TryLock();
        if (acquired) {
            mutex.Unlock();
        }
    }).join();
    return acquired;
}

TEST(MutexDBus, TryLockTakesAFreeMutexOnly)
{
    CMutexDBus mutex;
    EXPECT_TRUE(mutex.TryLock());
    EXPECT_FALSE(TryFromAnotherThread(mutex));
    mutex.Unlock();
    EXPECT_TRUE(TryFromAnotherThread(mutex));
}

TEST(MutexDBus, IsNotRecursive)
{
    CMutexDBus mutex;
    mutex.Lock();
    EXPECT_FALSE(mutex.TryLock());
    mutex.Unlock();
}

TEST(MutexDBus, LockKeepsOthersOut)
{
    CMutexDBus mutex;
    int count = 0;
    auto const work = [&] {
        for (int i = 0; i < 20000; ++i) {
            mutex.Lock();
            ++count;
            mutex.Unlock();
        }
    };
    std::thread other(work);
    work();
    other.join();
    EXPECT_EQ(count, 40000);
}

TEST(AutoLockDBus, HoldsTheMutexForItsScope)
{
    CMutexDBus mutex;
    {
        CAutoLockDBus const lock(mutex);
        EXPECT_FALSE(TryFromAnotherThread(mutex));
    }
    EXPECT_TRUE(TryFromAnotherThread(mutex));
}

TEST(AutoLockDBus, UnlocksWhenAnExceptionPasses)
{
    CMutexDBus mutex;
    try {
        CAutoLockDBus const lock(mutex);
        throw 1;
    } catch (int) {
    }
    EXPECT_TRUE(TryFromAnotherThread(mutex));
}

static_assert(!std::is_polymorphic_v<CMutexDBus>, "no virtual operations");
static_assert(!std::is_copy_constructible_v<CMutexDBus>);
static_assert(std::has_virtual_destructor_v<CAutoLockDBus>);
static_assert(!std::is_convertible_v<CMutexDBus&, CAutoLockDBus>);

} // namespace
