// SPDX-License-Identifier: MIT
#include "Signals.h"

#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
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

/// As poll() has it.
int Timeout(Signals::Clock::time_point deadline)
{
    if (deadline == Signals::Never) {
        return -1;
    }
    auto const left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Signals::Clock::now()).count();
    return static_cast<int>(std::clamp<decltype(left)>(left, 0, INT_MAX));
}

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

Signals::Signal Signals::Next(int readEnd, Clock::time_point deadline) const
{
    std::array<pollfd, 2> waited{pollfd{m_descriptor, POLLIN, 0}, pollfd{readEnd, POLLIN, 0}};
    poll(waited.data(), waited.size(), Timeout(deadline));
    signalfd_siginfo info = {};
    if (read(m_descriptor, &info, sizeof(info)) != static_cast<ssize_t>(sizeof(info))) {
        return Signal{};
    }
    return Signal{static_cast<int>(info.ssi_signo), info.ssi_code <= 0};
}

} // namespace zviptv::sim
