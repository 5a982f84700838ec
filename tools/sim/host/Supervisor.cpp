// SPDX-License-Identifier: MIT
#include "Supervisor.h"

#include "CommandProcess.h"
#include "Control.h"
#include "ControlPanel.h"
#include "PrivateBus.h"
#include "Recorder.h"
#include "Scenarios.h"
#include "Signals.h"
#include "common/PrintableText.h"
#include "glib/Owned.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>

namespace zviptv::sim {

namespace {

constexpr int SignalStatus = 128;

std::string SystemBusAddress()
{
    Error error;
    Owned<char> const address(g_dbus_address_get_for_bus_sync(G_BUS_TYPE_SYSTEM, nullptr, error.Out()));
    if (error) {
        throw std::runtime_error(std::string("the system bus has no address: ") + error.Message() +
                                 "; set DBUS_SYSTEM_BUS_ADDRESS");
    }
    return address.get();
}

/// Applications may already know the service: then it ends in order, and so does the simulator.
int EndBeforeReady(ServiceProcess& service, Signals::Signal const& signal)
{
    if (service.Stop() == 0) {
        return 0;
    }
    std::fputs("zviptv-sim: ended before the service was ready\n", stderr);
    return SignalStatus + signal.number;
}

/// Waits without a limit until the service is ready and can be controlled, even if it is killed before.
/// Returns an exit status if this will not happen.
std::optional<int> AwaitService(Control& control, Signals const& signals)
{
    ServiceProcess& service = control.Service();
    while (!service.Ended() && (!service.WasReady() || (service.IsRunning() && !control.IsSettled()))) {
        Signals::Signal const signal = signals.Next(service.Change());
        if (signal.AsksToEnd()) {
            return EndBeforeReady(service, signal);
        }
        service.Advance();
    }
    std::optional<int> const ended = service.Ended();
    return ended == 0 ? EXIT_FAILURE : ended;
}

/// Runs the command and waits for its end. The end of the service does not end the command.
int SuperviseCommand(std::vector<std::string> const& words, ServiceProcess& service, Scenarios& scenario,
                     Signals const& signals)
try {
    CommandProcess command(words);
    std::optional<int> status;
    while (!(status = command.Ended())) {
        Signals::Signal const signal =
            signals.Next(std::min({service.Change(), command.Change(), scenario.Change()}));
        if (signal.AsksToEnd()) {
            command.PassOn(signal);
        }
        command.Advance();
        service.Advance();
        scenario.Advance();
    }
    return *status;
} catch (std::system_error const& failure) {
    std::fprintf(stderr, "zviptv-sim: %s\n", EscapeText(failure.what()).c_str());
    return Process::CannotRun;
}

/// Waits for a request to end, for a service that ends by itself, or for the loss of the bus.
int SuperviseService(Control& control, Scenarios& scenario, Signals const& signals)
{
    ServiceProcess& service = control.Service();
    while (!service.Ended() && !control.KnowsLoss()) {
        if (signals.Next(std::min(service.Change(), scenario.Change())).AsksToEnd()) {
            return 0;
        }
        service.Advance();
        scenario.Advance();
    }
    return service.Ended().value_or(EXIT_FAILURE);
}

int SuperviseReady(Options const& options, PrivateBus const* bus, Control& control, Scenarios& scenario,
                   Signals const& signals)
{
    setenv("ZVIPTV_SIM_PID", std::to_string(control.Service().Pid()).c_str(), 1);
    if (!options.command.empty()) {
        return SuperviseCommand(options.command, control.Service(), scenario, signals);
    }
    if (bus != nullptr) {
        RequestLog(options.service.log).WriteBus(bus->Address());
    }
    return SuperviseService(control, scenario, signals);
}

} // namespace

int Run(Options const& options, ScenarioOptions scenario)
{
    Signals const signals;
    std::optional<PrivateBus> bus;
    if (options.privateBus) {
        bus.emplace();
    }
    std::optional<Recorder> recorder;
    if (!options.record.empty()) {
        recorder.emplace(options.record, bus ? bus->Address() : SystemBusAddress());
    }
    Control control(options);
    std::optional<ControlPanel> panel;
    if (options.panel) {
        panel.emplace(*options.panel, control);
    }
    Scenarios scenarios(std::move(scenario), control);
    ServiceProcess& service = control.Service();
    service.Start();
    std::optional<int> status = AwaitService(control, signals);
    std::string ended = "the service did not start";
    if (!status) {
        scenarios.Start();
        status = SuperviseReady(options, bus ? &*bus : nullptr, control, scenarios, signals);
        ended = options.command.empty() ? "the simulator ended" : "the command ended";
    }
    status = scenarios.Finish(*status, ended, signals);
    if (control.HasLostBus() && status == 0) {
        status = EXIT_FAILURE;
    }
    service.Stop();
    std::fputs(service.Unrecorded().Text().c_str(), stderr);
    bool const isRecorded = !recorder || recorder->Finish();
    return *status == 0 && !isRecorded ? EXIT_FAILURE : *status;
}

} // namespace zviptv::sim
