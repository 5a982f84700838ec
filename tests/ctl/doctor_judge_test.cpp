// SPDX-License-Identifier: MIT
#include "DoctorCases.h"

#include <gmock/gmock.h>

namespace zviptv::test {

using namespace ctl::doctor;
using testing::ElementsAreArray;
using testing::HasSubstr;

TEST_P(DoctorOnMisconfiguredMachine, ReportsTheProblemAndTheFix)
{
    WrongCase const& expected = GetParam();
    std::vector<Finding> wrong;
    for (Finding const& finding : Judge(expected.facts)) {
        if (finding.state == State::Wrong) {
            wrong.push_back(finding);
        }
    }
    ASSERT_EQ(wrong.size(), 1U);
    EXPECT_EQ(wrong.front().check, expected.check);
    EXPECT_EQ(static_cast<int>(wrong.front().code), expected.code);
    EXPECT_EQ(wrong.front().text, expected.text);
    EXPECT_THAT(wrong.front().commands, ElementsAreArray(expected.commands));
    EXPECT_NE(wrong.front().meaning, "");
    EXPECT_THAT(wrong.front().meaning, HasSubstr(expected.inMeaning));
    EXPECT_THAT(wrong.front().note, HasSubstr(expected.inNote));
}

namespace {

INSTANTIATE_TEST_SUITE_P(
    Bus, DoctorOnMisconfiguredMachine,
    testing::Values(
        WrongCase{"NotStarted",
                  WithoutBus(HealthyMachine(), Reach::Absent, "no such file"),
                  "bus",
                  3,
                  "no bus at unix:path=/run/dbus/system_bus_socket: no such file",
                  {"sudo systemctl start dbus"},
                  "gets null instead of objects",
                  "zviptv-sim --ts /usr/share/zv-iptv/samples/sample.ts --loop -- bash"},
        WrongCase{"NotInstalledAndNoSystemd",
                  Changed(WithoutBus(HealthyMachine(), Reach::Absent, "no such file"),
                          [](Facts& facts) {
                              facts.machine.hasDBus = false;
                              facts.machine.runsSystemd = false;
                              facts.caller.isRoot = true;
                          }),
                  "bus",
                  3,
                  "no bus at unix:path=/run/dbus/system_bus_socket: no such file",
                  {"apt-get install dbus", "service dbus start"},
                  "",
                  ""},
        WrongCase{"OfTheEnvironment",
                  WithoutBus(HealthySimulator(), Reach::Absent, "refused"),
                  "bus",
                  3,
                  "no bus at unix:abstract=zviptv-bus-1 (DBUS_SYSTEM_BUS_ADDRESS): refused",
                  {"unset DBUS_SYSTEM_BUS_ADDRESS"},
                  "",
                  "zviptv-sim --ts FILE.ts --loop -- bash"},
        WrongCase{"OfSomebodyElse",
                  WithoutBus(HealthySimulator(), Reach::Refused, "closed"),
                  "bus",
                  3,
                  "the bus at unix:abstract=zviptv-bus-1 (DBUS_SYSTEM_BUS_ADDRESS) does not let user jo in: "
                  "closed",
                  {"unset DBUS_SYSTEM_BUS_ADDRESS"},
                  "",
                  "run your application as the user who started that bus"},
        WrongCase{"ForbidsTheUser",
                  WithoutBus(HealthyMachine(), Reach::Refused, "closed"),
                  "bus",
                  3,
                  "the bus at unix:path=/run/dbus/system_bus_socket does not let user jo in: closed",
                  {},
                  "",
                  "A policy in /etc/dbus-1/system.conf or system.d forbids this user; it has to let "
                  "user=\"jo\" connect."},
        WrongCase{"ClosedSocket",
                  WithoutBus(HealthyMachine(), Reach::Closed, "denied"),
                  "bus",
                  3,
                  "the bus at unix:path=/run/dbus/system_bus_socket does not let user jo in: denied",
                  {"sudo chmod a+rw /run/dbus/system_bus_socket"},
                  "",
                  ""},
        WrongCase{"Stopped",
                  WithoutBus(HealthyMachine(), Reach::Silent, "no answer"),
                  "bus",
                  4,
                  "the bus at unix:path=/run/dbus/system_bus_socket accepts connections but does not answer: "
                  "no answer",
                  {"sudo pkill -CONT dbus-"},
                  "finds no service",
                  ""}));

} // namespace
} // namespace zviptv::test
