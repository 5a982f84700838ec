// SPDX-License-Identifier: MIT
#include "DoctorCases.h"

namespace zviptv::test {
namespace {

using namespace ctl::doctor;

INSTANTIATE_TEST_SUITE_P(
    Versions, DoctorOnMisconfiguredMachine,
    testing::Values(
        WrongCase{"AnswerOfAnotherType",
                  Changed(HealthyMachine(),
                          [](Facts& facts) {
                              facts.service.outcome = Outcome::Unreadable;
                              facts.service.error = "an answer of the type (s)";
                          }),
                  "protocol",
                  5,
                  "this version of the library cannot read the service's answer: an answer of the "
                  "type (s)",
                  {"sudo systemctl restart zviptv-sim"},
                  "",
                  "To end faults that were injected, run: zviptvctl sim fault clear"},
        WrongCase{
            "AnswerOfAnotherTypeOfAnother",
            Changed(HealthyMachine(),
                    [](Facts& facts) {
                        facts.service.outcome = Outcome::Unreadable;
                        facts.service.error = "an answer of the type (s)";
                        facts.service.program = facts.service.unit = "televisiond";
                    }),
            "protocol",
            5,
            "this version of the library cannot read the service's answer: an answer of the "
            "type (s)",
            {},
            "",
            "In a service that you write: answer each announcement, a call of SendSignal, with a list of "
            "pairs of texts, a(ss). If somebody else wrote the service: install a version that fits this "
            "library, or report the problem to its developers."},
        WrongCase{"UnknownMethod",
                  Changed(HealthyMachine(),
                          [](Facts& facts) {
                              facts.service.outcome = Outcome::Failed;
                              facts.service.error = "UnknownMethod: no such method";
                          }),
                  "protocol",
                  5,
                  "the service does not know a call that this version of the library makes: UnknownMethod: "
                  "no such method",
                  {"sudo systemctl restart zviptv-sim"},
                  "",
                  ""},
        WrongCase{"LibraryOfTheLibraryPath",
                  Changed(HealthyMachine(),
                          [](Facts& facts) {
                              facts.versions.loaded = "1.0.0";
                              facts.versions.loadedFile = "/opt/tv/libzv-iptv-service-api.so.1.0.0";
                              facts.versions.isFromLibraryPath = true;
                          }),
                  "version",
                  5,
                  "zviptvctl is 1.4.0, but /opt/tv/libzv-iptv-service-api.so.1.0.0, which it has loaded, is "
                  "1.0.0",
                  {"unset LD_LIBRARY_PATH"},
                  "answers that differ from its headers",
                  "/opt/tv/libzv-iptv-service-api.so.1.0.0 is found first"},
        WrongCase{"LibraryLeftInUsrLocal",
                  Changed(HealthyMachine(),
                          [](Facts& facts) {
                              facts.versions.loaded = "1.0.0";
                              facts.versions.loadedFile = "/usr/local/lib/libzv-iptv-service-api.so.1.0.0";
                          }),
                  "version",
                  5,
                  "zviptvctl is 1.4.0, but /usr/local/lib/libzv-iptv-service-api.so.1.0.0, which it has "
                  "loaded, is 1.0.0",
                  {"sudo rm /usr/local/lib/libzv-iptv-service-api.so*", "sudo ldconfig"},
                  "",
                  "left from an earlier installation"},
        WrongCase{"ToolLeftInUsrLocal",
                  Changed(HealthyMachine(),
                          [](Facts& facts) {
                              facts.versions.tool = "1.0.0";
                              facts.versions.toolFile = "/usr/local/bin/zviptvctl";
                          }),
                  "version",
                  5,
                  "zviptvctl is 1.0.0, but /usr/lib/x86_64-linux-gnu/libzv-iptv-service-api.so.1.4.0, which "
                  "it has loaded, is 1.4.0",
                  {"sudo rm /usr/local/bin/zviptvctl"},
                  "",
                  "/usr/local/bin/zviptvctl is found first"},
        WrongCase{"HalfAnUpgrade",
                  Changed(HealthyMachine(), [](Facts& facts) { facts.versions.tool = "1.5.0"; }),
                  "version",
                  5,
                  "zviptvctl is 1.5.0, but /usr/lib/x86_64-linux-gnu/libzv-iptv-service-api.so.1.4.0, which "
                  "it has loaded, is 1.4.0",
                  {"sudo apt-get install --reinstall libzv-iptv-service-api1 zv-iptv-tools"},
                  "",
                  ""},
        WrongCase{"ServiceNotRestarted",
                  Changed(HealthyMachine(),
                          [](Facts& facts) {
                              facts.service.loaded = "1.4.0";
                              facts.service.isLibraryReplaced = true;
                          }),
                  "version",
                  5,
                  "the service still runs the library that has been replaced since it started",
                  {"sudo systemctl restart zviptv-sim"},
                  "",
                  ""},
        WrongCase{"ServiceNotRestartedWithoutAUnit",
                  Changed(HealthyMachine(),
                          [](Facts& facts) {
                              facts.service.isLibraryReplaced = true;
                              facts.service.unit = "";
                          }),
                  "version",
                  5,
                  "the service still runs the library that has been replaced since it started",
                  {"sudo kill -KILL 811", "sudo systemctl start zviptv-sim"},
                  "",
                  StartsTheSimulator},
        WrongCase{"ServiceNotRestartedOfAnother",
                  Changed(HealthyMachine(),
                          [](Facts& facts) {
                              facts.service.isLibraryReplaced = true;
                              facts.service.program = "televisiond";
                              facts.service.unit = "";
                          }),
                  "version",
                  5,
                  "the service still runs the library that has been replaced since it started",
                  {"sudo kill -KILL 811"},
                  "",
                  "End the service with this command, and start it again, as its documentation says."},
        WrongCase{"ServiceOfAnotherVersion",
                  Changed(HealthyMachine(), [](Facts& facts) { facts.service.loaded = "1.3.9"; }),
                  "version",
                  5,
                  "the service runs the library 1.3.9, but applications run 1.4.0",
                  {"sudo systemctl restart zviptv-sim"},
                  "",
                  ""}));

} // namespace
} // namespace zviptv::test
