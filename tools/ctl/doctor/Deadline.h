// SPDX-License-Identifier: MIT
#pragma once

#include "doctor/BusProbe.h"

#include <condition_variable>
#include <mutex>
#include <thread>

namespace zviptv::ctl::doctor {

/// Cancels what waits with Get() when the library would have given up.
class Deadline
{
public:
    Deadline() : m_cancellable(g_cancellable_new()), m_thread([this] { Wait(); }) {}

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
        if (!m_changed.wait_for(lock, std::chrono::milliseconds(PatienceMs), [this] { return m_isOver; })) {
            g_cancellable_cancel(m_cancellable.get());
        }
    }

    Owned<GCancellable> m_cancellable;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_isOver = false;
    std::thread m_thread; ///< last: it uses all of these
};

} // namespace zviptv::ctl::doctor
