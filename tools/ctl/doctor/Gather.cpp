// SPDX-License-Identifier: MIT
#include "doctor/Gather.h"

#include "doctor/Accounts.h"
#include "doctor/BusProbe.h"
#include "doctor/PolicyProbe.h"
#include "doctor/Process.h"
#include "doctor/ServiceProbe.h"
#include "doctor/Versions.h"

#include <cstdlib>
#include <filesystem>

namespace zviptv::ctl::doctor {

namespace {

bool Exists(char const* path)
{
    std::error_code ignored;
    return std::filesystem::exists(path, ignored);
}

BusFacts LookUpBus()
{
    BusFacts bus;
    bus.isFromEnvironment = std::getenv("DBUS_SYSTEM_BUS_ADDRESS") != nullptr;
    Owned<char> const address(g_dbus_address_get_for_bus_sync(G_BUS_TYPE_SYSTEM, nullptr, nullptr));
    bus.address = address == nullptr ? "" : address.get();
    return bus;
}

} // namespace

Facts Gather(Names const& names)
{
    Facts facts;
    facts.bus = LookUpBus();
    facts.accounts = LookUpAccounts(names);
    facts.caller = LookUpCaller(facts.accounts);
    facts.versions = LookUpVersions();
    facts.machine = LookUpMachine(facts.versions.toolFile);
    facts.policy.files = PolicyFiles({"/usr/share/dbus-1/system.d", "/etc/dbus-1/system.d"});
    BusProbe bus(facts.bus);
    if (bus.IsOpen()) {
        ProbePolicy(bus, facts);
        ProbeService(bus, facts.service);
        LookUpProcess(facts.service);
    }
    return facts;
}

MachineFacts LookUpMachine(std::string const& tool)
{
    MachineFacts machine;
    machine.hasDBus = Exists("/usr/share/dbus-1/system.conf");
    machine.runsSystemd = Exists("/run/systemd/system");
    machine.hasUnit = Exists("/lib/systemd/system/zviptv-sim.service") ||
                      Exists("/usr/local/lib/systemd/system/zviptv-sim.service") ||
                      Exists("/etc/systemd/system/zviptv-sim.service");
    machine.hasSysusers = Exists("/usr/lib/sysusers.d/zv-iptv.conf") && Exists("/usr/bin/systemd-sysusers");
    constexpr char Sample[] = "/usr/share/zv-iptv/samples/sample.ts";
    if (Exists(Sample)) {
        machine.sample = Sample;
    }
    std::string const simulator = tool.substr(0, tool.rfind('/') + 1) + machine.simulator;
    if (Exists(simulator.c_str())) {
        machine.simulator = simulator;
    }
    return machine;
}

std::vector<std::string> PolicyFiles(std::vector<std::string> const& folders)
{
    std::vector<std::string> files;
    for (std::string const& folder : folders) {
        std::string const file = folder + "/org.corvel.zviptvapi.dbushelper.conf";
        if (Exists(file.c_str())) {
            files.push_back(file);
        }
    }
    return files;
}

} // namespace zviptv::ctl::doctor
