#include "MainLoop.h"

#include <glib-unix.h>

#include <csignal>
#include <utility>

namespace zviptv::sim {

namespace {

gboolean CallOnce(gpointer work)
{
    (*static_cast<std::function<void()>*>(work))();
    return G_SOURCE_REMOVE;
}

void Delete(gpointer work)
{
    delete static_cast<std::function<void()>*>(work);
}

} // namespace

class MainLoop::Impl
{
public:
    Impl()
        : m_loop(g_main_loop_new(nullptr, FALSE), g_main_loop_unref),
          m_interrupt(g_unix_signal_add(SIGINT, OnInterrupt, this)),
          m_terminate(g_unix_signal_add(SIGTERM, OnTerminate, this))
    {
    }

    ~Impl()
    {
        g_source_remove(m_interrupt);
        g_source_remove(m_terminate);
    }

    int Run()
    {
        g_main_loop_run(m_loop.get());
        return m_signal;
    }

    void End(int signal)
    {
        m_signal = signal;
        g_main_loop_quit(m_loop.get());
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

    std::unique_ptr<GMainLoop, void (*)(GMainLoop*)> m_loop;
    int m_signal = 0;
    guint m_interrupt;
    guint m_terminate;
};

MainLoop::MainLoop() : m_impl(std::make_unique<Impl>()) {}

MainLoop::~MainLoop() = default;

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
    g_timeout_add_full(G_PRIORITY_DEFAULT, static_cast<guint>(delay.count()), CallOnce,
                       new std::function<void()>(std::move(work)), Delete);
}

} // namespace zviptv::sim
