// SPDX-License-Identifier: MIT
#include "SpawnThread.h"

#include <unistd.h>

#include <condition_variable>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <thread>

namespace zviptv::test {

namespace {

/// The parent-death signal comes when the *thread* that forked ends, so one thread that lives as long
/// as the process does all the forking.
class Spawner
{
public:
    Spawner() : m_owner(getpid()), m_thread([this] { Loop(); }) {}

    ~Spawner()
    {
        if (getpid() != m_owner) {
            // A forked copy of the test process, in which the thread does not exist.
            m_thread.detach();
            return;
        }
        {
            std::lock_guard const lock(m_mutex);
            m_stopping = true;
        }
        m_changed.notify_all();
        m_thread.join();
    }

    SpawnOutcome Spawn(SpawnRequest const& request)
    {
        if (getpid() != m_owner) {
            return TrySpawn(request);
        }
        auto const task =
            std::make_shared<std::packaged_task<SpawnOutcome()>>([&] { return TrySpawn(request); });
        auto result = task->get_future();
        {
            std::lock_guard const lock(m_mutex);
            m_tasks.emplace_back([task] { (*task)(); });
        }
        m_changed.notify_all();
        return result.get();
    }

private:
    void Loop()
    {
        std::unique_lock lock(m_mutex);
        while (true) {
            m_changed.wait(lock, [this] { return m_stopping || !m_tasks.empty(); });
            if (m_tasks.empty()) {
                return;
            }
            auto const task = std::move(m_tasks.back());
            m_tasks.pop_back();
            lock.unlock();
            task();
            lock.lock();
        }
    }

    pid_t m_owner;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<std::function<void()>> m_tasks;
    bool m_stopping = false;
    std::thread m_thread;
};

} // namespace

pid_t SpawnFromAnyThread(SpawnRequest const& request)
{
    static Spawner spawner;
    // Plain data and no exception: it comes from another thread, and the hidden reference count of an
    // exception in transit is nothing that ThreadSanitizer can follow.
    SpawnOutcome const outcome = spawner.Spawn(request);
    return outcome.Pid(request.command.front());
}

} // namespace zviptv::test
