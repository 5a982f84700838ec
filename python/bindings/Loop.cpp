// SPDX-License-Identifier: MIT
#include "Loop.h"

#include <pybind11/pybind11.h>

#include <atomic>
#include <condition_variable>
#include <csignal>
#include <future>
#include <mutex>
#include <pthread.h>
#include <stdexcept>

namespace zviptv::python {

namespace {

std::atomic<bool> g_isForkedChild{false};
Loop* g_loop = nullptr; // with the GIL
bool g_hasEnded = false;
std::mutex g_mutex;
std::condition_variable g_unused;
unsigned g_uses = 0;

/// Called with the GIL.
void AwaitUnused()
{
    pybind11::gil_scoped_release const release;
    std::unique_lock lock(g_mutex);
    g_unused.wait(lock, [] { return g_uses == 0; });
}

/// Blocks all signals for threads that are started meanwhile: Python's handlers then run on Python's threads.
class SignalsBlocked
{
public:
    SignalsBlocked()
    {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &m_former);
    }
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &m_former, nullptr); }
    SignalsBlocked(SignalsBlocked const&) = delete;
    SignalsBlocked& operator=(SignalsBlocked const&) = delete;

private:
    sigset_t m_former{};
};

} // namespace

bool IsForkedChild()
{
    return g_isForkedChild;
}

bool IsSubinterpreter()
{
    return PyInterpreterState_Get() != PyInterpreterState_Main();
}

void CheckNotForked()
{
    if (IsForkedChild()) {
        throw std::runtime_error(
            "zviptv cannot be used in a process that was forked after a Television was created; "
            "start the process with subprocess, or with multiprocessing's method 'spawn'");
    }
}

Loop& Loop::Instance()
{
    CheckNotForked();
    if (IsSubinterpreter()) {
        throw std::runtime_error(
            "a Television cannot be created in a subinterpreter; create it in the main one");
    }
    if (g_hasEnded) {
        throw std::runtime_error("a Television cannot be created while the interpreter ends");
    }
    if (g_loop == nullptr) {
        pthread_atfork(nullptr, nullptr, [] { g_isForkedChild = true; });
        g_loop = new Loop;
    }
    return *g_loop;
}

Loop::Loop()
{
    SignalsBlocked const blocked;
    m_thread = std::thread([this] {
        pthread_setname_np(pthread_self(), "zviptv");
        g_main_context_push_thread_default(m_context.get());
        while (!m_isEnding) {
            g_main_context_iteration(m_context.get(), TRUE);
        }
        g_main_context_pop_thread_default(m_context.get());
    });
}

void Loop::Post(std::function<void()> work)
{
    using Work = std::function<void()>;
    Owned<GSource> const source(g_idle_source_new());
    g_source_set_priority(source.get(), G_PRIORITY_DEFAULT);
    g_source_set_callback(
        source.get(),
        [](void* data) -> gboolean {
            (*static_cast<Work*>(data))();
            return G_SOURCE_REMOVE;
        },
        new Work(std::move(work)), [](void* data) { delete static_cast<Work*>(data); });
    g_source_attach(source.get(), m_context.get());
}

void Loop::Run(std::function<void()> const& work)
{
    std::promise<void> done;
    Post([&work, &done] {
        work();
        done.set_value();
    });
    done.get_future().wait();
}

Loop::Use::Use()
{
    std::lock_guard const lock(g_mutex);
    ++g_uses;
}

Loop::Use::~Use()
{
    std::lock_guard const lock(g_mutex);
    --g_uses;
    g_unused.notify_all();
}

void Loop::End(std::function<void()> const& closeAll)
{
    if (IsSubinterpreter()) {
        return; // it has no televisions
    }
    g_hasEnded = true;
    if (g_loop == nullptr || IsForkedChild()) {
        return;
    }
    AwaitUnused();
    closeAll();
    AwaitUnused();
    pybind11::gil_scoped_release const release;
    g_loop->Post([] { g_loop->m_isEnding = true; });
    g_loop->m_thread.join();
    delete g_loop;
    g_loop = nullptr;
}

} // namespace zviptv::python
