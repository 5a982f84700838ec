#pragma once

#include "dbus/CallbackGate.h"

#include <pthread.h>

#include <memory>

namespace zviptv {

class ReadLock
{
public:
    explicit ReadLock(pthread_rwlock_t& lock) : m_lock(lock) { pthread_rwlock_rdlock(&m_lock); }
    ~ReadLock() { pthread_rwlock_unlock(&m_lock); }
    ReadLock(ReadLock const&) = delete;
    ReadLock& operator=(ReadLock const&) = delete;

private:
    pthread_rwlock_t& m_lock;
};

class WriteLock
{
public:
    explicit WriteLock(pthread_rwlock_t& lock) : m_lock(lock) { pthread_rwlock_wrlock(&m_lock); }
    ~WriteLock() { pthread_rwlock_unlock(&m_lock); }
    WriteLock(WriteLock const&) = delete;
    WriteLock& operator=(WriteLock const&) = delete;

private:
    pthread_rwlock_t& m_lock;
};

/// The instance behind `lock`; where there is none, what `create` stores and returns under the write lock.
template <typename T, typename Create>
T* GetOrCreateInstance(pthread_rwlock_t& lock, T*& instance, Create create)
{
    {
        ReadLock const reading(lock);
        if (instance != nullptr) {
            return instance;
        }
    }
    WriteLock const writing(lock);
    if (instance == nullptr) {
        create();
    }
    return instance;
}

/// Deletes the instance under the write lock.
///
/// A callback of the instance that runs on another thread is waited for with the lock released: it may itself
/// be about to create or destroy.
template <typename T, typename GateOf, typename Delete = std::default_delete<T>>
void DestroyInstance(pthread_rwlock_t& lock, T*& instance, GateOf gateOf, Delete destroy = {})
{
    CallbackGate::Pointer refused;
    for (;;) {
        {
            WriteLock const writing(lock);
            if (instance == nullptr) {
                return;
            }
            CallbackGate::Pointer const gate = gateOf(*instance);
            if (refused != nullptr && gate != refused) {
                return; // what was to be destroyed is gone; this one came after
            }
            gate->Refuse();
            if (!gate->IsBusyElsewhere()) {
                destroy(instance);
                instance = nullptr;
                return;
            }
            refused = gate;
        }
        refused->WaitForOthers();
    }
}

} // namespace zviptv
