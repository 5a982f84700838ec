#include "doctor/Mending.h"

#include <glib.h>

#include <memory>

namespace zviptv::ctl::doctor {

namespace {

/// A process of somebody else takes signals from root alone.
std::string Signal(Facts const& facts, char const* name)
{
    std::string const command = std::string("kill -") + name + " " + std::to_string(facts.service.process);
    return facts.service.userName == facts.caller.name ? command : AsRoot(facts, command);
}

std::string AsServiceUser(Facts const& facts, std::string const& command)
{
    std::string const& user = facts.accounts.names.user;
    if (facts.caller.isServiceUser) {
        return command;
    }
    return (facts.caller.isRoot ? "runuser -u " + user + " -- " : "sudo -u " + user + " ") + command;
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

std::vector<std::string> StartService(Facts const& facts)
{
    bool const isMachinesBus = !facts.bus.isFromEnvironment;
    if (isMachinesBus && facts.machine.runsSystemd && facts.machine.hasUnit) {
        return {AsRoot(facts, "systemctl start zviptv-sim")};
    }
    std::string const simulator = "zviptv-sim --bus system --ts " + facts.machine.sample + " --loop";
    bool const denies = facts.policy.deniesByDefault.value_or(isMachinesBus);
    return {denies ? AsServiceUser(facts, simulator) : simulator};
}

std::vector<std::string> ReplaceService(Facts const& facts)
{
    std::vector<std::string> commands = StartService(facts);
    if (!facts.service.unit.empty()) {
        commands.insert(commands.begin(), AsRoot(facts, "systemctl stop " + facts.service.unit));
    } else if (facts.service.process != 0) {
        // What does not run its main loop does not hear a polite request either.
        commands.insert(commands.begin(), Signal(facts, "KILL"));
    }
    return commands;
}

std::vector<std::string> RestartService(Facts const& facts)
{
    if (!facts.service.unit.empty()) {
        return {AsRoot(facts, "systemctl restart " + facts.service.unit)};
    }
    return ReplaceService(facts);
}

std::string StartDesk(Facts const& facts)
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
    std::unique_ptr<char, decltype(&g_free)> const quoted(g_shell_quote(word.c_str()), g_free);
    return quoted.get();
}

} // namespace zviptv::ctl::doctor
