// SPDX-License-Identifier: MIT
#include <zviptv/MutexDBus.h>

CMutexDBus::CMutexDBus()
{
    pthread_mutex_init(&m_mutex, nullptr);
}

CMutexDBus::~CMutexDBus()
{
    pthread_mutex_destroy(&m_mutex);
}

void CMutexDBus::Lock()
{
    pthread_mutex_lock(&m_mutex);
}

void CMutexDBus::Unlock()
{
    pthread_mutex_unlock(&m_mutex);
}

bool CMutexDBus::TryLock()
{
    return pthread_mutex_trylock(&m_mutex) == 0;
}

CAutoLockDBus::CAutoLockDBus(CMutexDBus& mutex) : m_mutex(mutex)
{
    m_mutex.Lock();
}

CAutoLockDBus::~CAutoLockDBus()
{
    m_mutex.Unlock();
}
