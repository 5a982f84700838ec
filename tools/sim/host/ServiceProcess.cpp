// SPDX-License-Identifier: MIT
#include "ServiceProcess.h"

#include "ServiceRun.h"
#include "common/PrintableText.h"

#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>

namespace zviptv::sim {

namespace {

constexpr int Failure = 1; // the service has said why
constexpr int SignalStatus = 128;
constexpr char ReadyLine[] = "ready\n";
constexpr std::chrono::seconds LineTimeout{1}; // it is written at once
constexpr std::chrono::seconds StopTimeout{5};

} // namespace

void ServiceProcess::Start()
{
    m_state = State::Starting;
    m_readiness.emplace();
    m_process.emplace(Process::Fork([this] { return Serve(); }));
    m_readiness->CloseWriteEnd();
}

/// In the new process.
int ServiceProcess::Serve()
{
    try {
        RunService(m_options.service, [this] {
            ssize_t const written = write(m_readiness->WriteEnd(), ReadyLine, sizeof(ReadyLine) - 1);
            static_cast<void>(written);
        });
        return 0;
    } catch (std::exception const& failure) {
        std::fprintf(stderr, "zviptv-sim: %s\n", EscapeText(failure.what()).c_str());
        return Failure;
    }
}

void ServiceProcess::Advance()
{
    if (m_readiness && m_readiness->HasInput()) {
        HearReadiness();
    }
    bool const wasAlive = m_state == State::Starting || m_state == State::Running;
    if (std::optional<int> const status = m_process->Poll(); wasAlive && status) {
        NoteEnd(*status);
    }
    if (Clock::now() < m_nextAt) {
        return;
    }
    Next const next = m_next;
    Plan(Next::Nothing, {});
    if (next == Next::Die) {
        Die();
    } else if (next == Next::ComeBack) {
        std::fputs("zviptv-sim: the service comes back\n", stderr);
        Start();
    }
}

/// It is ready, or the pipe has ended because its process has.
void ServiceProcess::HearReadiness()
{
    bool const isReady = !m_readiness->ReadLine(LineTimeout).empty();
    m_readiness.reset();
    if (isReady) {
        m_state = State::Running;
        Plan(Next::Die, m_options.dieAfter);
    } else {
        m_process->Wait();
    }
}

void ServiceProcess::NoteEnd(int status)
{
    if (status > SignalStatus) {
        int const number = status - SignalStatus;
        std::fprintf(stderr, "zviptv-sim: the service was ended by signal %d (%s)\n", number,
                     strsignal(number));
    } else if (m_state == State::Running || status != Failure) {
        std::fprintf(stderr, "zviptv-sim: the service has ended with status %d\n", status);
    }
    m_state = State::Ended;
    m_ended = status;
    m_readiness.reset();
    Plan(Next::Nothing, {});
}

/// Nothing comes without a time.
void ServiceProcess::Plan(Next next, std::optional<double> seconds)
{
    m_next = seconds ? next : Next::Nothing;
    m_nextAt = seconds
                   ? Clock::now() +
                         std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(*seconds))
                   : Signals::Never;
}

void ServiceProcess::Die()
{
    std::fputs("zviptv-sim: the service dies\n", stderr);
    m_process->Signal(SIGKILL);
    m_process->Wait();
    m_state = State::Dead;
    Plan(Next::ComeBack, m_options.restartAfter);
}

void ServiceProcess::Stop()
{
    m_process->Signal(SIGTERM);
    sigset_t ended;
    sigemptyset(&ended);
    sigaddset(&ended, SIGCHLD);
    auto const deadline = Clock::now() + StopTimeout;
    while (!m_process->Poll() && Clock::now() < deadline) {
        timespec const pause{0, 100'000'000}; // in case the signal was for another child
        sigtimedwait(&ended, nullptr, &pause);
    }
    if (!m_process->Poll()) {
        std::fputs("zviptv-sim: the service does not end when it is told, and is killed\n", stderr);
    }
    m_process->Signal(SIGKILL);
    m_process->Wait();
}

} // namespace zviptv::sim
