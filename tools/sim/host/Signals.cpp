// SPDX-License-Identifier: MIT
#include "Signals.h"

#include <sys/signalfd.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <system_error>

namespace zviptv::sim {

namespace {

/// @throws std::system_error
FileHandle Checked(int descriptor, char const* failure)
{
    if (descriptor < 0) {
        throw std::system_error(errno, std::generic_category(), failure);
    }
    return FileHandle(descriptor);
}

FileHandle BlockAndCatch()
{
    sigset_t signals;
    sigemptyset(&signals);
    for (int const number : {SIGINT, SIGTERM, SIGHUP, SIGCHLD}) {
        sigaddset(&signals, number);
    }
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    return Checked(signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK), "cannot wait for signals");
}

/// The time for a timer of CLOCK_MONOTONIC, the clock of steady_clock; zero, which stops the timer, for
/// Never.
itimerspec Expiry(Signals::Clock::time_point deadline)
{
    using std::chrono::seconds;
    if (deadline == Signals::Never) {
        return {};
    }
    std::chrono::nanoseconds const time = deadline.time_since_epoch();
    auto const whole = std::chrono::duration_cast<seconds>(time);
    return {{}, {static_cast<time_t>(whole.count()), static_cast<long>((time - whole).count())}};
}

} // namespace

bool Signals::Signal::AsksToEnd() const
{
    return number == SIGINT || number == SIGTERM || number == SIGHUP;
}

Signals::Signals()
    : m_signals(BlockAndCatch()),
      m_timer(Checked(timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK), "cannot make a timer")),
      m_onSignal(LoopSource::OnInput(m_signals.Get(), [] {})),
      m_onTime(LoopSource::OnInput(m_timer.Get(), [] {}))
{
}

/// The sources stay attached: attaching a source wakes the context, so that the next iteration would not
/// wait.
Signals::Signal Signals::Next(Clock::time_point deadline) const
{
    itimerspec const expiry = Expiry(deadline);
    timerfd_settime(m_timer.Get(), TFD_TIMER_ABSTIME, &expiry, nullptr);
    g_main_context_iteration(nullptr, TRUE);
    signalfd_siginfo info = {};
    if (read(m_signals.Get(), &info, sizeof(info)) != static_cast<ssize_t>(sizeof(info))) {
        return Signal{};
    }
    return Signal{static_cast<int>(info.ssi_signo), info.ssi_code <= 0};
}

} // namespace zviptv::sim
