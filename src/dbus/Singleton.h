// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace zviptv {

/// The only instance of its kind in a process: absent, being made, present, or being ended.
/// The first thread that asks makes or ends the instance, with no lock held. Threads that ask for the same
/// meanwhile wait for that attempt and share its outcome. Threads that ask for the opposite wait for the next
/// attempt, which is also shared. Therefore no thread waits for more than two attempts, whatever the number
/// of threads, and the next instance is made only after the former one has ended.
template <typename Instance>
class Singleton
{
public:
    using Pointer = std::shared_ptr<Instance>;

    /// The instance; null if there is none, or if its end has begun.
    Pointer Current() const
    {
        std::lock_guard<std::mutex> const lock(m_mutex);
        return m_instance;
    }

    /// Returns the instance. If there is none, it becomes the result of `make`, which may be null.
    template <typename Make>
    Pointer GetOrMake(Make make)
    {
        return GetOrMake(
            make, [](Instance const&) { return false; }, [](Instance&) {});
    }

    /// Like the function above, but an instance for which `isOutdated` returns true is first ended with `end`
    /// and then replaced.
    template <typename Make, typename IsOutdated, typename EndInstance>
    Pointer GetOrMake(Make make, IsOutdated isOutdated, EndInstance end)
    {
        Pointer outdated = Current();
        if (outdated != nullptr && !isOutdated(*outdated)) {
            outdated = nullptr;
        }
        std::unique_lock<std::mutex> lock(m_mutex);
        return Reach(
            lock, Goal::Present,
            [&make, &end](Pointer const& present) {
                if (present != nullptr) {
                    end(*present);
                }
                return make();
            },
            outdated);
    }

    /// Runs `end` on the instance, if there is one, and releases it. Returns it and all instances that were
    /// ended or replaced earlier and that are still referenced: their callbacks may still run on other
    /// threads. `last` becomes the instance that this call ended, or whose end it shared; null if there was
    /// none.
    template <typename EndInstance>
    std::vector<Pointer> End(EndInstance end, Pointer& last)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        last = End(lock, end);
        if (!lock.owns_lock()) {
            lock.lock();
        }
        std::vector<Pointer> held;
        for (std::weak_ptr<Instance> const& ended : m_ended) {
            if (Pointer instance = ended.lock()) {
                held.push_back(std::move(instance));
            }
        }
        return held;
    }

    template <typename EndInstance>
    std::vector<Pointer> End(EndInstance end)
    {
        Pointer last;
        return End(end, last);
    }

    /// Like End(), but only if `isMeant` accepts the instance, which it returns. Waits for an instance that
    /// is being made.
    template <typename EndInstance, typename IsMeant>
    Pointer EndIf(EndInstance end, IsMeant isMeant)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        if (std::shared_ptr<Attempt> const running = m_running) {
            m_changed.wait(lock, [&running] { return running->isDone; });
        }
        return m_instance != nullptr && isMeant(*m_instance) ? End(lock, end) : nullptr;
    }

private:
    enum class Goal
    {
        Present,
        Absent
    };

    struct Attempt
    {
        explicit Attempt(Goal sought) : goal(sought) {}

        Goal const goal;
        bool isDone = false;
        Pointer outcome;
    };

    template <typename EndInstance>
    Pointer End(std::unique_lock<std::mutex>& lock, EndInstance end)
    {
        return Reach(lock, Goal::Absent, [&end](Pointer const& present) {
            if (present != nullptr) {
                end(*present);
            }
            return present;
        });
    }

    template <typename Work>
    Pointer Reach(std::unique_lock<std::mutex>& lock, Goal goal, Work work, Pointer const& outdated = nullptr)
    {
        bool const isPresent = m_instance != nullptr && m_instance != outdated;
        if (m_running == nullptr && isPresent == (goal == Goal::Present)) {
            return goal == Goal::Present ? m_instance : nullptr;
        }
        std::shared_ptr<Attempt>& place =
            m_running == nullptr || m_running->goal == goal ? m_running : m_next;
        if (place != nullptr) {
            std::shared_ptr<Attempt> const joined = place;
            m_changed.wait(lock, [&joined] { return joined->isDone; });
            return joined->outcome;
        }
        auto const own = std::make_shared<Attempt>(goal);
        place = own;
        m_changed.wait(lock, [this, &own] { return m_running == own; });
        Pointer const present = std::move(m_instance);
        m_instance = nullptr;
        NoteEnd(present);
        lock.unlock();
        Finish const finish{*this, *own}; // even if `work` throws
        own->outcome = work(present);
        return own->outcome;
    }

    void NoteEnd(Pointer const& instance)
    {
        m_ended.erase(std::remove_if(m_ended.begin(), m_ended.end(),
                                     [](std::weak_ptr<Instance> const& ended) { return ended.expired(); }),
                      m_ended.end());
        if (instance != nullptr) {
            m_ended.push_back(instance);
        }
    }

    /// Publishes the outcome of an attempt, and lets the next one run.
    struct Finish
    {
        ~Finish()
        {
            std::lock_guard<std::mutex> const lock(singleton.m_mutex);
            if (attempt.goal == Goal::Present) {
                singleton.m_instance = attempt.outcome;
            }
            attempt.isDone = true;
            singleton.m_running = std::exchange(singleton.m_next, nullptr);
            singleton.m_changed.notify_all();
        }

        Singleton& singleton;
        Attempt& attempt;
    };

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    Pointer m_instance;
    std::vector<std::weak_ptr<Instance>> m_ended;
    std::shared_ptr<Attempt> m_running;
    std::shared_ptr<Attempt> m_next;
};

} // namespace zviptv
