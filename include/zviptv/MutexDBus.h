// SPDX-License-Identifier: MIT
/// @file
/// A mutex, and its holder for a scope.

#pragma once

#include <zviptv/Export.h>

#include <pthread.h>

/// A plain mutex of the process: not recursive, no error checking.
class ZVIPTV_API CMutexDBus
{
public:
    /// Makes a free mutex.
    CMutexDBus();

    /// Ends the mutex, which must be free.
    ~CMutexDBus();

    CMutexDBus(CMutexDBus const&) = delete;
    CMutexDBus& operator=(CMutexDBus const&) = delete;

    /// Blocks until the calling thread holds the mutex.
    void Lock();

    /// Releases the mutex, which the calling thread must hold.
    void Unlock();

    /// Takes the mutex if it is free, without waiting; returns whether the calling thread now holds it.
    bool TryLock();

private:
    pthread_mutex_t m_mutex;
};

/// Holds a CMutexDBus for a scope. The mutex must outlive the holder.
class ZVIPTV_API CAutoLockDBus
{
public:
    /// Blocks until the calling thread holds `mutex`.
    explicit CAutoLockDBus(CMutexDBus& mutex);

    /// Releases the mutex.
    virtual ~CAutoLockDBus();

    CAutoLockDBus(CAutoLockDBus const&) = delete;
    CAutoLockDBus& operator=(CAutoLockDBus const&) = delete;

private:
    CMutexDBus& m_mutex;
};
