// SPDX-License-Identifier: MIT
#include "Supervisor.h"

#include "CommandProcess.h"
#include "PrivateBus.h"
#include "ServiceProcess.h"
#include "ServiceRun.h"
#include "Signals.h"
#include "common/PrintableText.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <system_error>

namespace zviptv::sim {

namespace {

constexpr int Failure = 1;
constexpr int SignalStatus = 128;

/// Waits until the service is ready, however long that takes. Exit status when that will not be.
std::optional<int> AwaitService(ServiceProcess& service, Signals const& signals)
{
    while (service.IsStarting()) {
        Signals::Signal const signal = signals.Next(service.ReadinessEnd(), service.Change());
        if (signal.AsksToEnd()) {
            std::fputs("zviptv-sim: told to end before the service was ready\n", stderr);
            return SignalStatus + signal.number;
        }
        service.Advance();
    }
    std::optional<int> const ended = service.Ended();
    return ended == 0 ? Failure : ended;
}

/// Runs the command, and waits for its end, which the end of the service does not bring about.
int SuperviseCommand(std::vector<std::string> const& words, ServiceProcess& service, Signals const& signals)
try {
    CommandProcess command(words);
    std::optional<int> status;
    while (!(status = command.Ended())) {
        Signals::Signal const signal =
            signals.Next(service.ReadinessEnd(), std::min(service.Change(), command.Change()));
        if (signal.AsksToEnd()) {
            command.PassOn(signal);
        }
        command.Advance();
        service.Advance();
    }
    return *status;
} catch (std::system_error const& failure) {
    std::fprintf(stderr, "zviptv-sim: %s\n", EscapeText(failure.what()).c_str());
    return Process::CannotRun;
}

/// Waits for a request to end, or for a service that ends by itself.
int SuperviseService(ServiceProcess& service, Signals const& signals)
{
    while (!service.Ended()) {
        if (signals.Next(service.ReadinessEnd(), service.Change()).AsksToEnd()) {
            return 0;
        }
        service.Advance();
    }
    return *service.Ended();
}

int SuperviseReady(Options const& options, PrivateBus const* bus, ServiceProcess& service,
                   Signals const& signals)
{
    setenv("ZVIPTV_SIM_PID", std::to_string(service.Pid()).c_str(), 1);
    if (!options.command.empty()) {
        return SuperviseCommand(options.command, service, signals);
    }
    if (bus != nullptr) {
        RequestLog(options.service.log).WriteBus(bus->Address());
    }
    return SuperviseService(service, signals);
}

int Supervise(Options const& options)
{
    Signals const signals;
    std::optional<PrivateBus> bus;
    if (options.privateBus) {
        bus.emplace();
    }
    ServiceProcess service(options);
    service.Start();
    std::optional<int> status = AwaitService(service, signals);
    if (!status) {
        status = SuperviseReady(options, bus ? &*bus : nullptr, service, signals);
    }
    service.Stop();
    return *status;
}

} // namespace

int Run(Options const& options)
{
    if (options.privateBus || options.dieAfter) {
        return Supervise(options);
    }
    RunService(options.service, [] {});
    return 0;
}

} // namespace zviptv::sim
