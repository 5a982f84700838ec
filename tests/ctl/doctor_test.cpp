#include "DoctorBus.h"
#include "DoctorFixture.h"
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

constexpr char helperName[] = "org.corvel.zviptvapi.dbushelper";

std::string Self()
{
    return "process " + std::to_string(getpid()) + " (ctl_tests)";
}

TEST_F(CtlTest, TheDoctorFindsNothingWrongWithAServiceThatAnswers)
{
    CtlResult const result = RunCtl({"doctor"});
    EXPECT_EQ(0, result.code);
    EXPECT_EQ("", result.errors);
    EXPECT_THAT(result.output, StartsWith("ok       bus        " + m_bus.Address() +
                                          " (DBUS_SYSTEM_BUS_ADDRESS)\n"
                                          "ok       accounts   not needed: this bus lets everybody call "
                                          "everybody\n"));
    EXPECT_THAT(result.output, HasSubstr("\nok       service    org.corvel.zviptvapi.dbushelper is " +
                                         m_service.Name() + ", " + Self() + "\n"));
    EXPECT_THAT(result.output, HasSubstr("\nok       main loop  the service answers\n"));
    EXPECT_THAT(result.output, testing::EndsWith("\nnothing is wrong\n"));
}

/// A service may know nothing but what the protocol says.
TEST_F(CtlTest, TheDoctorAsksTheServiceOneQuestionThatLeavesNothing)
{
    EXPECT_EQ(0, Diagnose().result.code);
    EXPECT_TRUE(m_service.Requests().empty());
    std::vector<Announcement> const said = m_service.Announcements();
    ASSERT_EQ(1U, said.size());
    EXPECT_EQ("PLAYERCONTROL", said.front().type);
    EXPECT_EQ("n", said.front().add);
    EXPECT_EQ(said.front().message.sender, said.front().dbusname);
}

TEST_F(CtlTest, TheDoctorSaysThatNobodyIsTheService)
{
    m_service.Vanish();
    Diagnosis const diagnosis = Diagnose();
    EXPECT_EQ(3, diagnosis.result.code);
    EXPECT_EQ("service", diagnosis.Wrong());
    EXPECT_EQ("nobody owns the name org.corvel.zviptvapi.dbushelper", diagnosis.Text("service"));
    EXPECT_THAT(diagnosis.Command("service"), StartsWith("zviptv-sim --bus system --ts "));
    EXPECT_EQ("not looked at: there is no service", diagnosis.Text("main loop"));
}

TEST_F(CtlTest, TheDoctorSaysThatThereIsNoBus)
{
    for (char const* const address : {"unix:path=/nonexistent/bus", "unix:abstract=zviptv-no-bus", "", "bus",
                                      "unix:", "tcp:host=127.0.0.1,port=1", ";;"}) {
        Diagnosis const diagnosis = Diagnose({{"DBUS_SYSTEM_BUS_ADDRESS", address}});
        EXPECT_EQ(3, diagnosis.result.code) << address;
        EXPECT_EQ("bus", diagnosis.Wrong()) << address;
        EXPECT_THAT(diagnosis.Text("bus"), StartsWith("no bus at ")) << address;
        EXPECT_EQ("unset DBUS_SYSTEM_BUS_ADDRESS", diagnosis.Command("bus")) << address;
        EXPECT_EQ("not looked at: no bus is reached", diagnosis.Text("policy")) << address;
        EXPECT_EQ("", diagnosis.result.errors) << address;
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
    EXPECT_EQ(static_cast<int>(expected), static_cast<int>(facts.reach)) << facts.reason;
    EXPECT_NE("", facts.reason);
}

/// The bus takes the connection, and hangs up.
TEST(DoctorBus, APolicyThatForbidsTheUserIsNoClosedSocket)
{
    BusOptions options;
    options.extraConfig = "<policy context=\"mandatory\"><deny user=\"*\"/></policy>";
    ExpectReach(Reach::Refused, Probe(PrivateBus(options).Address()));
}

TEST(DoctorBus, ARefusedAuthenticationIsNoMissingBus)
{
    ScriptedBus const bus({"REJECTED KERBEROS_V4"}); // which GIO does not know
    ExpectReach(Reach::Refused, Probe(bus.Address()));
}

TEST(DoctorBus, ABusThatLetsInAndThenSaysNothingIsSilentAndNotWaitedFor)
{
    ScriptedBus const bus({"REJECTED EXTERNAL", "OK 0123456789abcdef0123456789abcdef", "AGREE_UNIX_FD"});
    auto const begin = std::chrono::steady_clock::now();
    ExpectReach(Reach::Silent, Probe(bus.Address()));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20)); // GLib's own way takes 25
}

TEST(DoctorBus, ASocketThatMayNotBeOpenedIsClosed)
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

TEST_F(CtlTest, TheDoctorDoesNotHangOnABusThatStandsStill)
{
    m_bus.Stop();
    Diagnosis const diagnosis = Diagnose();
    m_bus.Continue();
    EXPECT_EQ(4, diagnosis.result.code);
    EXPECT_EQ("bus", diagnosis.Wrong());
    EXPECT_THAT(diagnosis.Text("bus"), HasSubstr("takes connections and does not answer"));
    EXPECT_EQ("pkill -CONT dbus-", diagnosis.Command("bus"));
    EXPECT_EQ(0, Diagnose().result.code);
}

/// libdbus answers pings in its main loop.
TEST_F(CtlTest, TheDoctorSaysThatTheServiceLeavesApplicationsUnanswered)
{
    m_service.AnswerAnnouncements([](Announcement const&) { return WireAnswer::Nothing(); });
    Diagnosis const diagnosis = Diagnose();
    EXPECT_EQ(4, diagnosis.result.code);
    EXPECT_EQ("main loop", diagnosis.Wrong());
    EXPECT_EQ(Self() + " answers a ping, but no application within 2 seconds", diagnosis.Text("main loop"));
    EXPECT_EQ("kill -KILL " + std::to_string(getpid()), diagnosis.Command("main loop"));
    EXPECT_EQ("not looked at: the service has not answered", diagnosis.Text("protocol"));
}

/// A handler that blocks stops that loop, pings included.
TEST_F(CtlTest, TheDoctorSaysThatTheServiceAnswersNothingAtAll)
{
    std::promise<void> blocked;
    std::shared_future<void> const end = blocked.get_future();
    m_service.AnswerAnnouncements([end](Announcement const&) {
        end.wait();
        return WireAnswer::Nothing();
    });
    Diagnosis const diagnosis = Diagnose();
    blocked.set_value();
    EXPECT_EQ(4, diagnosis.result.code);
    EXPECT_EQ("main loop", diagnosis.Wrong());
    EXPECT_EQ(Self() + " answers nothing within 2 seconds, not even a ping", diagnosis.Text("main loop"));
}

TEST_F(CtlTest, TheDoctorSaysThatTheServiceLeftTheBus)
{
    m_service.AnswerAnnouncements([](Announcement const&) { return WireAnswer::Nothing(); });
    auto const child = StartCtl({"doctor", "--json"});
    ASSERT_TRUE(m_service.WaitForAnnouncement("PLAYERCONTROL", "n"));
    m_service.Vanish();
    Diagnosis const diagnosis = Understood(Finish(*child));
    EXPECT_EQ(3, diagnosis.result.code);
    EXPECT_EQ("main loop", diagnosis.Wrong());
    EXPECT_EQ("the service left the bus when it was asked", diagnosis.Text("main loop"));
}

TEST_F(CtlTest, TheDoctorSaysThatTheServiceSpeaksAnotherProtocol)
{
    m_service.AnswerAnnouncements([](Announcement const&) {
        return WireAnswer::Error("org.freedesktop.DBus.Error.UnknownMethod", "no such method");
    });
    Diagnosis diagnosis = Diagnose();
    EXPECT_EQ(5, diagnosis.result.code);
    EXPECT_EQ("protocol", diagnosis.Wrong());
    EXPECT_EQ("the service does not know a call that this version of the library makes: "
              "org.freedesktop.DBus.Error.UnknownMethod: no such method",
              diagnosis.Text("protocol"));
    EXPECT_EQ("unknown", diagnosis.State("main loop"));

    m_service.AnswerAnnouncements([](Announcement const&) {
        return WireAnswer(WireBody::Strings({"what", "is", "this"}));
    });
    diagnosis = Diagnose();
    EXPECT_EQ(5, diagnosis.result.code);
    EXPECT_EQ("the service's answer is none that this version of the library reads: an answer of the type "
              "(sss)",
              diagnosis.Text("protocol"));
    EXPECT_EQ("ok", diagnosis.State("main loop"));
}

/// An error that the service makes up is none of the bus's.
TEST_F(CtlTest, TheDoctorDoesNotTakeADenialOfTheServiceForOneOfTheBus)
{
    m_service.AnswerAnnouncements([](Announcement const&) {
        return WireAnswer::Error("org.freedesktop.DBus.Error.AccessDenied", "no");
    });
    Diagnosis const diagnosis = Diagnose();
    EXPECT_EQ("protocol", diagnosis.Wrong());
    EXPECT_EQ("ok", diagnosis.State("policy"));
}

TEST_F(CtlTest, TheDoctorsReportThatCannotBeWrittenEndsWithSix)
{
    ChildProcess child({"sh", "-c", "exec \"$0\" doctor > /dev/full", ZVIPTVCTL_PATH});
    CtlResult const result = Finish(child);
    EXPECT_EQ(6, result.code);
    EXPECT_EQ("zviptvctl: cannot write standard output: No space left on device\n", result.errors);
}

/// The library's own server, of which GLib's thread runs, and the main loop does not.
TEST(DoctorTest, TellsAServiceWithoutAMainLoopFromOneThatIsGone)
{
    PrivateBus const bus;
    CConnectionHelperDBusServer::Instance();
    ASSERT_TRUE(WirePeer().WaitForOwner(helperName, true));
    Diagnosis const diagnosis = Diagnose();
    CConnectionHelperDBusServer::Destroy();
    EXPECT_EQ(4, diagnosis.result.code);
    EXPECT_EQ("main loop", diagnosis.Wrong());
    EXPECT_EQ(Self() + " answers a ping, but no application within 2 seconds", diagnosis.Text("main loop"));
}

class DoctorAtTheDesk : public testing::Test
{
protected:
    explicit DoctorAtTheDesk(std::map<std::string, std::string> const& environment = {})
        : m_simulator({ZVIPTV_SIM_PATH, "--bus", "system", "--quiet", "--loop", "--ts", SAMPLE_PATH},
                      environment)
    {
        EXPECT_TRUE(WirePeer().WaitForOwner(helperName, true)) << m_simulator.Errors();
    }

    std::string Simulator() const { return "process " + std::to_string(m_simulator.Pid()) + " (zviptv-sim)"; }

    PrivateBus m_bus;
    ChildProcess m_simulator;
};

TEST_F(DoctorAtTheDesk, FindsNothingWrongWithTheSimulator)
{
    Diagnosis const diagnosis = Diagnose();
    EXPECT_EQ(0, diagnosis.result.code) << diagnosis.result.output;
    EXPECT_THAT(diagnosis.Text("service"), testing::EndsWith(", " + Simulator()));
    EXPECT_THAT(diagnosis.Text("version"), testing::ContainsRegex(", service [0-9]+\\.[0-9]+\\.[0-9]+$"));
    EXPECT_EQ("nothing is wrong", ParseJson(diagnosis.result.output)["summary"].asString());
}

TEST_F(DoctorAtTheDesk, NamesTheStoppedProcessAndTheCommandLetsItRunOn)
{
    m_simulator.Signal(SIGSTOP);
    Diagnosis const diagnosis = Diagnose();
    EXPECT_EQ(4, diagnosis.result.code);
    EXPECT_EQ("main loop", diagnosis.Wrong());
    EXPECT_EQ(Simulator() + " is stopped", diagnosis.Text("main loop"));
    EXPECT_EQ("kill -CONT " + std::to_string(m_simulator.Pid()), diagnosis.Command("main loop"));
    ChildProcess mending({"sh", "-c", diagnosis.Command("main loop")});
    EXPECT_EQ((ExitStatus{0, 0}), mending.Wait(patience));
    EXPECT_EQ(0, Diagnose().result.code);
}

} // namespace
} // namespace zviptv::test
