// SPDX-License-Identifier: MIT
#pragma once

#include "Options.h"
#include "Signals.h"
#include "process/Pipe.h"
#include "process/Process.h"

#include <optional>

namespace zviptv::sim {

/// The service in a process of its own, which dies and comes back as the options say.
class ServiceProcess
{
public:
    using Clock = Signals::Clock;

    explicit ServiceProcess(Options const& options) : m_options(options) {}

    /// Begins to start it, and returns at once.
    void Start();

    /// Not ready yet, and not ended either.
    bool IsStarting() const { return m_state == State::Starting; }

    /// Exit status of a service that has ended by itself.
    std::optional<int> Ended() const { return m_ended; }

    pid_t Pid() const { return m_process->Pid(); }

    /// Advance() is due when this pipe has something to read or has ended (-1: none), at Change(), and after
    /// each SIGCHLD.
    int ReadinessEnd() const { return m_readiness ? m_readiness->ReadEnd() : -1; }
    Clock::time_point Change() const { return m_nextAt; }

    /// Sees what has become of the service, and lets it die or come back when it is time.
    void Advance();

    /// Asks it to end, and kills it when it does not.
    void Stop();

private:
    enum class State
    {
        Starting,
        Running,
        Dead, ///< as the options say
        Ended ///< by itself
    };

    /// What comes at m_nextAt.
    enum class Next
    {
        Nothing,
        Die,
        ComeBack
    };

    int Serve();
    void HearReadiness();
    void NoteEnd(int status);
    void Plan(Next next, std::optional<double> seconds);
    void Die();

    Options const& m_options;
    std::optional<Pipe> m_readiness; ///< while it starts
    std::optional<Process> m_process;
    State m_state = State::Starting;
    std::optional<int> m_ended;
    Next m_next = Next::Nothing;
    Clock::time_point m_nextAt = Signals::Never;
};

} // namespace zviptv::sim
