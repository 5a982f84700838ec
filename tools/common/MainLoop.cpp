#include "common/MainLoop.h"

#include "glib/Owned.h"

#include <glib-unix.h>

#include <csignal>
#include <exception>
#include <mutex>
#include <set>
#include <utility>
#include <vector>

namespace zviptv {

class MainLoop::Impl
{
public:
    ~Impl()
    {
        for (guint const source : m_signalSources) {
            g_source_remove(source);
        }
        for (guint const source : m_workSources) {
            g_source_remove(source);
        }
    }

    void CatchSignals()
    {
        if (m_signalSources.empty()) {
            m_signalSources = {g_unix_signal_add(SIGINT, OnInterrupt, this),
                               g_unix_signal_add(SIGTERM, OnTerminate, this)};
        }
    }

    int Run()
    {
        if (!m_failure) {
            g_main_loop_run(m_loop.get());
        }
        if (m_failure) {
            std::rethrow_exception(std::exchange(m_failure, nullptr));
        }
        return m_signal;
    }

    void Add(std::chrono::milliseconds delay, std::unique_ptr<Work> work);

    void End(int signal)
    {
        m_signal = signal;
        g_main_loop_quit(m_loop.get());
    }

    /// An exception must not get into GLib: it waits for the end of Run().
    void Call(guint source, std::function<void()> const& work) noexcept
    {
        {
            std::lock_guard<std::mutex> const lock(m_mutex);
            m_workSources.erase(source);
        }
        try {
            work();
        } catch (...) {
            if (!m_failure) {
                m_failure = std::current_exception();
            }
            g_main_loop_quit(m_loop.get());
        }
    }

private:
    static gboolean OnInterrupt(gpointer self)
    {
        static_cast<Impl*>(self)->End(SIGINT);
        return G_SOURCE_CONTINUE;
    }

    static gboolean OnTerminate(gpointer self)
    {
        static_cast<Impl*>(self)->End(SIGTERM);
        return G_SOURCE_CONTINUE;
    }

    Owned<GMainLoop> m_loop{g_main_loop_new(nullptr, FALSE)};
    int m_signal = 0;
    std::vector<guint> m_signalSources;
    std::mutex m_mutex; ///< of the next one: work comes from any thread
    std::set<guint> m_workSources;
    std::exception_ptr m_failure;
};

/// Something to do later.
struct MainLoop::Work
{
    Impl& loop;
    std::function<void()> function;

    static gboolean CallOnce(gpointer self)
    {
        auto const* const work = static_cast<Work*>(self);
        work->loop.Call(g_source_get_id(g_main_current_source()), work->function);
        return G_SOURCE_REMOVE;
    }

    static void Delete(gpointer self) { delete static_cast<Work*>(self); }
};

void MainLoop::Impl::Add(std::chrono::milliseconds delay, std::unique_ptr<Work> work)
{
    std::lock_guard<std::mutex> const lock(m_mutex); // it may be due before its number is known
    m_workSources.insert(g_timeout_add_full(G_PRIORITY_DEFAULT, static_cast<guint>(delay.count()),
                                            Work::CallOnce, work.release(), Work::Delete));
}

MainLoop::MainLoop() : m_impl(std::make_unique<Impl>()) {}

MainLoop::~MainLoop() = default;

void MainLoop::CatchSignals()
{
    m_impl->CatchSignals();
}

int MainLoop::Run()
{
    return m_impl->Run();
}

void MainLoop::Quit()
{
    m_impl->End(0);
}

void MainLoop::After(std::chrono::milliseconds delay, std::function<void()> work)
{
    m_impl->Add(delay, std::make_unique<Work>(Work{*m_impl, std::move(work)}));
}

} // namespace zviptv
