// SPDX-License-Identifier: MIT
#pragma once

#include "dbus/UserData.h"
#include "glib/Owned.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>

namespace zviptv::client {

/// Makes a main context the default of the calling thread as long as it lives, unless another thread runs it.
class ContextScope
{
public:
    explicit ContextScope(GMainContext* context)
        : m_context(g_main_context_acquire(context) != FALSE ? context : nullptr)
    {
        if (m_context != nullptr) {
            g_main_context_push_thread_default(m_context);
        }
    }
    ~ContextScope()
    {
        if (m_context != nullptr) {
            g_main_context_pop_thread_default(m_context);
            g_main_context_release(m_context);
        }
    }
    ContextScope(ContextScope const&) = delete;
    ContextScope& operator=(ContextScope const&) = delete;

private:
    GMainContext* const m_context;
};

/// A source of a main context, which ends with its owner.
class Timer
{
public:
    Timer() = default;
    /// Runs `work` once on the thread that iterates `context`, after a time of 49 days at most.
    Timer(GMainContext* context, std::chrono::milliseconds after, std::function<void()> work)
        : m_source(g_timeout_source_new(static_cast<guint>(
              std::clamp<std::int64_t>(after.count(), 0, std::numeric_limits<guint>::max()))))
    {
        g_source_set_callback(
            m_source.get(), OnDue,
            UserData<Work>::New(std::make_shared<std::function<void()> const>(std::move(work))),
            UserData<Work>::Release);
        g_source_attach(m_source.get(), context);
    }
    Timer(Timer&& other) noexcept = default;
    Timer& operator=(Timer&& other) noexcept
    {
        std::swap(m_source, other.m_source);
        return *this;
    }
    ~Timer()
    {
        if (m_source != nullptr) {
            g_source_destroy(m_source.get());
        }
    }

private:
    using Work = std::shared_ptr<std::function<void()> const>;

    static gboolean OnDue(void* data)
    {
        Work const work = UserData<Work>::Get(data); // the timer may end meanwhile
        (*work)();
        return G_SOURCE_REMOVE;
    }

    Owned<GSource> m_source;
};

} // namespace zviptv::client
