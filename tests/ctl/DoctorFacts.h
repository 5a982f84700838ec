// SPDX-License-Identifier: MIT
#pragma once

#include "doctor/Doctor.h"

namespace zviptv::test {

/// A machine without problems: the packages are installed, systemd runs, and an ordinary user runs the
/// doctor.
inline ctl::doctor::Facts HealthyMachine()
{
    using namespace ctl::doctor;
    Facts facts;
    facts.bus = {"unix:path=/run/dbus/system_bus_socket", false, Reach::Reached, ""};
    facts.accounts.userId = 990;
    facts.accounts.hasGroup = true;
    facts.caller.name = "jo";
    facts.caller.isListed = true;
    facts.caller.isMember = true;
    facts.policy.files = {"/usr/share/dbus-1/system.d/org.corvel.zviptvapi.dbushelper.conf"};
    facts.policy.deniesByDefault = true;
    facts.policy.isLoaded = true;
    facts.service.isOwned = true;
    facts.service.owner = ":1.7";
    facts.service.process = 811;
    facts.service.userId = 990;
    facts.service.userName = "zviptv";
    facts.service.program = "zviptv-sim";
    facts.service.unit = "zviptv-sim";
    facts.service.outcome = Outcome::Answered;
    facts.service.endpoints = {
        {"PLAYERCONTROL", Naming::Owned, ":1.7", "GetSourceState", Answering::Readable, "sourcestate", "2"},
        {"IPGUTIL", Naming::Owned, ":1.7", "ExistXmlForIPG", Answering::Readable, "data", "1"}};
    facts.versions.tool = "1.4.0";
    facts.versions.toolFile = "/usr/bin/zviptvctl";
    facts.versions.loaded = "1.4.0";
    facts.versions.loadedFile = "/usr/lib/x86_64-linux-gnu/libzv-iptv-service-api.so.1.4.0";
    facts.machine = {true, true, true, true, "/usr/share/zv-iptv/samples/sample.ts", "/usr/bin/zviptv-sim"};
    return facts;
}

/// The same without a service.
inline ctl::doctor::Facts MachineWithoutService()
{
    ctl::doctor::Facts facts = HealthyMachine();
    facts.service = {};
    facts.service.isOwned = false;
    return facts;
}

/// A shell of the simulator: a bus that lets everybody do everything, and no accounts.
inline ctl::doctor::Facts HealthySimulator()
{
    ctl::doctor::Facts facts = HealthyMachine();
    facts.bus.address = "unix:abstract=zviptv-bus-1";
    facts.bus.isFromEnvironment = true;
    facts.accounts.userId.reset();
    facts.accounts.hasGroup = false;
    facts.caller.isListed = false;
    facts.caller.isMember = false;
    facts.policy = {};
    facts.policy.deniesByDefault = false;
    facts.service.userId = 1000;
    facts.service.userName = "jo";
    facts.service.unit = "";
    facts.machine.sample = "FILE.ts";
    facts.machine.simulator = "zviptv-sim";
    return facts;
}

/// The same without a bus that can be reached.
inline ctl::doctor::Facts WithoutBus(ctl::doctor::Facts facts, ctl::doctor::Reach reach,
                                     std::string const& reason)
{
    facts.bus.reach = reach;
    facts.bus.reason = reason;
    facts.policy.deniesByDefault.reset();
    facts.policy.isLoaded.reset();
    facts.service = {};
    return facts;
}

} // namespace zviptv::test
