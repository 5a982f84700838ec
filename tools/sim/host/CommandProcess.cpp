// SPDX-License-Identifier: MIT
#include "CommandProcess.h"

#include <csignal>
#include <cstdio>

namespace zviptv::sim {

namespace {

constexpr std::chrono::seconds OtherSignalAfter{1};
constexpr std::chrono::seconds KillAfter{4};

} // namespace

void CommandProcess::PassOn(Signals::Signal const& signal)
{
    if (signal.number == SIGINT) {
        if (signal.fromProcess) { // otherwise the terminal has sent it to the command, too
            m_process.Signal(SIGINT);
        }
        return;
    }
    m_process.Signal(signal.number);
    if (m_next == 0) {
        m_next = signal.number == SIGTERM ? SIGHUP : SIGTERM;
        m_nextAt = Clock::now() + OtherSignalAfter;
    }
}

void CommandProcess::Advance()
{
    if (Clock::now() < m_nextAt) {
        return;
    }
    if (m_next == SIGKILL) {
        std::fputs("zviptv-sim: the command did not end when asked to, and is killed\n", stderr);
    }
    m_process.Signal(m_next);
    m_nextAt = m_next == SIGKILL ? Signals::Never : Clock::now() + KillAfter;
    m_next = SIGKILL;
}

} // namespace zviptv::sim
