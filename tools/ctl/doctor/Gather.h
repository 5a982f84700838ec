#pragma once

#include "doctor/BusProbe.h"
#include "doctor/Facts.h"

namespace zviptv::ctl::doctor {

/// Looks at the machine and asks the bus and the service. Nothing stays behind at either, but that a bus may
/// log what it denies: some questions are meant to be. Takes some seconds at most, however they behave;
/// neither needs nor iterates a main context.
Facts Gather(Names const& names);

// Its parts.
AccountFacts LookUpAccounts(Names const& names);
CallerFacts LookUpCaller(AccountFacts const& accounts);
VersionFacts LookUpVersions();

/// `tool` is the file of this program, beside which the simulator may be.
MachineFacts LookUpMachine(std::string const& tool);

/// The files of the policy in these folders.
std::vector<std::string> PolicyFiles(std::vector<std::string> const& folders);

/// What the bus lets this user do, found out on two connections of the doctor's own. Root also tries what the
/// service's user may do.
void ProbePolicy(BusProbe& from, Facts& facts);

void ProbeService(BusProbe& bus, ServiceFacts& service);

/// What /proc shows of the process that owns the name.
void LookUpProcess(ServiceFacts& service);

/// "1.0.0" behind "libzv-iptv-service-api.so."; empty where the file is named otherwise.
std::string VersionOf(std::string const& loadedFile);

/// "name", or "1234" for a user without one.
std::string UserName(unsigned id);

} // namespace zviptv::ctl::doctor
