// SPDX-License-Identifier: MIT
#include "LoopRunner.h"

#include <atomic>
#include <future>

namespace zviptv::test {

namespace {

struct SourceEnd
{
    void operator()(GSource* source) const
    {
        g_source_destroy(source);
        g_source_unref(source);
    }
};
using SourcePtr = std::unique_ptr<GSource, SourceEnd>;

gboolean KeepGoing(gpointer /*data*/)
{
    return G_SOURCE_CONTINUE;
}

} // namespace

bool RunUntil(std::function<bool()> const& condition, std::chrono::milliseconds timeout)
{
    GMainContext* const context = g_main_context_get_thread_default();
    SourcePtr const ticker(g_timeout_source_new(2));
    g_source_set_callback(ticker.get(), KeepGoing, nullptr, nullptr);
    g_source_attach(ticker.get(), context);
    auto const deadline = std::chrono::steady_clock::now() + timeout;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        g_main_context_iteration(context, TRUE);
    }
    return true;
}

void RunPending()
{
    while (g_main_context_iteration(g_main_context_get_thread_default(), FALSE) != FALSE) {
    }
}

LoopThread::LoopThread()
{
    std::promise<void> running;
    m_thread = std::thread([this] { g_main_loop_run(m_loop.get()); });
    Run([&running] { running.set_value(); });
    running.get_future().wait();
}

LoopThread::~LoopThread()
{
    Run([this] { g_main_loop_quit(m_loop.get()); });
    m_thread.join();
}

void LoopThread::Run(std::function<void()> const& work)
{
    std::packaged_task<void()> task(work);
    std::future<void> done = task.get_future();
    // Atomic for tools that do not see how GLib hands it to the other thread.
    std::atomic<std::packaged_task<void()>*> handed;
    handed = &task;
    SourcePtr const source(g_idle_source_new());
    g_source_set_priority(source.get(), G_PRIORITY_DEFAULT);
    g_source_set_callback(
        source.get(),
        [](gpointer data) -> gboolean {
            auto* const ready = static_cast<std::atomic<std::packaged_task<void()>*>*>(data)->load();
            (*ready)();
            return G_SOURCE_REMOVE;
        },
        &handed, nullptr);
    g_source_attach(source.get(), nullptr);
    done.get();
}

} // namespace zviptv::test
