// SPDX-License-Identifier: MIT
#include "DoctorBus.h"
#include "DoctorFixture.h"
#include "Processes.h"
#include "doctor/BusProbe.h"

#include <zviptv/ConnectionHelperDBusServer.h>

#include <csignal>
#include <filesystem>
#include <future>
#include <unistd.h>

namespace zviptv::test {
namespace {

using ctl::doctor::Reach;
using testing::HasSubstr;
using testing::StartsWith;

constexpr char HelperName[] = "org.corvel.zviptvapi.dbushelper";

std::string Self()
{
    return "process " + std::to_string(getpid()) + " (ctl_tests)";
}

TEST_F(DoctorOfAService, FindsNothingWrongWithAServiceThatAnswers)
{
    CtlResult const result = RunCtl({"doctor"});
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_THAT(result.output, StartsWith("ok       bus        " + m_bus.Address() +
                                          " (DBUS_SYSTEM_BUS_ADDRESS)\n"
                                          "ok       accounts   not needed: this bus lets everybody call "
                                          "everybody\n"));
    EXPECT_THAT(result.output, HasSubstr("\nok       service    org.corvel.zviptvapi.dbushelper is " +
                                         m_service.Name() + ", " + Self() + "\n"));
    EXPECT_THAT(result.output, HasSubstr("\nok       main loop  the service answers\n"));
    EXPECT_THAT(result.output, testing::EndsWith("\nnothing is wrong\n"));
}

/// A service may implement nothing beyond the protocol.
TEST_F(DoctorOfAService, LeavesNoChannelBehind)
{
    EXPECT_EQ(Diagnose().result.code, 0);
    std::vector<std::string> announcements;
    for (Announcement const& announcement : m_service.Announcements()) {
        EXPECT_EQ(announcement.dbusname, announcement.message.sender);
        announcements.push_back(announcement.type + " " + announcement.add);
    }
    EXPECT_THAT(announcements,
                testing::ElementsAre("PLAYERCONTROL n", "PLAYERCONTROL y", "PLAYERCONTROL n",
                                     "BROADCASTDATA y", "BROADCASTDATA n", "IPTVDATASUBSCRIBER y",
                                     "IPTVDATASUBSCRIBER n", "IPGUTIL y", "IPGUTIL n"));
}

TEST_F(DoctorOfAService, ChangesNothingInTheService)
{
    EXPECT_EQ(Diagnose().result.code, 0);
    std::vector<WireMessage> const requests = m_service.Requests();
    ASSERT_EQ(requests.size(), 4U);
    EXPECT_EQ(requests[0].entries, Entries({{"functionname", "GetSourceState"}, {"handleID", "256"}}));
    EXPECT_EQ(requests[1].entries, Entries({{"functionname", "SizeOfAudio"}, {"handleID", "256"}}));
    EXPECT_EQ(requests[2].entries,
              Entries({{"functionname", "requestPESCB"}, {"handleID", "256"}, {"on", "0"}}));
    EXPECT_EQ(requests[3].entries, Entries({{"functionname", "ExistXmlForIPG"}}));
    EXPECT_EQ(requests[3].path, "/org/corvel/zviptvapi/DbusCommunication/IPGUTIL");
}

TEST_F(DoctorOfAService, ReportsAMissingService)
{
    m_service.Vanish();
    Diagnosis const diagnosis = Diagnose();
    EXPECT_EQ(diagnosis.result.code, 3);
    EXPECT_EQ(diagnosis.Wrong(), "service");
    EXPECT_EQ(diagnosis.Text("service"), "nobody owns the name org.corvel.zviptvapi.dbushelper");
    EXPECT_THAT(diagnosis.Command("service"), StartsWith("zviptv-sim --bus system --ts "));
    EXPECT_EQ(diagnosis.Text("main loop"), "not checked: there is no service");
}

TEST_F(DoctorOfAService, ReportsAMissingBus)
{
    for (char const* const address : {"unix:path=/nonexistent/bus", "unix:abstract=zviptv-no-bus", "", "bus",
                                      "unix:", "tcp:host=127.0.0.1,port=1", ";;"}) {
        Diagnosis const diagnosis = Diagnose({{"DBUS_SYSTEM_BUS_ADDRESS", address}});
        EXPECT_EQ(diagnosis.result.code, 3) << address;
        EXPECT_EQ(diagnosis.Wrong(), "bus") << address;
        EXPECT_THAT(diagnosis.Text("bus"), StartsWith("no bus at ")) << address;
        EXPECT_EQ(diagnosis.Command("bus"), "unset DBUS_SYSTEM_BUS_ADDRESS") << address;
        EXPECT_EQ(diagnosis.Text("policy"), "not checked: there is no connection to a bus") << address;
        EXPECT_EQ(diagnosis.result.errors, "") << address;
    }
}

ctl::doctor::BusFacts Probe(std::string const& address)
{
    ctl::doctor::BusFacts facts;
    facts.address = address;
    EXPECT_FALSE(ctl::doctor::BusProbe(facts).IsOpen());
    return facts;
}

void ExpectReach(Reach expected, ctl::doctor::BusFacts const& facts)
{
    EXPECT_EQ(static_cast<int>(facts.reach), static_cast<int>(expected)) << facts.reason;
    EXPECT_NE(facts.reason, "");
}

/// The bus accepts the connection, and closes it.
TEST(DoctorBus, DistinguishesAForbiddenUserFromAClosedSocket)
{
    BusOptions options;
    options.extraConfig = "<policy context=\"mandatory\"><deny user=\"*\"/></policy>";
    ExpectReach(Reach::Refused, Probe(PrivateBus(options).Address()));
}

TEST(DoctorBus, DistinguishesRefusedAuthenticationFromAMissingBus)
{
    ScriptedBus const bus({"REJECTED KERBEROS_V4"}); // which GIO does not know
    ExpectReach(Reach::Refused, Probe(bus.Address()));
}

TEST(DoctorBus, DoesNotWaitForABusThatStopsAnswering)
{
    ScriptedBus const bus({"REJECTED EXTERNAL", "OK 0123456789abcdef0123456789abcdef", "AGREE_UNIX_FD"});
    auto const begin = std::chrono::steady_clock::now();
    ExpectReach(Reach::Silent, Probe(bus.Address()));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20)); // GLib's own way takes 25
}

TEST(DoctorBus, ReportsASocketThatMayNotBeOpened)
{
    PrivateBus const bus;
    for (std::filesystem::directory_entry const& entry :
         std::filesystem::directory_iterator(bus.Directory())) {
        if (entry.is_socket()) {
            std::filesystem::permissions(entry, std::filesystem::perms::none);
        }
    }
    AsNobody const nobody;
    ExpectReach(Reach::Closed, Probe(bus.Address()));
}

TEST_F(DoctorOfAService, DoesNotHangOnAStoppedBus)
{
    m_bus.Stop();
    Diagnosis const diagnosis = Diagnose();
    m_bus.Continue();
    EXPECT_EQ(diagnosis.result.code, 4);
    EXPECT_EQ(diagnosis.Wrong(), "bus");
    EXPECT_THAT(diagnosis.Text("bus"), HasSubstr("accepts connections but does not answer"));
    EXPECT_EQ(diagnosis.Command("bus"), "pkill -CONT dbus-");
    EXPECT_EQ(Diagnose().result.code, 0);
}

/// libdbus answers pings in its main loop.
TEST_F(DoctorOfAService, ReportsUnansweredApplications)
{
    m_service.AnswerAnnouncements([](Announcement const&) { return WireAnswer::Nothing(); });
    Diagnosis const diagnosis = Diagnose();
    EXPECT_EQ(diagnosis.result.code, 4);
    EXPECT_EQ(diagnosis.Wrong(), "main loop");
    EXPECT_EQ(diagnosis.Text("main loop"),
              Self() + " answers a ping, but does not answer applications within 2 seconds");
    EXPECT_EQ(diagnosis.Command("main loop"), "kill -KILL " + std::to_string(getpid()));
    EXPECT_EQ(diagnosis.Text("protocol"), "not checked: the service has not answered");
}

/// A handler that blocks stops that loop, pings included.
TEST_F(DoctorOfAService, ReportsAServiceThatAnswersNothing)
{
    std::promise<void> blocked;
    std::shared_future<void> const end = blocked.get_future();
    m_service.AnswerAnnouncements([end](Announcement const&) {
        end.wait();
        return WireAnswer::Nothing();
    });
    Diagnosis const diagnosis = Diagnose();
    blocked.set_value();
    EXPECT_EQ(diagnosis.result.code, 4);
    EXPECT_EQ(diagnosis.Wrong(), "main loop");
    EXPECT_EQ(diagnosis.Text("main loop"), Self() + " does not answer within 2 seconds, not even a ping");
}

TEST_F(DoctorOfAService, ReportsThatTheServiceLeftTheBus)
{
    m_service.AnswerAnnouncements([](Announcement const&) { return WireAnswer::Nothing(); });
    auto const child = StartCtl({"doctor", "--json"});
    ASSERT_TRUE(m_service.WaitForAnnouncement("PLAYERCONTROL", "n"));
    m_service.Vanish();
    Diagnosis const diagnosis = Understood(Finish(*child));
    EXPECT_EQ(diagnosis.result.code, 3);
    EXPECT_EQ(diagnosis.Wrong(), "main loop");
    EXPECT_EQ(diagnosis.Text("main loop"), "the service left the bus when it was called");
}

TEST_F(DoctorOfAService, ReportsAnotherProtocol)
{
    m_service.AnswerAnnouncements([](Announcement const&) {
        return WireAnswer::Error("org.freedesktop.DBus.Error.UnknownMethod", "no such method");
    });
    Diagnosis diagnosis = Diagnose();
    EXPECT_EQ(diagnosis.result.code, 5);
    EXPECT_EQ(diagnosis.Wrong(), "protocol");
    EXPECT_EQ(diagnosis.Text("protocol"),
              "the service does not know a call that this version of the library makes: "
              "org.freedesktop.DBus.Error.UnknownMethod: no such method");
    EXPECT_EQ(diagnosis.State("main loop"), "unknown");

    m_service.AnswerAnnouncements([](Announcement const&) {
        return WireAnswer(WireBody::Strings({"what", "is", "this"}));
    });
    diagnosis = Diagnose();
    EXPECT_EQ(diagnosis.result.code, 5);
    EXPECT_EQ(diagnosis.Text("protocol"),
              "this version of the library cannot read the service's answer: an answer of the type "
              "(sss)");
    EXPECT_EQ(diagnosis.State("main loop"), "ok");
}

/// An error that the service makes up is none of the bus's.
TEST_F(DoctorOfAService, DistinguishesADenialOfTheServiceFromOneOfTheBus)
{
    m_service.AnswerAnnouncements([](Announcement const&) {
        return WireAnswer::Error("org.freedesktop.DBus.Error.AccessDenied", "no");
    });
    Diagnosis const diagnosis = Diagnose();
    EXPECT_EQ(diagnosis.Wrong(), "protocol");
    EXPECT_EQ(diagnosis.State("policy"), "ok");
}

TEST_F(DoctorOfAService, AReportThatCannotBeWrittenEndsWithExitCode6)
{
    ChildProcess child({"sh", "-c", "exec \"$0\" doctor > /dev/full", ZVIPTVCTL_PATH});
    CtlResult const result = Finish(child);
    EXPECT_EQ(result.code, 6);
    EXPECT_EQ(result.errors, "zviptvctl: cannot write standard output: No space left on device\n");
}

/// The library's own server, of which GLib's thread runs, and the main loop does not.
TEST(DoctorTest, DistinguishesAServiceWithoutAMainLoopFromAMissingOne)
{
    PrivateBus const bus;
    CConnectionHelperDBusServer::Instance();
    ASSERT_TRUE(WirePeer().WaitForOwner(HelperName, true));
    Diagnosis const diagnosis = Diagnose();
    CConnectionHelperDBusServer::Destroy();
    EXPECT_EQ(diagnosis.result.code, 4);
    EXPECT_EQ(diagnosis.Wrong(), "main loop");
    EXPECT_EQ(diagnosis.Text("main loop"),
              Self() + " answers a ping, but does not answer applications within 2 seconds");
}

class DoctorWithSimulator : public testing::Test
{
protected:
    explicit DoctorWithSimulator(std::map<std::string, std::string> const& environment = {})
        : m_simulator({ZVIPTV_SIM_PATH, "--bus", "system", "--quiet", "--loop", "--ts", SAMPLE_PATH},
                      environment)
    {
        EXPECT_TRUE(WirePeer().WaitForOwner(HelperName, true)) << m_simulator.Errors();
    }

    /// The process that is on the bus.
    pid_t Service() const { return OnlyChildOf(m_simulator.Pid()); }
    std::string Simulator() const { return "process " + std::to_string(Service()) + " (zviptv-sim)"; }

    PrivateBus m_bus;
    ChildProcess m_simulator;
};

TEST_F(DoctorWithSimulator, FindsNothingWrongWithTheSimulator)
{
    Diagnosis const diagnosis = Diagnose();
    EXPECT_EQ(diagnosis.result.code, 0) << diagnosis.result.output;
    EXPECT_THAT(diagnosis.Text("service"), testing::EndsWith(", " + Simulator()));
    EXPECT_THAT(diagnosis.Text("version"), testing::ContainsRegex(", service [0-9]+\\.[0-9]+\\.[0-9]+$"));
    EXPECT_EQ(ParseJson(diagnosis.result.output)["summary"].asString(), "nothing is wrong");
}

TEST_F(DoctorWithSimulator, ReportsTheStoppedProcessAndHowToContinueIt)
{
    ASSERT_EQ(kill(Service(), SIGSTOP), 0);
    Diagnosis const diagnosis = Diagnose();
    EXPECT_EQ(diagnosis.result.code, 4);
    EXPECT_EQ(diagnosis.Wrong(), "main loop");
    EXPECT_EQ(diagnosis.Text("main loop"), Simulator() + " is stopped");
    EXPECT_EQ(diagnosis.Command("main loop"), "kill -CONT " + std::to_string(Service()));
    ChildProcess fixing({"sh", "-c", diagnosis.Command("main loop")});
    EXPECT_EQ(fixing.Wait(patience), (ExitStatus{0, 0}));
    EXPECT_EQ(Diagnose().result.code, 0);
}

} // namespace
} // namespace zviptv::test
