// SPDX-License-Identifier: MIT
#include "DoctorCases.h"

namespace zviptv::test {
namespace {

using namespace ctl::doctor;

INSTANTIATE_TEST_SUITE_P(
    Policy, DoctorOnMisconfiguredMachine,
    testing::Values(
        WrongCase{"NoAccounts",
                  Changed(MachineWithoutService(),
                          [](Facts& facts) {
                              facts.service.isOwned.reset();
                              facts.accounts.userId.reset();
                              facts.accounts.hasGroup = false;
                              facts.caller.isMember = facts.caller.isListed = false;
                          }),
                  "accounts",
                  4,
                  "there is no user zviptv and no group zviptv-apps",
                  {"sudo systemd-sysusers", ReloadConfig},
                  "",
                  "--user USER --group GROUP"},
        WrongCase{"NoUserAndNoSysusers",
                  Changed(HealthyMachine(),
                          [](Facts& facts) {
                              facts.accounts.userId.reset();
                              facts.machine.hasSysusers = false;
                          }),
                  "accounts",
                  4,
                  "there is no user zviptv",
                  {"sudo adduser --system --group zviptv", ReloadConfig},
                  "",
                  ""},
        WrongCase{"NoGroupAndNoSysusers",
                  Changed(HealthyMachine(),
                          [](Facts& facts) {
                              facts.accounts.hasGroup = false;
                              facts.machine.hasSysusers = false;
                          }),
                  "accounts",
                  4,
                  "there is no group zviptv-apps",
                  {"sudo addgroup --system zviptv-apps", ReloadConfig},
                  "",
                  ""},
        WrongCase{"NoAccountsOfOtherNames",
                  Changed(MachineWithoutService(),
                          [](Facts& facts) {
                              facts.service.isOwned.reset();
                              facts.accounts.names = {"tvd", "tvapps"};
                              facts.accounts.userId.reset();
                              facts.accounts.hasGroup = false;
                              facts.caller.isMember = facts.caller.isListed = false;
                          }),
                  "accounts",
                  4,
                  "there is no user tvd and no group tvapps",
                  {"sudo adduser --system --group tvd", "sudo addgroup --system tvapps", ReloadConfig},
                  "",
                  ""},
        WrongCase{"NoGroupOfAnotherName",
                  Changed(HealthyMachine(),
                          [](Facts& facts) {
                              facts.accounts.names.group = "tvapps";
                              facts.accounts.hasGroup = false;
                          }),
                  "accounts",
                  4,
                  "there is no group tvapps",
                  {"sudo addgroup --system tvapps", ReloadConfig},
                  "",
                  ""},
        WrongCase{"NotRead",
                  Changed(HealthyMachine(),
                          [](Facts& facts) {
                              facts.policy.isLoaded = false;
                              facts.service.outcome = Outcome::Forbidden;
                          }),
                  "policy",
                  4,
                  "the bus has not loaded /usr/share/dbus-1/system.d/org.corvel.zviptvapi.dbushelper.conf",
                  {ReloadConfig},
                  "Nobody may run the service on this bus, and nobody may call it",
                  ""},
        WrongCase{"NotInstalled",
                  Changed(HealthyMachine(),
                          [](Facts& facts) {
                              facts.policy.files.clear();
                              facts.policy.isLoaded = false;
                              facts.service.outcome = Outcome::Forbidden;
                          }),
                  "policy",
                  4,
                  "the bus has loaded no policy for the service, and none is installed",
                  {"sudo apt-get install libzv-iptv-service-api1"},
                  "",
                  "./run package, then sudo apt-get install ./build/packages/*.deb"},
        WrongCase{"ReadBeforeTheUserWasMade",
                  Changed(HealthyMachine(), [](Facts& facts) { facts.policy.isServiceAllowed = false; }),
                  "policy",
                  4,
                  "the bus has loaded the policy, but not for user zviptv",
                  {ReloadConfig},
                  "The bus does not let the service own its name.",
                  ""},
        WrongCase{"ReadBeforeTheGroupWasMade",
                  Changed(HealthyMachine(),
                          [](Facts& facts) {
                              facts.service.outcome = Outcome::Forbidden;
                              facts.service.error = "AccessDenied";
                          }),
                  "policy",
                  4,
                  "the bus has loaded the policy, but does not let user jo of the group zviptv-apps call the "
                  "service",
                  {ReloadConfig},
                  "AccessDenied",
                  "another policy in /etc/dbus-1/system.d"},
        WrongCase{"NotInTheGroup",
                  Changed(HealthyMachine(),
                          [](Facts& facts) {
                              facts.caller.isListed = facts.caller.isMember = false;
                              facts.service.outcome = Outcome::Forbidden;
                          }),
                  "group",
                  4,
                  "user jo does not belong to the group zviptv-apps",
                  {"sudo adduser jo zviptv-apps", "newgrp zviptv-apps"},
                  "refuses every call",
                  "log out and in again"},
        WrongCase{"InTheGroupTooLate",
                  Changed(HealthyMachine(),
                          [](Facts& facts) {
                              facts.caller.isMember = false;
                              facts.service.outcome = Outcome::Forbidden;
                          }),
                  "group",
                  4,
                  "user jo was added to the group zviptv-apps after this process's login",
                  {"newgrp zviptv-apps"},
                  "",
                  "log out and in again"}));

} // namespace
} // namespace zviptv::test
