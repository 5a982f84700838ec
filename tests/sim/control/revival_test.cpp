// SPDX-License-Identifier: MIT
#include "Remote.h"

#include <cstdio>

namespace zviptv::test {
namespace {

using testing::StartsWith;

/// A dead service comes back although something is missing.
class ServiceRevival : public ControlTest
{
protected:
    void RestartWithInput(std::string const& input)
    {
        Start({"--ts", input, "--loop"});
        m_remote.emplace(m_bus.Address());
        ASSERT_TRUE(m_remote->WaitFor("Running", "true"));
    }

    /// Loads an input, removes it and restarts the service. Returns the input.
    std::string RestartWithoutInput()
    {
        StartControlled();
        std::string const input = CopySample();
        EXPECT_EQ(m_remote->Call("Load", "('" + input + "',)"), Done);
        EXPECT_EQ(std::remove(input.c_str()), 0);
        EXPECT_EQ(m_remote->Call("Restart"), Done);
        return input;
    }
};

TEST_F(ServiceRevival, AResetStartsADeadServiceInTheInitialState)
{
    StartControlled({"--loop", "--fault", "MuteAudio=result:3"});
    std::string const faults = m_remote->Get("Faults");
    pid_t const first = NewService();
    ASSERT_EQ(m_remote->Call("SetSpeed", "(2.0,)"), Done);
    ASSERT_EQ(m_remote->Call("ClearFaults"), Done);
    ASSERT_EQ(m_remote->Call("Lock", "('service',)"), Done);
    ASSERT_EQ(m_remote->Call("Load", "('" + CopySample() + "',)"), Done);
    ASSERT_EQ(m_remote->Call("Die", "({},)"), Done);
    ASSERT_EQ(m_remote->Call("Reset"), Done);
    EXPECT_NE(m_watcher.GetNameOwner("org.corvel.zviptvapi.dbushelper"), "");
    EXPECT_EQ(m_remote->Get("Running"), "true");
    EXPECT_NE(NewService(first), 0);
    EXPECT_EQ(m_remote->Get("Speed"), "1.0");
    EXPECT_EQ(m_remote->Get("Faults"), faults);
    EXPECT_EQ(m_remote->Get("ServiceLocked"), "false");
    EXPECT_EQ(m_remote->Get("Input"), std::string("'") + ZVIPTV_SAMPLE_FILE + "'");
    EXPECT_EQ(m_remote->Get("SourceState"), "'playing'");
    EXPECT_LT(m_remote->Number("Position"), 3);
}

/// It does not wait for the planned return.
TEST_F(ServiceRevival, AResetRefusesWaitingCalls)
{
    StartControlled();
    ASSERT_EQ(m_remote->Call("Die", "({'for': <100000.0>},)"), Done);
    m_remote->Send("Mute", "('audio', true)");
    ASSERT_EQ(m_remote->Call("Reset"), Done);
    EXPECT_EQ(m_remote->Get("AudioMuted"), "false");
}

TEST_F(ServiceRevival, AResetStartsAServiceThatEnded)
{
    std::string const script = R"(
        kill -KILL $ZVIPTV_SIM_PID
        until "$0" sim status | grep -q '^Running: *no'; do :; done
        "$0" sim pause; echo pause $?
        "$0" sim reset; echo reset $?
        "$0" call MuteAudio 1)";
    ChildProcess process(
        {ZVIPTV_SIM, "--ts", ZVIPTV_SAMPLE_FILE, "--loop", "--", "sh", "-c", script, ZVIPTVCTL});
    EXPECT_EQ(process.Wait(Patience), (ExitStatus{0, 0})) << process.Errors();
    EXPECT_EQ(process.Output(), "pause 3\nreset 0\nresult: true\n");
}

TEST_F(ServiceRevival, AMissingInputChangesTheSourceState)
{
    std::string const other = RestartWithoutInput();
    EXPECT_EQ(m_remote->Get("SourceState"), "'error'");
    EXPECT_EQ(m_remote->Get("Input"), "'" + other + "'");
    EXPECT_EQ(m_remote->Call("Seek", "(3.0,)"),
              Invalid + other + " cannot be played: load another input first");
    EXPECT_TRUE(m_simulator->WaitForErrors(
        "zviptv-sim: cannot open " + other + ": No such file or directory; the service continues to answer\n",
        Patience))
        << m_simulator->Errors();
    Application application;
    application.Announce("PLAYERCONTROL");
    EXPECT_EQ(application.Ask("PLAYERCONTROL", {{"functionname", "GetSourceState"}}).Value("sourcestate"),
              "4");
    ASSERT_EQ(m_remote->Call("Reset"), Done);
    EXPECT_EQ(m_remote->Get("SourceState"), "'playing'");
}

TEST_F(ServiceRevival, ARestoredInputIsPlayedAfterARestart)
{
    std::string const other = RestartWithoutInput();
    CopySample();
    ASSERT_EQ(m_remote->Call("Restart"), Done);
    EXPECT_EQ(m_remote->Get("SourceState"), "'playing'");
    EXPECT_EQ(m_remote->Get("Input"), "'" + other + "'");
}

/// Also that of the command line, which need not be the present one.
TEST_F(ServiceRevival, SurvivesTheLossOfTheFirstInput)
{
    std::string const first = CopySample("first.ts");
    RestartWithInput(first);
    ASSERT_EQ(std::remove(first.c_str()), 0);
    ASSERT_EQ(m_remote->Call("Restart"), Done);
    EXPECT_EQ(m_remote->Get("SourceState"), "'error'");
    ASSERT_EQ(m_remote->Call("Load", std::string("('") + ZVIPTV_SAMPLE_FILE + "',)"), Done);
    EXPECT_TRUE(m_remote->WaitFor("SourceState", "'playing'"));
    ASSERT_EQ(m_remote->Call("Restart"), Done);
    EXPECT_EQ(m_remote->Get("SourceState"), "'playing'");
    EXPECT_EQ(m_remote->Get("Input"), std::string("'") + ZVIPTV_SAMPLE_FILE + "'");
}

/// The start state needs the input. The simulator stays, so that the caller can try again.
TEST_F(ServiceRevival, AResetReportsThatTheServiceDidNotStart)
{
    std::string const first = CopySample("first.ts");
    RestartWithInput(first);
    ASSERT_EQ(m_remote->Call("Die", "({},)"), Done);
    ASSERT_EQ(std::remove(first.c_str()), 0);
    EXPECT_EQ(m_remote->Call("Reset"),
              std::string(Failed) + "the service did not start; fix the error that zviptv-sim has printed, "
                                    "then run 'zviptvctl sim restart'");
    EXPECT_TRUE(m_simulator->WaitForErrors(
        "zviptv-sim: cannot open " + first + ": No such file or directory\n", Patience))
        << m_simulator->Errors();
    EXPECT_EQ(m_remote->Get("Running"), "false");
    EXPECT_THAT(m_remote->Call("Pause"), StartsWith(NotRunning));
    CopySample("first.ts");
    ASSERT_EQ(m_remote->Call("Reset"), Done);
    EXPECT_EQ(m_remote->Get("SourceState"), "'playing'");
}

TEST_F(ServiceRevival, AServiceReturnsWithoutItsGuide)
{
    std::string const guide = CopyGuide();
    StartControlled({"--loop", "--guide", guide});
    ASSERT_EQ(std::remove(guide.c_str()), 0);
    ASSERT_EQ(m_remote->Call("Restart"), Done);
    EXPECT_EQ(m_remote->Get("SourceState"), "'playing'");
    EXPECT_TRUE(m_simulator->WaitForErrors(
        guide + ": No such file or directory; the service continues without this guide\n", Patience))
        << m_simulator->Errors();
    Application application;
    application.Announce("IPGUTIL");
    EXPECT_EQ(application.Ask("IPGUTIL", {{"functionname", "ExistXmlForIPG"}}).Value("data"), "0");
    CopyGuide();
    ASSERT_EQ(m_remote->Call("Restart"), Done);
    Application other;
    other.Announce("IPGUTIL");
    EXPECT_EQ(other.Ask("IPGUTIL", {{"functionname", "ExistXmlForIPG"}}).Value("data"), "1");
}

/// The command needs a service from its first line on.
TEST_F(ServiceRevival, ACommandWaitsForAServiceThatDiesDuringItsStart)
{
    ChildProcess process(
        {ZVIPTV_SIM, "--ts", ZVIPTV_SAMPLE_FILE, "--loop", "--", ZVIPTVCTL, "call", "MuteAudio", "1"});
    std::string const environment =
        ReadFile("/proc/" + std::to_string(StopStartingService(process.Pid())) + "/environ");
    std::string const variable = "DBUS_SYSTEM_BUS_ADDRESS=";
    Remote remote(environment.c_str() + environment.find(variable) + variable.size());
    ASSERT_TRUE(WaitUntil([&] { return remote.Get("Running") == "false"; }, Patience));
    ASSERT_EQ(remote.Call("Die", "({'for': <0.2>},)"), Done);
    EXPECT_EQ(process.Wait(Patience), (ExitStatus{0, 0})) << process.Errors();
    EXPECT_EQ(process.Output(), "result: true\n");
}

/// A call that waits for a permanently dead service would never be answered.
TEST_F(ServiceRevival, ARestartReturnsWhenTheServiceDiesAgain)
{
    StartControlled();
    ChildProcess restart({ZVIPTVCTL, "sim", "restart"});
    ASSERT_TRUE(m_remote->WaitForSignal("Died"));
    StopStartingService(m_simulator->Pid());
    ASSERT_EQ(m_remote->Get("Running"), "false");
    ASSERT_EQ(m_remote->Call("Die", "({},)"), Done);
    EXPECT_EQ(restart.Wait(Patience), (ExitStatus{3, 0}));
    EXPECT_EQ(restart.Errors(),
              "zviptvctl: the service died while it started; 'zviptvctl sim restart' starts it\n");
}

} // namespace
} // namespace zviptv::test
