#include "SimulatorTest.h"

#include <csignal>

namespace zviptv::test {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

/// The simulator with faults; asks player control.
class FaultInjection : public Simulator
{
protected:
    void Begin(std::vector<std::string> const& faults)
    {
        std::vector<std::string> options{"--ts", ZVIPTV_SAMPLE_FILE, "--loop"};
        for (std::string const& fault : faults) {
            options.insert(options.end(), {"--fault", fault});
        }
        Start(options);
        m_application.Announce("PLAYERCONTROL");
    }

    WireMessage Ask(std::string const& function)
    {
        return m_application.Ask("PLAYERCONTROL", {{"functionname", function}, {"onoff", "1"}});
    }

    Application m_application;
};

TEST_F(FaultInjection, SpoilsTheValuesThatItNames)
{
    Begin({"MuteAudio=result:0", "GetSourceState=missing:sourcestate", "GetSTCCount=garbage:stcCount",
           "GetResolution=short:resolutioninfo"});
    EXPECT_EQ(Ask("MuteAudio").Value("result_internal"), "0");
    EXPECT_EQ(Ask("MuteVideo").Value("result_internal"), "1");
    WireMessage const state = Ask("GetSourceState");
    EXPECT_EQ(state.Value("result_internal"), "1");
    EXPECT_FALSE(state.Has("sourcestate"));
    EXPECT_EQ(Ask("GetSTCCount").Value("stcCount"), "garbage");
    EXPECT_EQ(Ask("GetResolution").Value("resolutioninfo").size(), 16U);
}

TEST_F(FaultInjection, AnswersWithAnError)
{
    Begin({"*=error"});
    WireMessage const reply = Ask("MuteAudio");
    EXPECT_EQ(reply.kind, WireKind::Error);
    EXPECT_EQ(reply.errorName, "org.corvel.zviptvapi.Error.Injected");
}

TEST_F(FaultInjection, DelaysOneAnswerAndNotTheOthers)
{
    Begin({"MuteAudio=delay:600"});
    auto const begin = std::chrono::steady_clock::now();
    WirePeer slow;
    std::string const service = m_application.Announce("PLAYERCONTROL");
    slow.CallWithoutReply(
        {service, ChannelPath("PLAYERCONTROL"), "org.corvel.zviptvapi.DbusCommunication", "Send"},
        Entries({{"functionname", "MuteAudio"}, {"onoff", "1"}}));
    slow.Sync();
    EXPECT_EQ(Ask("MuteVideo").Value("result_internal"), "1");
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(600));
    EXPECT_EQ(Ask("MuteAudio").Value("result_internal"), "1");
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(600));
}

TEST_F(FaultInjection, DropsAnAnswer)
{
    Begin({"MuteAudio=drop"});
    WireMessage const reply = m_application.Peer().Call(
        {m_watcher.GetNameOwner("org.corvel.zviptvapi.dbushelper"), ChannelPath("PLAYERCONTROL"),
         "org.corvel.zviptvapi.DbusCommunication", "Send"},
        Entries({{"functionname", "MuteAudio"}, {"onoff", "1"}}),
        CallOptions{std::chrono::milliseconds(300), false});
    EXPECT_EQ(reply.errorName, "org.freedesktop.DBus.Error.NoReply");
    EXPECT_EQ(Ask("MuteVideo").Value("result_internal"), "1");
}

TEST(FaultOptions, AreExplainedWhenTheyAreWrong)
{
    for (char const* const fault :
         {"MuteAudio", "=drop", "MuteAudio=explode", "MuteAudio=delay", "MuteAudio=delay:x",
          "MuteAudio=delay:-1", "MuteAudio=drop:1", "MuteAudio=missing:"}) {
        ChildProcess process({ZVIPTV_SIM, "--ts", ZVIPTV_SAMPLE_FILE, "--fault", fault});
        EXPECT_EQ(process.Wait(Patience), (ExitStatus{2, 0})) << fault;
        EXPECT_THAT(process.Errors(),
                    HasSubstr(std::string("'") + fault + "' is no fault: use METHOD=delay:MS"));
    }
}

TEST(Supervision, LetsTheServiceDieAndComeBack)
{
    ChildProcess process({ZVIPTV_SIM, "--ts", ZVIPTV_SAMPLE_FILE, "--loop", "--bus", "private", "--die-after",
                          "0.5", "--restart-after", "0.1"});
    ASSERT_TRUE(process.WaitForOutput("export DBUS_SYSTEM_BUS_ADDRESS='", Patience));
    std::string const output = process.Output();
    std::size_t const at = output.find("='") + 2;
    WirePeer watcher(output.substr(at, output.find('\'', at) - at));
    for (int round = 0; round < 2; ++round) {
        ASSERT_TRUE(watcher.WaitForOwner("org.corvel.zviptvapi.dbushelper", true, Patience));
        ASSERT_TRUE(watcher.WaitForOwner("org.corvel.zviptvapi.dbushelper", false, Patience));
    }
    process.Signal(SIGTERM);
    EXPECT_EQ(process.Wait(Patience), (ExitStatus{0, 0}));
    EXPECT_THAT(process.Errors(),
                HasSubstr("zviptv-sim: the service dies\nzviptv-sim: the service comes back\n"));
}

/// A terminal's Ctrl-C goes to the whole foreground group.
TEST(Supervision, EndsInOrderWhenItsGroupIsInterrupted)
{
    ChildProcess process({"setsid", ZVIPTV_SIM, "--ts", ZVIPTV_SAMPLE_FILE, "--bus", "private", "--quiet"});
    ASSERT_TRUE(process.WaitForOutput("export DBUS_SYSTEM_BUS_ADDRESS='", Patience));
    ASSERT_EQ(kill(-process.Pid(), SIGINT), 0);
    EXPECT_EQ(process.Wait(Patience), (ExitStatus{0, 0}));
    EXPECT_THAT(process.Errors(), IsEmpty());
}

} // namespace
} // namespace zviptv::test
