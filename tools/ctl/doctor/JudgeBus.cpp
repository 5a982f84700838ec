// SPDX-License-Identifier: MIT
#include "doctor/JudgeBus.h"

namespace zviptv::ctl::doctor {

namespace {

constexpr char BusCheck[] = "bus";
constexpr char Unset[] = "unset DBUS_SYSTEM_BUS_ADDRESS";

std::string Place(Facts const& facts)
{
    return (facts.bus.address.empty() ? "\"\"" : facts.bus.address) +
           (facts.bus.isFromEnvironment ? " (DBUS_SYSTEM_BUS_ADDRESS)" : "");
}

std::string SimulatorHint(Facts const& facts)
{
    return "For a private bus and a simulated service, run: " + StartSimulator(facts);
}

Finding Absent(Facts const& facts)
{
    std::string const text = "no bus at " + Place(facts) + ": " + facts.bus.reason;
    std::string const meaning = "An application finds no service and gets null instead of objects.";
    if (facts.bus.isFromEnvironment) {
        return Wrong(BusCheck, ExitCode::NoService, text, meaning, {Unset},
                     "Applications then use the machine's system bus. " + SimulatorHint(facts));
    }
    std::vector<std::string> commands;
    if (!facts.machine.hasDBus) {
        commands.push_back(AsRoot(facts, "apt-get install dbus"));
    }
    commands.push_back(
        AsRoot(facts, facts.machine.runsSystemd ? "systemctl start dbus" : "service dbus start"));
    return Wrong(BusCheck, ExitCode::NoService, text, meaning, commands, SimulatorHint(facts));
}

Finding Refused(Facts const& facts)
{
    std::string const text =
        "the bus at " + Place(facts) + " does not let user " + facts.caller.name + " in: " + facts.bus.reason;
    std::string const meaning = "An application of this user finds no service.";
    if (facts.bus.isFromEnvironment) {
        return Wrong(BusCheck, ExitCode::NoService, text, meaning, {Unset},
                     "Or run your application as the user who started that bus. " + SimulatorHint(facts));
    }
    if (facts.bus.reach == Reach::Refused) {
        return Wrong(
            BusCheck, ExitCode::NoService, text, meaning, std::vector<std::string>(),
            "A policy in /etc/dbus-1/system.conf or system.d forbids this user; it has to let user=\"" +
                facts.caller.name + "\" connect.");
    }
    return Wrong(BusCheck, ExitCode::NoService, text, meaning,
                 {AsRoot(facts, "chmod a+rw /run/dbus/system_bus_socket")},
                 "Every user must be able to reach the system bus; its policy decides what each may do.");
}

Finding Silent(Facts const& facts)
{
    return Wrong(BusCheck, ExitCode::NoAnswer,
                 "the bus at " + Place(facts) +
                     " accepts connections but does not answer: " + facts.bus.reason,
                 "An application waits 2 seconds when it creates an object, and finds no service.",
                 {facts.bus.isFromEnvironment ? "pkill -CONT dbus-" : AsRoot(facts, "pkill -CONT dbus-")},
                 "The command resumes a stopped bus. If the bus still does not answer, start it again.");
}

} // namespace

Finding JudgeBus(Facts const& facts)
{
    switch (facts.bus.reach) {
    case Reach::Absent:
        return Absent(facts);
    case Reach::Closed:
    case Reach::Refused:
        return Refused(facts);
    case Reach::Silent:
        return Silent(facts);
    case Reach::Reached:
        break;
    }
    return Ok(BusCheck, Place(facts));
}

} // namespace zviptv::ctl::doctor
