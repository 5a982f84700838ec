#include "Supervisor.h"

#include "MainLoop.h"
#include "Pipe.h"
#include "PrivateBus.h"
#include "Process.h"
#include "SystemBus.h"

#include <zviptv/ConnectionHelperDBusClient.h>

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace zviptv::sim {

namespace {

using Clock = std::chrono::steady_clock;

constexpr int Failure = 1;
constexpr char ReadyLine[] = "ready\n";
constexpr std::chrono::seconds StartTimeout{10};
constexpr std::chrono::seconds StopTimeout{5};
constexpr std::chrono::hours Forever{24};

/// @throws std::runtime_error when the bus cannot be used
void RequireBus()
{
    std::string const reason = WhyNoSystemBus();
    if (!reason.empty()) {
        throw std::runtime_error("the system bus cannot be reached (" + reason +
                                 "): start it, set DBUS_SYSTEM_BUS_ADDRESS to a bus that runs, or use --bus "
                                 "private");
    }
    if (CConnectionHelperDBusClient::CheckConnection()) {
        throw std::runtime_error("a service runs on this bus already: stop it, or use --bus private");
    }
}

/// Plays the stream as the service on the bus that the environment names, until SIGINT or SIGTERM.
int RunService(ServiceOptions const& options, std::function<void()> const& ready)
{
    RequireBus();
    MainLoop loop;
    Service service(options, loop);
    if (!service.IsOnBus()) {
        throw std::runtime_error("the system bus went away: start again, or use --bus private");
    }
    if (!OwnsServiceName()) {
        throw std::runtime_error(
            "this user may not own org.corvel.zviptvapi.dbushelper on this bus: install its "
            "policy and be the user whom that names, or use --bus private");
    }
    service.Start();
    ready();
    loop.Run();
    return 0;
}

/// The service in a process of its own, which dies and comes back as the options say.
class ServiceProcess
{
public:
    explicit ServiceProcess(Options const& options) : m_options(options) {}

    /// Returns when the service answers, or has failed to start.
    bool Start()
    {
        Pipe readiness;
        m_process.emplace(Process::Fork([this, &readiness] { return Serve(readiness); }));
        readiness.CloseWriteEnd();
        m_killed = false;
        m_change = m_options.dieAfter ? After(*m_options.dieAfter) : Clock::now() + Forever;
        return !readiness.ReadLine(StartTimeout).empty();
    }

    /// When Advance() has something to do.
    Clock::time_point Change() const { return m_change; }

    /// Lets the service die or come back when it is time.
    void Advance()
    {
        if (Clock::now() < m_change) {
            return;
        }
        m_change = Clock::now() + Forever;
        if (m_process->Poll()) {
            std::fputs("zviptv-sim: the service comes back\n", stderr);
            Start();
        } else if (m_options.dieAfter) {
            std::fputs("zviptv-sim: the service dies\n", stderr);
            m_process->Signal(SIGKILL);
            m_process->Wait();
            m_killed = true;
            if (m_options.restartAfter) {
                m_change = After(*m_options.restartAfter);
            }
        }
    }

    /// Exit status of a service that has ended by itself.
    std::optional<int> Ended() { return m_killed ? std::nullopt : m_process->Poll(); }

    pid_t Pid() const { return m_process->Pid(); }

    /// Asks it to end, and kills it when it does not.
    void Stop()
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
        m_process->Signal(SIGKILL);
        m_process->Wait();
    }

private:
    static Clock::time_point After(double seconds)
    {
        return Clock::now() +
               std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
    }

    int Serve(Pipe& readiness)
    {
        try {
            return RunService(m_options.service, [&readiness] {
                ssize_t const written = write(readiness.WriteEnd(), ReadyLine, sizeof(ReadyLine) - 1);
                static_cast<void>(written);
            });
        } catch (std::exception const& failure) {
            std::fprintf(stderr, "zviptv-sim: %s\n", failure.what());
            return Failure;
        }
    }

    Options const& m_options;
    std::optional<Process> m_process;
    Clock::time_point m_change;
    bool m_killed = false;
};

/// Blocks the signals that concern the supervisor, to wait for them one by one.
sigset_t BlockSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    for (int const number : {SIGINT, SIGTERM, SIGHUP, SIGCHLD}) {
        sigaddset(&signals, number);
    }
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    return signals;
}

/// The next signal, or 0 when none has come by `deadline`.
int NextSignal(sigset_t const& signals, Clock::time_point deadline)
{
    auto const left = std::max(deadline - Clock::now(), Clock::duration::zero());
    auto const seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
    timespec const timeout{seconds.count(), std::chrono::nanoseconds(left - seconds).count()};
    int const number = sigtimedwait(&signals, nullptr, &timeout);
    return number < 0 ? 0 : number;
}

/// Waits for the command's end. A terminal's Ctrl-C reaches the command by itself; other requests to end are
/// passed on.
int SuperviseCommand(Process command, ServiceProcess& service, sigset_t const& signals)
{
    std::optional<int> status;
    while (!(status = command.Poll())) {
        int const number = NextSignal(signals, service.Change());
        if (number == SIGTERM || number == SIGHUP) {
            command.Signal(number);
        }
        service.Advance();
    }
    return *status;
}

/// Waits for a request to end, or for a service that ends by itself.
int SuperviseService(ServiceProcess& service, sigset_t const& signals)
{
    for (;;) {
        int const number = NextSignal(signals, service.Change());
        if (number != 0 && number != SIGCHLD) {
            return 0;
        }
        service.Advance();
        if (std::optional<int> const status = service.Ended()) {
            return *status;
        }
    }
}

int Supervise(Options const& options)
{
    sigset_t const signals = BlockSignals();
    std::optional<PrivateBus> bus;
    if (options.privateBus) {
        bus.emplace();
    }
    ServiceProcess service(options);
    if (!service.Start()) {
        service.Stop();
        return service.Ended().value_or(Failure);
    }
    setenv("ZVIPTV_SIM_PID", std::to_string(service.Pid()).c_str(), 1);
    int status = 0;
    if (!options.command.empty()) {
        status = SuperviseCommand(Process::Run(options.command, Process::Group::Ours), service, signals);
    } else {
        if (bus) {
            std::printf(
                "The service runs on a private bus until Ctrl-C. For applications in another terminal:\n"
                "  export DBUS_SYSTEM_BUS_ADDRESS='%s'\n",
                bus->Address().c_str());
            std::fflush(stdout);
        }
        status = SuperviseService(service, signals);
    }
    service.Stop();
    return status;
}

} // namespace

int Run(Options const& options)
{
    return options.privateBus || options.dieAfter ? Supervise(options) : RunService(options.service, [] {});
}

} // namespace zviptv::sim
