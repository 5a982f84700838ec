// SPDX-License-Identifier: MIT
#include "ServiceProcess.h"

#include "ServiceRun.h"
#include "control/Link.h"
#include "process/FileHandle.h"
#include "process/Spawn.h"

#include <sys/socket.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <system_error>
#include <utility>

namespace zviptv::sim {

namespace {

constexpr int Failure = 1; // the service has said why
constexpr int SignalStatus = 128;
constexpr std::chrono::seconds StopTimeout{5};

} // namespace

ServiceProcess::ServiceProcess(Options const& options, Listener listener)
    : m_options(options), m_listener(std::move(listener))
{
}

/// The program is executed again, since other threads run in this process: a copy of it could do little.
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
    request.command.front() = ServiceName;
    request.program = "/proc/self/exe";
    request.descriptors = {{theirs.Get(), link::Descriptor}};
    request.ownGroup = true;
    m_process.emplace(Spawn(request));
    m_state = State::Starting;
    m_ended.reset();
    Plan(Next::Nothing, {});
}

/// It is connected, and waits for what it shall go on with.
void ServiceProcess::Begin()
{
    auto const ignore = [](GVariant*, GError const*) {};
    if (Owned<GVariant> const kept = ForNext()) {
        m_link->Call(link::Interface, link::Restore, g_variant_new("(@a{sv})", kept.get()), ignore);
    }
    for (Waiting& call : std::exchange(m_waiting, {})) {
        m_link->Call(call.interface, call.method, call.parameters.get(), std::move(call.reply));
    }
    m_link->Call(link::Interface, link::Begin, nullptr, ignore);
}

/// What was kept; without what makes the clock go on if that is not wanted.
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
    } else if (name == link::Ready) {
        NoteReady();
    }
}

void ServiceProcess::Call(char const* interface, std::string const& method, GVariant* parameters,
                          ServiceLink::Reply reply)
{
    if (m_link && m_link->IsConnected()) {
        m_link->Call(interface, method, parameters, std::move(reply));
        return;
    }
    m_waiting.push_back({interface, method,
                         Owned<GVariant>(parameters == nullptr ? nullptr : g_variant_ref_sink(parameters)),
                         std::move(reply)});
    if (!IsAlive() && m_next != Next::ComeBack) {
        RefuseWaiting();
    }
}

void ServiceProcess::RefuseWaiting()
{
    GError* error = g_error_new_literal(
        G_IO_ERROR, G_IO_ERROR_NOT_CONNECTED,
        "the service is dead and does not come back by itself; 'zviptvctl sim restart' starts it");
    for (Waiting const& call : std::exchange(m_waiting, {})) {
        call.reply(nullptr, error);
    }
    g_error_free(error);
}

void ServiceProcess::Advance()
{
    if (std::optional<int> const status = IsAlive() ? m_process->Poll() : std::nullopt) {
        CountsAsDeath(*status) ? NoteDeath(m_options.restartAfter) : NoteEnd(*status);
    }
    if (Clock::now() < m_nextAt) {
        return;
    }
    Next const next = std::exchange(m_next, Next::Nothing);
    Plan(Next::Nothing, {});
    if (next == Next::Die) {
        Die({});
    } else if (next == Next::ComeBack) {
        ComeBack();
    }
}

void ServiceProcess::NoteReady()
{
    m_state = State::Running;
    m_wasReady = true;
    Plan(Next::Die, m_options.dieAfter);
    m_listener.onReady();
}

/// Somebody has killed it, or asked it to end, and it shall come back. A crash does not count, so that it is
/// not overlooked.
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
    } else if (m_state == State::Running || status != Failure) {
        std::fprintf(stderr, "zviptv-sim: the service has ended with status %d\n", status);
    }
    m_ended = status;
    m_link.reset();
    m_state = State::Ended;
    Plan(Next::Nothing, {});
    RefuseWaiting();
    m_listener.onDied();
}

void ServiceProcess::NoteDeath(std::optional<double> comeBackAfter)
{
    std::fputs("zviptv-sim: the service dies\n", stderr);
    m_link.reset();
    m_state = State::Dead;
    Plan(Next::ComeBack, comeBackAfter);
    if (!comeBackAfter) {
        RefuseWaiting();
    }
    m_listener.onDied();
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
    Die(0); // calls that wait go on waiting
    ComeBack();
}

void ServiceProcess::ComeBack()
{
    std::fputs("zviptv-sim: the service comes back\n", stderr);
    Start();
}

int ServiceProcess::Stop()
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
    return m_process->Wait();
}

} // namespace zviptv::sim
