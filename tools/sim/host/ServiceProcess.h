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
/// request.
class ServiceProcess
{
public:
    using Clock = Signals::Clock;

    /// Callbacks for events of the service.
    struct Listener
    {
        ServiceLink::Signal onSignal;               ///< signals of the control interface to pass on
        std::function<void(bool isFailure)> onDied; ///< `isFailure` if it has ended by itself
        std::function<void()> onReady;              ///< applications can find it, for the first time or again
        std::function<void()> onKeptChange;         ///< Kept() has changed
        std::function<void()> onLate;               ///< it was not ready within AnswerLimit
        std::function<void(GVariant* body)> onCaptions; ///< the service has emitted link::Captions
    };

    ServiceProcess(Options const& options, Listener listener);

    /// Starts the service, and returns at once. @throws std::system_error
    void Start();

    /// Whether it is not ready yet, and has not ended.
    bool IsStarting() const { return m_state == State::Starting; }
    bool IsRunning() const { return m_state == State::Running; }
    bool IsAlive() const { return IsStarting() || IsRunning(); }

    /// Whether applications could find it, or a previous service.
    bool WasReady() const { return m_wasReady; }

    /// Whether it is dead and will not come back by itself.
    bool IsGone() const { return !IsAlive() && m_next != Next::Return; }

    /// Exit status of a service that has ended by itself.
    std::optional<int> Ended() const { return m_ended; }

    /// Requests of a replay that were not recorded, in all lives of the service.
    UnrecordedRequests const& Unrecorded() const { return m_unrecorded; }

    /// The id of the present process, or the last one; 0 before the first.
    pid_t Pid() const { return m_process ? m_process->Pid() : 0; }

    /// The state that the service has sent for the next one; null if there is none.
    GVariant* Kept() const { return m_kept.get(); }

    /// Calls a method of the service. If the service is starting, or is dead and will come back, the call
    /// waits, and is made before applications find the service; the time limit begins then. If the service is
    /// not connected AnswerLimit after its start, it has not answered in time. If it is dead, the error is
    /// NotRunning.
    void Call(ServiceLink::Request request);

    /// Drops the waiting calls of this caller.
    void Forget(std::string const& caller) { m_waiting.Forget(caller); }

    /// Makes the service write the stream to a pipe; see link::Watch. If the service is not connected, the
    /// answer is an error.
    void Watch(std::string const& what, FileHandle const& pipe, ServiceLink::Reply const& reply);

    /// Kills it. It comes back after `seconds`, or after the time of the options. Returns false if it is
    /// dead.
    bool Die(std::optional<double> seconds);

    /// Kills it if it runs, and starts it. @throws std::system_error
    void Restart();

    /// Starts a dead service in the initial state, and refuses the waiting calls. @throws std::system_error
    void StartFresh();

    /// Advance() is due at Change(), and after each SIGCHLD.
    Clock::time_point Change() const { return IsStarting() ? std::min(m_nextAt, m_lateAt) : m_nextAt; }

    /// Checks the state of the service, and lets it die or come back when it is time.
    void Advance();

    /// Requests its end, and kills it if it does not end. Returns its exit status.
    int Stop();

private:
    enum class State
    {
        Starting,
        Running,
        Dead, ///< killed on request
        Ended ///< ended by itself
    };

    /// The event at m_nextAt.
    enum class Next
    {
        Nothing,
        Die,
        Return
    };

    void Begin();
    void OnSignal(std::string const& interface, std::string const& name, GVariant* body);
    void NoteReady();
    void NoteEnd(int status);
    void NoteDeath(std::optional<double> returnAfter);
    bool CountsAsDeath(int status) const;
    void Kill();
    void Return(bool isAsked);
    void RefuseWaiting(char const* why);
    Owned<GVariant> ForNext() const;
    void Plan(Next next, std::optional<double> seconds);

    Options const& m_options;
    Listener m_listener;
    std::optional<Process> m_process;
    std::unique_ptr<ServiceLink> m_link; ///< while it runs
    WaitingCalls m_waiting;
    Owned<GVariant> m_kept;
    UnrecordedRequests m_unrecorded;
    State m_state = State::Starting;
    bool m_wasReady = false; ///< it, or a previous one, was ready
    bool m_isAsked = false;  ///< a caller waits until it is ready, and can call again
    std::optional<int> m_ended;
    std::optional<double> m_recordedReturn; ///< seconds until it comes back from the next death
    Next m_next = Next::Nothing;
    Clock::time_point m_nextAt = Signals::Never;
    Clock::time_point m_lateAt = Signals::Never; ///< time at which a starting service counts as late
};

} // namespace zviptv::sim
