// SPDX-License-Identifier: MIT
#pragma once

#include "Options.h"
#include "ServiceLink.h"
#include "Signals.h"
#include "UnrecordedRequests.h"
#include "WaitingCalls.h"
#include "process/FileHandle.h"
#include "process/Process.h"

#include <algorithm>
#include <memory>
#include <optional>

namespace zviptv::sim {

/// The service in a separate process, which dies and comes back as the options and the control interface
/// say.
class ServiceProcess
{
public:
    using Clock = Signals::Clock;

    /// What it tells.
    struct Listener
    {
        ServiceLink::Signal onSignal;               ///< of the control interface, to be passed on
        std::function<void(bool isFailure)> onDied; ///< a failure: it has ended by itself
        std::function<void()> onReady;              ///< applications find it; the first time, or again
        std::function<void()> onKeptChange;         ///< Kept() has changed
        std::function<void()> onLate;               ///< it has not become ready for AnswerLimit
    };

    ServiceProcess(Options const& options, Listener listener);

    /// Begins to start it, and returns at once. @throws std::system_error
    void Start();

    /// Not ready yet, and not ended either.
    bool IsStarting() const { return m_state == State::Starting; }
    bool IsRunning() const { return m_state == State::Running; }
    bool IsAlive() const { return IsStarting() || IsRunning(); }

    /// Applications have found it, or one before it.
    bool WasReady() const { return m_wasReady; }

    /// It is dead, and does not come back by itself.
    bool IsGone() const { return !IsAlive() && m_next != Next::ComeBack; }

    /// Exit status of a service that has ended by itself.
    std::optional<int> Ended() const { return m_ended; }

    /// Of a replay, in all lives of the service.
    UnrecordedRequests const& Unrecorded() const { return m_unrecorded; }

    /// Of the present process, or the last one; 0 before the first.
    pid_t Pid() const { return m_process ? m_process->Pid() : 0; }

    /// What the service wanted to be kept for the next one; null before there is any.
    GVariant* Kept() const { return m_kept.get(); }

    /// Calls a method of the service. While it starts, or is dead and will come back, the call waits, and is
    /// worked off before applications find the service; the limit begins then. A service that is not
    /// connected AnswerLimit after its start has not answered in time. A dead one answers with the error
    /// NotRunning.
    void Call(ServiceLink::Request request);

    /// Drops the calls of this caller that still wait.
    void Forget(std::string const& caller) { m_waiting.Forget(caller); }

    /// Has what is played written to a pipe, see link::Watch. A service that is not connected answers with an
    /// error.
    void Watch(std::string const& what, FileHandle const& pipe, ServiceLink::Reply const& reply);

    /// Kills it. It comes back after `seconds`, or as the options say. False when it is dead.
    bool Die(std::optional<double> seconds);

    /// Kills it if it lives, and starts it. @throws std::system_error
    void Restart();

    /// Starts a dead service in the start state, and refuses the calls that wait. @throws std::system_error
    void StartFresh();

    /// Advance() is due at Change(), and after each SIGCHLD.
    Clock::time_point Change() const { return IsStarting() ? std::min(m_nextAt, m_lateAt) : m_nextAt; }

    /// Sees what has become of the service, and lets it die or come back when it is time.
    void Advance();

    /// Asks it to end, and kills it when it does not. Its exit status.
    int Stop();

private:
    enum class State
    {
        Starting,
        Running,
        Dead, ///< as was asked for
        Ended ///< by itself
    };

    /// What comes at m_nextAt.
    enum class Next
    {
        Nothing,
        Die,
        ComeBack
    };

    void Begin();
    void OnSignal(std::string const& interface, std::string const& name, GVariant* body);
    void NoteReady();
    void NoteEnd(int status);
    void NoteDeath(std::optional<double> comeBackAfter);
    bool CountsAsDeath(int status) const;
    void Kill();
    void ComeBack(bool isAsked);
    void RefuseWaiting(char const* why);
    Owned<GVariant> ForNext() const;
    void Plan(Next next, std::optional<double> seconds);

    Options const& m_options;
    Listener m_listener;
    std::optional<Process> m_process;
    std::unique_ptr<ServiceLink> m_link; ///< while it lives
    WaitingCalls m_waiting;
    Owned<GVariant> m_kept;
    UnrecordedRequests m_unrecorded;
    State m_state = State::Starting;
    bool m_wasReady = false; ///< it, or one before it
    bool m_isAsked = false;  ///< somebody waits for it to be ready, and can call again
    std::optional<int> m_ended;
    std::optional<double> m_recordedReturn; ///< seconds until it comes back from the death that is next
    Next m_next = Next::Nothing;
    Clock::time_point m_nextAt = Signals::Never;
    Clock::time_point m_lateAt = Signals::Never; ///< a service that starts has not answered in time
};

} // namespace zviptv::sim
