// SPDX-License-Identifier: MIT
#include "doctor/Fix.h"

#include "glib/Owned.h"

namespace zviptv::ctl::doctor {

namespace {

constexpr char OwnService[] = "start your own service as its documentation says.";
constexpr char AsDocumented[] = ", as its documentation says.";

/// Only root may send signals to a process of another user.
std::string Signal(Facts const& facts, char const* name)
{
    std::string const command = std::string("kill -") + name + " " + std::to_string(facts.service.process);
    return facts.service.userName == facts.caller.name ? command : AsRoot(facts, command);
}

std::string AsServiceUser(Facts const& facts, std::string const& command)
{
    std::string const user = Quoted(facts.accounts.names.user);
    if (facts.caller.isServiceUser) {
        return command;
    }
    return (facts.caller.isRoot ? "runuser -u " + user + " -- " : "sudo -u " + user + " ") + command;
}

/// On the machine's bus, systemd starts the simulator.
bool HasUnit(Facts const& facts)
{
    return !facts.bus.isFromEnvironment && facts.machine.runsSystemd && facts.machine.hasUnit;
}

bool IsSimulator(Facts const& facts)
{
    return facts.service.program == "zviptv-sim";
}

std::string StreamNote(Facts const& facts)
{
    bool const isNamed = HasUnit(facts) || facts.machine.sample != MachineFacts().sample;
    return isNamed ? "" : " Replace " + facts.machine.sample + " with your own stream.";
}

/// Ends a service that has no unit, and starts it again. The simulator is the only service whose command is
/// known.
Fix EndAndStart(Facts const& facts, std::string const& how)
{
    std::vector<std::string> commands;
    if (facts.service.process != 0) {
        // A process that does not run its main loop does not react to SIGTERM.
        commands.push_back(Signal(facts, "KILL"));
    }
    if (!IsSimulator(facts)) {
        return {commands,
                std::string(commands.empty() ? "End the service, " : "End the service with this command, ") +
                    "and start it again" + how + AsDocumented};
    }
    for (std::string const& command : StartService(facts).commands) {
        commands.push_back(command);
    }
    return {commands, "The last command starts the simulator again." + StreamNote(facts)};
}

} // namespace

std::string AsRoot(Facts const& facts, std::string const& command)
{
    return facts.caller.isRoot ? command : "sudo " + command;
}

std::string ReloadBus(Facts const& facts)
{
    return AsRoot(facts, "dbus-send --system --print-reply --dest=org.freedesktop.DBus / "
                         "org.freedesktop.DBus.ReloadConfig");
}

Fix StartService(Facts const& facts)
{
    if (HasUnit(facts)) {
        return {{AsRoot(facts, "systemctl start zviptv-sim")},
                "This starts the simulator. If it does not start, run: systemctl status zviptv-sim"};
    }
    std::string const simulator =
        Quoted(facts.machine.simulator) + " --bus system --ts " + Quoted(facts.machine.sample) + " --loop";
    bool const denies = facts.policy.deniesByDefault.value_or(!facts.bus.isFromEnvironment);
    return {{denies ? AsServiceUser(facts, simulator) : simulator},
            std::string("This starts the simulator; ") + OwnService + StreamNote(facts)};
}

Fix StartServiceAgain(Facts const& facts)
{
    if (IsSimulator(facts)) {
        return StartService(facts);
    }
    std::string const& unit = facts.service.unit;
    if (!unit.empty()) {
        return {{AsRoot(facts, "systemctl start " + Quoted(unit))},
                "Its messages show why it ended: journalctl -u " + Quoted(unit)};
    }
    return {{},
            std::string("Find out from the service's own messages why it ended, and start it again") +
                AsDocumented};
}

Fix RestartService(Facts const& facts)
{
    if (!facts.service.unit.empty()) {
        return {{AsRoot(facts, "systemctl restart " + Quoted(facts.service.unit))}, {}};
    }
    return EndAndStart(facts, "");
}

Fix ChangeServiceUser(Facts const& facts)
{
    std::string const& user = facts.accounts.names.user;
    if (facts.service.unit.empty()) {
        return EndAndStart(facts, " as user " + user);
    }
    return {{AsRoot(facts, "systemctl edit " + Quoted(facts.service.unit)),
             AsRoot(facts, "systemctl restart " + Quoted(facts.service.unit))},
            "In the editor: [Service], User=" + user + ", Group=" + user + "."};
}

Fix CorrectService(Facts const& facts)
{
    if (!IsSimulator(facts)) {
        return {{},
                "If somebody else wrote the service: install a version that fits this library, or report the "
                "problem to its developers."};
    }
    Fix fix = RestartService(facts);
    fix.note += (fix.note.empty() ? "" : " ") +
                std::string("To end faults that were injected, run: zviptvctl sim fault clear");
    return fix;
}

std::string StartSimulator(Facts const& facts)
{
    return "zviptv-sim --ts " + facts.machine.sample + " --loop -- bash";
}

std::string ContinueService(Facts const& facts)
{
    return Signal(facts, "CONT");
}

std::string ProcessText(ServiceFacts const& service)
{
    if (service.process == 0) {
        return {};
    }
    return "process " + std::to_string(service.process) +
           (service.program.empty() ? "" : " (" + service.program + ")");
}

std::string Quoted(std::string const& word)
{
    static constexpr char Plain[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789/._-+:=,@";
    if (!word.empty() && word.find_first_not_of(Plain) == std::string::npos) {
        return word;
    }
    Owned<char> const quoted(g_shell_quote(word.c_str()));
    return quoted.get();
}

} // namespace zviptv::ctl::doctor
