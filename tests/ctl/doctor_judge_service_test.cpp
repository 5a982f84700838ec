// SPDX-License-Identifier: MIT
#include "DoctorCases.h"

namespace zviptv::test {
namespace {

using namespace ctl::doctor;

INSTANTIATE_TEST_SUITE_P(
    Service, DoctorOnMisconfiguredMachine,
    testing::Values(
        WrongCase{"NotStarted",
                  MachineWithoutService(),
                  "service",
                  3,
                  "nobody owns the name org.corvel.zviptvapi.dbushelper",
                  {"sudo systemctl start zviptv-sim"},
                  "gets null instead of objects",
                  "systemctl status zviptv-sim"},
        WrongCase{"NotStartedWithoutSystemd",
                  Changed(MachineWithoutService(), [](Facts& facts) { facts.machine.runsSystemd = false; }),
                  "service",
                  3,
                  "nobody owns the name org.corvel.zviptvapi.dbushelper",
                  {"sudo -u zviptv /usr/bin/zviptv-sim --bus system --ts "
                   "/usr/share/zv-iptv/samples/sample.ts --loop"},
                  "",
                  ""},
        WrongCase{"NotStartedAsRoot",
                  Changed(MachineWithoutService(),
                          [](Facts& facts) {
                              facts.machine.runsSystemd = false;
                              facts.caller.isRoot = true;
                          }),
                  "service",
                  3,
                  "nobody owns the name org.corvel.zviptvapi.dbushelper",
                  {"runuser -u zviptv -- /usr/bin/zviptv-sim --bus system --ts "
                   "/usr/share/zv-iptv/samples/sample.ts "
                   "--loop"},
                  "",
                  ""},
        WrongCase{"NotStartedUnderAnotherPrefix",
                  Changed(MachineWithoutService(),
                          [](Facts& facts) {
                              facts.machine.hasUnit = false;
                              facts.machine.sample = MachineFacts().sample;
                              facts.machine.simulator = "/opt/my tv/bin/zviptv-sim";
                          }),
                  "service",
                  3,
                  "nobody owns the name org.corvel.zviptvapi.dbushelper",
                  {"sudo -u zviptv '/opt/my tv/bin/zviptv-sim' --bus system --ts FILE.ts --loop"},
                  "",
                  "Replace FILE.ts with your own stream."},
        WrongCase{
            "NotStartedOnADesk",
            Changed(HealthySimulator(),
                    [](Facts& facts) {
                        facts.service = {};
                        facts.service.isOwned = false;
                    }),
            "service",
            3,
            "nobody owns the name org.corvel.zviptvapi.dbushelper",
            {"zviptv-sim --bus system --ts FILE.ts --loop"},
            "",
            "This starts the simulator; start your own service as its documentation says. Replace FILE.ts "
            "with your own stream."},
        WrongCase{"OfTheWrongUser",
                  Changed(HealthyMachine(),
                          [](Facts& facts) {
                              facts.service.userId = 0;
                              facts.service.userName = "root";
                              facts.service.unit = "televisiond";
                          }),
                  "owner",
                  4,
                  "the service runs as user root, not as zviptv",
                  {"sudo systemctl edit televisiond", "sudo systemctl restart televisiond"},
                  "packets and captions do not arrive",
                  "In the editor: [Service], User=zviptv, Group=zviptv. Where another policy names others on "
                  "purpose, ask 'zviptvctl doctor --user USER --group GROUP'."},
        WrongCase{"OfTheWrongUserWithoutAUnit",
                  Changed(HealthyMachine(),
                          [](Facts& facts) {
                              facts.service.userId = 1000;
                              facts.service.userName = "jo";
                              facts.service.unit = "";
                          }),
                  "owner",
                  4,
                  "the service runs as user jo, not as zviptv",
                  {"kill -KILL 811", "sudo systemctl start zviptv-sim"},
                  "",
                  StartsTheSimulator},
        WrongCase{"OfTheWrongUserOfAnother",
                  Changed(HealthyMachine(),
                          [](Facts& facts) {
                              facts.service.userId = 1000;
                              facts.service.userName = "jo";
                              facts.service.program = "televisiond";
                              facts.service.unit = "";
                          }),
                  "owner",
                  4,
                  "the service runs as user jo, not as zviptv",
                  {"kill -KILL 811"},
                  "",
                  "and start it again as user zviptv, as its documentation says. Where another"},
        WrongCase{"StoppedProcess",
                  Changed(HealthyMachine(),
                          [](Facts& facts) {
                              facts.service.outcome = Outcome::Silent;
                              facts.service.isStopped = true;
                          }),
                  "main loop",
                  4,
                  "process 811 (zviptv-sim) is stopped",
                  {"sudo kill -CONT 811"},
                  "waits 2 seconds",
                  ""},
        WrongCase{
            "NoMainLoop",
            Changed(HealthyMachine(),
                    [](Facts& facts) {
                        facts.service.outcome = Outcome::Silent;
                        facts.service.isConnectionAlive = true;
                    }),
            "main loop",
            4,
            "process 811 (zviptv-sim) answers a ping, but does not answer applications within 2 seconds",
            {"sudo systemctl restart zviptv-sim"},
            "",
            "the main loop is blocked"},
        WrongCase{"NoMainLoopOfAnother",
                  Changed(HealthyMachine(),
                          [](Facts& facts) {
                              facts.service.outcome = Outcome::Silent;
                              facts.service.program = facts.service.unit = "televisiond";
                          }),
                  "main loop",
                  4,
                  "process 811 (televisiond) does not answer within 2 seconds, not even a ping",
                  {"sudo systemctl restart televisiond"},
                  "",
                  ""},
        WrongCase{"NoMainLoopOnADesk",
                  Changed(HealthySimulator(), [](Facts& facts) { facts.service.outcome = Outcome::Silent; }),
                  "main loop",
                  4,
                  "process 811 (zviptv-sim) does not answer within 2 seconds, not even a ping",
                  {"kill -KILL 811", "zviptv-sim --bus system --ts FILE.ts --loop"},
                  "",
                  StartsTheSimulator},
        WrongCase{"LeavesTheBus",
                  Changed(HealthyMachine(), [](Facts& facts) { facts.service.outcome = Outcome::Gone; }),
                  "main loop",
                  3,
                  "the service left the bus when it was called",
                  {"sudo systemctl start zviptv-sim"},
                  "",
                  "This starts the simulator."},
        WrongCase{"LeavesTheBusOfAnother",
                  Changed(HealthyMachine(),
                          [](Facts& facts) {
                              facts.service.outcome = Outcome::Gone;
                              facts.service.program = facts.service.unit = "televisiond";
                          }),
                  "main loop",
                  3,
                  "the service left the bus when it was called",
                  {"sudo systemctl start televisiond"},
                  "",
                  "Its messages show why it ended: journalctl -u televisiond"},
        WrongCase{"LeavesTheBusWithoutAUnit",
                  Changed(HealthyMachine(),
                          [](Facts& facts) {
                              facts.service.outcome = Outcome::Gone;
                              facts.service.program = "python3";
                              facts.service.unit = "";
                          }),
                  "main loop",
                  3,
                  "the service left the bus when it was called",
                  {},
                  "",
                  "Find out from the service's own messages why it ended, and start it again, as its "
                  "documentation says."},
        WrongCase{"NoMainLoopOfAPythonService",
                  Changed(HealthyMachine(),
                          [](Facts& facts) {
                              facts.service.outcome = Outcome::Silent;
                              facts.service.program = "python3";
                              facts.service.unit = "";
                              facts.service.process = 0;
                              facts.service.owner = ":1.7";
                          }),
                  "main loop",
                  4,
                  "the process of :1.7 does not answer within 2 seconds, not even a ping",
                  {},
                  "",
                  "End the service, and start it again, as its documentation says."}));

} // namespace
} // namespace zviptv::test
