// SPDX-License-Identifier: MIT
#include "ServiceProcess.h"

#include "ControlErrors.h"
#include "ServiceRun.h"
#include "control/Link.h"
#include "process/FileHandle.h"
#include "process/Spawn.h"

#include <sys/socket.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <system_error>
#include <utility>

namespace zviptv::sim {

namespace {

constexpr int SignalStatus = 128;
constexpr std::chrono::seconds StopTimeout{5};
constexpr char Gone[] =
    "the service is dead and does not come back by itself; 'zviptvctl sim restart' starts it";

/// A service that hangs sends no picture.
constexpr std::chrono::seconds WatchLimit{5};

} // namespace

ServiceProcess::ServiceProcess(Options const& options, Listener listener)
    : m_options(options), m_listener(std::move(listener))
{
}

/// The program is executed again, because a fork of this process, which has other threads, could do little.
void ServiceProcess::Start()
{
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
        throw std::system_error(errno, std::generic_category(), "cannot make a socket for the service");
    }
    FileHandle const theirs(ends[1]);
    m_link = std::make_unique<ServiceLink>(
        ends[0], [this] { Begin(); },
        [this](std::string const& interface, std::string const& name, GVariant* body) {
            OnSignal(interface, name, body);
        });
    SpawnRequest request;
    request.command = m_options.words;
    request.command.front() = m_kept ? ReturningName : ServiceName;
    request.program = "/proc/self/exe";
    request.descriptors = {{theirs.Get(), link::Descriptor},
                           {m_unrecorded.File(), link::UnrecordedDescriptor}};
    request.ownGroup = true;
    m_process.emplace(Spawn(request));
    m_state = State::Starting;
    m_ended.reset();
    m_lateAt = Clock::now() + AnswerLimit;
    Plan(Next::Nothing, {});
}

/// Call it when the service is connected and waits for its state.
void ServiceProcess::Begin()
{
    auto const ignore = [](GVariant*, GError const*) {};
    if (Owned<GVariant> const kept = ForNext()) {
        Owned<GVariant> parameters(g_variant_ref_sink(g_variant_new("(@a{sv})", kept.get())));
        m_link->Call(
            {link::Interface, link::Restore, std::move(parameters), ServiceLink::NoLimit, {}, ignore});
    }
    for (ServiceLink::Request& request : m_waiting.Take()) {
        m_link->Call(std::move(request));
    }
    m_link->Call({link::Interface, link::Begin, nullptr, ServiceLink::NoLimit, {}, ignore});
}

/// The kept state; without the clock, if the clock must restart.
Owned<GVariant> ServiceProcess::ForNext() const
{
    if (!m_kept) {
        return nullptr;
    }
    GVariantDict entries;
    g_variant_dict_init(&entries, m_kept.get());
    if (m_options.restartFromStart) {
        for (char const* const key : {"clock", "begin"}) {
            g_variant_dict_remove(&entries, key);
        }
    }
    return Owned<GVariant>(g_variant_ref_sink(g_variant_dict_end(&entries)));
}

void ServiceProcess::OnSignal(std::string const& interface, std::string const& name, GVariant* body)
{
    if (interface != link::Interface) {
        m_listener.onSignal(interface, name, body);
    } else if (name == link::Kept) {
        m_kept.reset(g_variant_get_child_value(body, 0));
        m_listener.onKeptChange();
    } else if (name == link::Captions) {
        m_listener.onCaptions(body);
    } else if (name == link::Ready) {
        NoteReady();
    } else if (name == link::Dies) {
        double seconds = 0;
        g_variant_get(body, "(d)", &seconds);
        m_recordedReturn = seconds < 0 ? std::nullopt : std::optional(seconds);
        Plan(Next::Die, 0);
    }
}

void ServiceProcess::Call(ServiceLink::Request request)
{
    if (m_link && m_link->IsConnected()) {
        m_link->Call(std::move(request));
        return;
    }
    m_waiting.Add(std::move(request));
    if (IsGone()) {
        RefuseWaiting(Gone);
    }
}

void ServiceProcess::Watch(std::string const& what, FileHandle const& pipe, ServiceLink::Reply const& reply)
{
    Error error;
    if (!m_link || !m_link->IsConnected()) {
        error.Set(G_IO_ERROR_NOT_CONNECTED, "the service is not connected");
        reply(nullptr, error.Get());
        return;
    }
    Owned<GUnixFDList> descriptors(g_unix_fd_list_new());
    int const index = g_unix_fd_list_append(descriptors.get(), pipe.Get(), error.Out());
    if (error) {
        reply(nullptr, error.Get());
        return;
    }
    Owned<GVariant> arguments(g_variant_ref_sink(g_variant_new("(sh)", what.c_str(), index)));
    m_link->Call(
        {link::Interface, link::Watch, std::move(arguments), WatchLimit, {}, reply, std::move(descriptors)});
}

/// Answers the waiting calls with an error.
void ServiceProcess::RefuseWaiting(char const* why)
{
    m_waiting.Refuse(G_IO_ERROR_NOT_CONNECTED, why);
}

void ServiceProcess::Advance()
{
    if (std::optional<int> const status = IsAlive() ? m_process->Poll() : std::nullopt) {
        CountsAsDeath(*status) ? NoteDeath(m_options.restartAfter) : NoteEnd(*status);
    }
    if (IsStarting() && Clock::now() >= m_lateAt) {
        m_lateAt = Clock::now() + AnswerLimit;
        m_waiting.Refuse(G_IO_ERROR_TIMED_OUT, "the service is late");
        m_listener.onLate();
    }
    if (Clock::now() < m_nextAt) {
        return;
    }
    Next const next = std::exchange(m_next, Next::Nothing);
    Plan(Next::Nothing, {});
    if (next == Next::Die) {
        Die(std::exchange(m_recordedReturn, {}));
    } else if (next == Next::Return) {
        Return(false);
    }
}

void ServiceProcess::NoteReady()
{
    m_state = State::Running;
    m_wasReady = true;
    Plan(Next::Die, m_options.dieAfter);
    m_listener.onReady();
}

/// Whether another process has killed the service or requested its end, and it must come back. A crash does
/// not count, so that it is noticed.
bool ServiceProcess::CountsAsDeath(int status) const
{
    bool const wasKilled = status == 0 || status == SignalStatus + SIGKILL ||
                           status == SignalStatus + SIGTERM || status == SignalStatus + SIGINT ||
                           status == SignalStatus + SIGHUP;
    return wasKilled && m_wasReady && m_options.restartAfter;
}

void ServiceProcess::NoteEnd(int status)
{
    if (status > SignalStatus) {
        int const number = status - SignalStatus;
        std::fprintf(stderr, "zviptv-sim: the service was ended by signal %d (%s)\n", number,
                     strsignal(number));
    } else if (IsRunning() || status != EXIT_FAILURE) { // otherwise the service has printed the reason
        std::fprintf(stderr, "zviptv-sim: the service has ended with status %d\n", status);
    }
    bool const mayTryAgain = m_isAsked && IsStarting() && status == EXIT_FAILURE;
    m_state = mayTryAgain ? State::Dead : State::Ended;
    m_ended = mayTryAgain ? std::nullopt : std::optional(status);
    m_link.reset();
    Plan(Next::Nothing, {});
    RefuseWaiting(Gone);
    m_listener.onDied(true);
}

void ServiceProcess::NoteDeath(std::optional<double> returnAfter)
{
    std::fputs("zviptv-sim: the service dies\n", stderr);
    m_link.reset();
    m_state = State::Dead;
    Plan(Next::Return, returnAfter);
    if (!returnAfter) {
        RefuseWaiting(Gone);
    }
    m_listener.onDied(false);
}

/// Without a time, nothing is planned.
void ServiceProcess::Plan(Next next, std::optional<double> seconds)
{
    m_next = seconds ? next : Next::Nothing;
    m_nextAt = seconds
                   ? Clock::now() +
                         std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(*seconds))
                   : Signals::Never;
}

void ServiceProcess::Kill()
{
    m_process->Signal(SIGKILL);
    m_process->Wait();
}

bool ServiceProcess::Die(std::optional<double> seconds)
{
    if (!IsAlive()) {
        return false;
    }
    Kill();
    NoteDeath(seconds ? seconds : m_options.restartAfter);
    return true;
}

void ServiceProcess::Restart()
{
    Die(0); // waiting calls continue to wait
    Return(true);
}

void ServiceProcess::StartFresh()
{
    RefuseWaiting("'reset' was called before the service was back; call again");
    m_kept.reset();
    Return(true);
}

/// If a call requested the start and it fails, the caller can try again.
void ServiceProcess::Return(bool isAsked)
{
    std::fputs("zviptv-sim: the service comes back\n", stderr);
    Start();
    m_isAsked = isAsked && m_wasReady;
}

int ServiceProcess::Stop()
{
    m_process->Signal(SIGTERM);
    sigset_t ended;
    sigemptyset(&ended);
    sigaddset(&ended, SIGCHLD);
    auto const deadline = Clock::now() + StopTimeout;
    while (!m_process->Poll() && Clock::now() < deadline) {
        timespec const pause{0, 100'000'000}; // in case the signal came from another child
        sigtimedwait(&ended, nullptr, &pause);
    }
    if (!m_process->Poll()) {
        std::fputs("zviptv-sim: the service did not end when asked to, and is killed\n", stderr);
    }
    m_process->Signal(SIGKILL);
    return m_process->Wait();
}

} // namespace zviptv::sim
