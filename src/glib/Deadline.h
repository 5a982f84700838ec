// SPDX-License-Identifier: MIT
#pragma once

#include "Owned.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace zviptv {

/// Cancels operations that use Get() after a given time. Its thread ends with the object.
class Deadline
{
public:
    explicit Deadline(std::chrono::milliseconds limit)
        : m_limit(limit), m_cancellable(g_cancellable_new()), m_thread([this] { Wait(); })
    {
    }

    ~Deadline()
    {
        {
            std::lock_guard<std::mutex> const lock(m_mutex);
            m_isOver = true;
        }
        m_changed.notify_one();
        m_thread.join();
    }

    Deadline(Deadline const&) = delete;
    Deadline& operator=(Deadline const&) = delete;

    GCancellable* Get() const { return m_cancellable.get(); }

private:
    void Wait()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        if (!m_changed.wait_for(lock, m_limit, [this] { return m_isOver; })) {
            g_cancellable_cancel(m_cancellable.get());
        }
    }

    std::chrono::milliseconds const m_limit;
    Owned<GCancellable> const m_cancellable;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_isOver = false;
    std::thread m_thread; ///< declared last: it uses all other members
};

} // namespace zviptv
