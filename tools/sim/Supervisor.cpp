#include "Supervisor.h"

#include "MainLoop.h"
#include "PrivateBus.h"
#include "Service.h"

#include <zviptv/ConnectionHelperDBusClient.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <thread>

namespace zviptv::sim {

namespace {

constexpr int Failure = 1;
constexpr std::chrono::seconds StartTimeout{10};

/// Advances the player and comes back when it has more to do.
void Play(MainLoop& loop, Player& player)
{
    if (std::optional<std::chrono::milliseconds> const wait = player.Advance()) {
        loop.After(*wait, [&loop, &player] { Play(loop, player); });
    } else {
        std::puts("zviptv-sim: the stream has ended; the service goes on answering");
    }
}

/// Blocks the signals that end or concern the supervisor, to wait for them one by one.
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

/// True when the service owns its name; false when it has ended before.
bool WaitForService(Process& service)
{
    auto const deadline = std::chrono::steady_clock::now() + StartTimeout;
    while (!CConnectionHelperDBusClient::CheckConnection()) {
        if (service.Poll() || std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

/// Waits for the command's end. A terminal's Ctrl-C reaches the command by itself; other requests to end are
/// passed on.
int WaitForCommand(Process& command, sigset_t const& signals)
{
    std::optional<int> status;
    while (!(status = command.Poll())) {
        int number = 0;
        sigwait(&signals, &number);
        if (number == SIGTERM || number == SIGHUP) {
            command.Signal(number);
        }
    }
    return *status;
}

int WaitForInterrupt(Process& service, sigset_t const& signals)
{
    for (;;) {
        int number = 0;
        sigwait(&signals, &number);
        if (number != SIGCHLD) {
            return 0;
        }
        if (std::optional<int> const status = service.Poll()) {
            return *status;
        }
    }
}

} // namespace

int RunService(Options const& options)
{
    if (CConnectionHelperDBusClient::CheckConnection()) {
        std::fputs("zviptv-sim: a service runs on this bus already: stop it, or use --bus private\n", stderr);
        return Failure;
    }
    MainLoop loop;
    Service service(options.playback, options.filter);
    if (!service.IsOnBus()) {
        std::fputs("zviptv-sim: the system bus cannot be reached: set DBUS_SYSTEM_BUS_ADDRESS, or use --bus "
                   "private\n",
                   stderr);
        return Failure;
    }
    Play(loop, service.Playback());
    loop.Run();
    return 0;
}

int RunPrivately(Options const& options)
{
    sigset_t const signals = BlockSignals();
    PrivateBus const bus;
    Process service = Process::Fork([&options] { return RunService(options); });
    if (!WaitForService(service)) {
        return service.Poll().value_or(Failure);
    }
    setenv("ZVIPTV_SIM_PID", std::to_string(service.Pid()).c_str(), 1);
    int status = 0;
    if (options.command.empty()) {
        std::printf("The service runs on a private bus until Ctrl-C. For applications in another terminal:\n"
                    "  export DBUS_SYSTEM_BUS_ADDRESS='%s'\n",
                    bus.Address().c_str());
        std::fflush(stdout);
        status = WaitForInterrupt(service, signals);
    } else {
        Process command = Process::Run(options.command);
        status = WaitForCommand(command, signals);
    }
    service.Signal(SIGTERM);
    service.Wait();
    return status;
}

} // namespace zviptv::sim
