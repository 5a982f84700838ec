// SPDX-License-Identifier: MIT
#include "Signals.h"

#include "glib/Owned.h"

#include <glib-unix.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <optional>
#include <system_error>

namespace zviptv::sim {

namespace {

int BlockAndCatch()
{
    sigset_t signals;
    sigemptyset(&signals);
    for (int const number : {SIGINT, SIGTERM, SIGHUP, SIGCHLD}) {
        sigaddset(&signals, number);
    }
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    int const descriptor = signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
    if (descriptor < 0) {
        throw std::system_error(errno, std::generic_category(), "cannot wait for signals");
    }
    return descriptor;
}

guint Timeout(Signals::Clock::time_point deadline)
{
    auto const left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Signals::Clock::now()).count();
    return static_cast<guint>(std::clamp<decltype(left)>(left, 0, INT_MAX));
}

gboolean OnInput(gint /*descriptor*/, GIOCondition /*condition*/, gpointer /*data*/)
{
    return G_SOURCE_CONTINUE;
}

gboolean OnTime(gpointer /*data*/)
{
    return G_SOURCE_CONTINUE;
}

/// Ends an iteration of the main context.
class Awaited
{
public:
    Awaited(GSource* source, GSourceFunc function) : m_source(source)
    {
        g_source_set_callback(source, function, nullptr, nullptr);
        g_source_attach(source, nullptr);
    }
    ~Awaited() { g_source_destroy(m_source.get()); }
    Awaited(Awaited const&) = delete;
    Awaited& operator=(Awaited const&) = delete;

private:
    Owned<GSource> m_source;
};

} // namespace

bool Signals::Signal::AsksToEnd() const
{
    return number == SIGINT || number == SIGTERM || number == SIGHUP;
}

Signals::Signals() : m_descriptor(BlockAndCatch()) {}

Signals::~Signals()
{
    close(m_descriptor);
}

Signals::Signal Signals::Next(Clock::time_point deadline) const
{
    Awaited const signal(g_unix_fd_source_new(m_descriptor, G_IO_IN), G_SOURCE_FUNC(OnInput));
    std::optional<Awaited> timer;
    if (deadline != Never) {
        timer.emplace(g_timeout_source_new(Timeout(deadline)), OnTime);
    }
    g_main_context_iteration(nullptr, TRUE);
    signalfd_siginfo info = {};
    if (read(m_descriptor, &info, sizeof(info)) != static_cast<ssize_t>(sizeof(info))) {
        return Signal{};
    }
    return Signal{static_cast<int>(info.ssi_signo), info.ssi_code <= 0};
}

} // namespace zviptv::sim
