// SPDX-License-Identifier: MIT
#include "Remote.h"

namespace zviptv::test {
namespace {

using testing::StartsWith;

constexpr char Helper[] = "org.corvel.zviptvapi.dbushelper";

class ServiceDeath : public ControlTest
{
};

TEST_F(ServiceDeath, IsPermanentUntilARestart)
{
    StartControlled();
    pid_t const first = NewService();
    EXPECT_EQ(first, ServicePid());
    ASSERT_EQ(m_remote->Call("Die", "({},)"), Done);
    EXPECT_TRUE(HasEnded(first));
    EXPECT_TRUE(m_watcher.WaitForOwner(Helper, false));
    EXPECT_EQ(m_remote->Get("Running"), "false");
    EXPECT_EQ(m_remote->Get("ServicePid"), "uint32 0");
    EXPECT_TRUE(m_remote->WaitForSignal("Died"));
    EXPECT_EQ(m_remote->Call("Die", "({},)"),
              std::string(NotRunning) + "the service is dead; 'zviptvctl sim restart' starts it");
    EXPECT_THAT(m_remote->Call("Pause"),
                StartsWith(std::string(NotRunning) + "the service is dead and does not"));
    ASSERT_EQ(m_remote->Call("Restart"), Done);
    EXPECT_NE(m_watcher.GetNameOwner(Helper), ""); // answered when applications find it
    EXPECT_NE(NewService(first), 0);
    EXPECT_TRUE(m_remote->WaitForSignal("Restarted"));
}

TEST_F(ServiceDeath, EndsAfterTheTimeThatWasGiven)
{
    StartControlled();
    pid_t const first = NewService();
    ASSERT_EQ(m_remote->Call("Die", "({'for': <0.3>},)"), Done);
    EXPECT_NE(NewService(first), 0);
    EXPECT_THAT(m_remote->Call("Die", "({'for': <-1.0>},)"),
                StartsWith(std::string(Invalid) + "'-1.0' is not a number of seconds"));
    EXPECT_EQ(m_remote->Get("Running"), "true");
}

TEST_F(ServiceDeath, ARestartKillsAServiceThatLives)
{
    StartControlled();
    pid_t const first = NewService();
    ASSERT_EQ(m_remote->Call("Restart"), Done);
    EXPECT_TRUE(HasEnded(first));
    EXPECT_NE(NewService(first), 0);
}

/// With --restart-after, the service comes back after every kind of death.
TEST_F(ServiceDeath, ByAForeignSignalCounts)
{
    StartControlled({"--loop", "--restart-after", "0.1"});
    pid_t service = NewService();
    for (int const number : {SIGKILL, SIGTERM, SIGINT, SIGHUP}) {
        ASSERT_GT(service, 0);
        ASSERT_EQ(kill(service, number), 0);
        pid_t const next = NewService(service);
        ASSERT_NE(next, service) << number;
        ASSERT_TRUE(m_watcher.WaitForOwner(Helper, true));
        service = next;
    }
}

TEST_F(ServiceDeath, ByAForeignSignalEndsASimulatorThatDoesNotRestart)
{
    StartControlled();
    pid_t const service = NewService();
    ASSERT_GT(service, 0);
    ASSERT_EQ(kill(service, SIGKILL), 0);
    EXPECT_EQ(m_simulator->Wait(Patience), (ExitStatus{128 + SIGKILL, 0}));
}

/// A crash of the simulator's own code shall be seen.
TEST_F(ServiceDeath, ByACrashEndsTheSimulator)
{
    StartControlled({"--loop", "--restart-after", "0.1"});
    pid_t const service = NewService();
    ASSERT_GT(service, 0);
    ASSERT_EQ(kill(service, SIGABRT), 0);
    EXPECT_EQ(m_simulator->Wait(Patience), (ExitStatus{128 + SIGABRT, 0}));
}

TEST_F(ServiceDeath, OfTheSimulatorEndsTheService)
{
    StartControlled();
    pid_t const service = NewService();
    m_simulator->Signal(SIGKILL);
    EXPECT_TRUE(WaitUntil([service] { return HasEnded(service); }, Patience));
    EXPECT_TRUE(m_watcher.WaitForOwner(Helper, false));
}

/// The broadcast continues while the service is dead.
TEST_F(ServiceDeath, TheClockContinues)
{
    StartControlled({"--time", "1774735200", "--speed", "2"});
    pid_t const first = NewService();
    EXPECT_EQ(m_remote->Get("SourceState"), "'playing'");
    ASSERT_EQ(m_remote->Call("Die", "({},)"), Done);
    double const position = m_remote->Number("Position");
    double const guide = m_remote->Number("GuideTime");
    std::this_thread::sleep_for(std::chrono::seconds(1)); // as long as it is off
    EXPECT_GE(m_remote->Number("Position"), position + 1.9);
    ASSERT_EQ(m_remote->Call("Restart"), Done);
    NewService(first);
    EXPECT_GE(m_remote->Number("Position"), position + 2.0);
    EXPECT_GE(m_remote->Number("GuideTime"), guide + 1);
    EXPECT_LE(m_remote->Number("GuideTime"), guide + 60);
}

TEST_F(ServiceDeath, TheClockRestartsOnRequest)
{
    StartControlled({"--time", "1774735200", "--restart-from-start"});
    pid_t const first = NewService();
    ASSERT_EQ(m_remote->Call("Seek", "(10.0,)"), Done);
    ASSERT_EQ(m_remote->Call("SetTime", "(1800000000,)"), Done);
    ASSERT_EQ(m_remote->Call("Restart"), Done);
    NewService(first);
    EXPECT_LT(m_remote->Number("Position"), 5);
    EXPECT_NEAR(m_remote->Number("GuideTime"), 1774735200, 5);
}

TEST_F(ServiceDeath, KeepsWhatTheControlInterfaceSet)
{
    StartControlled();
    pid_t const first = NewService();
    std::string const other = CopySample();
    ASSERT_EQ(m_remote->Call("Load", "('" + other + "',)"), Done);
    ASSERT_EQ(m_remote->Call("SetTime", "(1774735200,)"), Done);
    ASSERT_EQ(m_remote->Call("SetSpeed", "(2.0,)"), Done);
    ASSERT_EQ(m_remote->Call("Lock", "('service',)"), Done);
    ASSERT_EQ(m_remote->Call("Lock", "('programme',)"), Done);
    ASSERT_EQ(m_remote->Call("AddFault", "('MuteAudio=drop', {'count': <uint32 3>})"), Done);
    ASSERT_EQ(m_remote->Call("Select", "('audio', 1)"), Done);
    ASSERT_EQ(m_remote->Call("Mute", "('audio', true)"), Done);
    ASSERT_EQ(m_remote->Call("Pause"), Done);
    ASSERT_EQ(m_remote->Call("Seek", "(7.5,)"), Done);
    std::string const guide = m_remote->Get("GuideTime");
    ASSERT_EQ(m_remote->Call("Restart"), Done);
    NewService(first);
    EXPECT_EQ(m_remote->Get("Input"), "'" + other + "'");
    EXPECT_EQ(m_remote->Get("GuideTime"), guide);
    EXPECT_EQ(m_remote->Get("Speed"), "2.0");
    EXPECT_EQ(m_remote->Get("Paused"), "true");
    EXPECT_NEAR(m_remote->Number("Position"), 7.5, 0.001);
    EXPECT_EQ(m_remote->Get("ServiceLocked"), "true");
    EXPECT_EQ(m_remote->Get("ProgrammeLocked"), "true");
    EXPECT_EQ(m_remote->Get("Faults"), "[{'fault': <'MuteAudio=drop,count=3'>, 'count': <uint32 3>}]");
    EXPECT_EQ(m_remote->Get("Audio"), "uint32 0"); // as after every start
    EXPECT_EQ(m_remote->Get("AudioMuted"), "false");
}

/// Other tracks, or a fault, are there before applications find the service again.
TEST_F(ServiceDeath, CallsWaitForAServiceThatComesBack)
{
    StartControlled();
    pid_t const first = NewService();
    ASSERT_EQ(m_remote->Call("Die", "({'for': <0.5>},)"), Done);
    EXPECT_EQ(m_remote->Get("Running"), "false");
    EXPECT_EQ(m_remote->Call("AddFault", "('MuteAudio=result:7', {})"), Done);
    ASSERT_TRUE(m_watcher.WaitForOwner(Helper, true));
    Application application;
    application.Announce("PLAYERCONTROL");
    EXPECT_EQ(Number(application.Ask("PLAYERCONTROL", {{"functionname", "MuteAudio"}, {"onoff", "1"}}),
                     "result_internal"),
              "7");
    NewService(first);
}

/// As if the service had played all the time.
TEST_F(ServiceDeath, CallsThatMoveTheClockWork)
{
    StartControlled();
    ASSERT_EQ(m_remote->Call("Die", "({'for': <0.5>},)"), Done);
    EXPECT_EQ(m_remote->Call("Seek", "(7.0,)"), Done);
    EXPECT_EQ(m_remote->Call("SetSpeed", "(2.0,)"), Done);
    EXPECT_EQ(m_remote->Call("Pause"), Done);
    ASSERT_TRUE(m_remote->WaitFor("Running", "true"));
    EXPECT_GE(m_remote->Number("Position"), 7.0);
    EXPECT_LT(m_remote->Number("Position"), 11.0);
    EXPECT_EQ(m_remote->Get("Speed"), "2.0");
    EXPECT_EQ(m_remote->Get("SourceState"), "'playing'");
}

TEST_F(ServiceDeath, ASeekWorksBeforeAStreamStartsAgain)
{
    StartControlled({"--loop", "--restart-from-start"});
    ASSERT_EQ(m_remote->Call("Pause"), Done);
    ASSERT_EQ(m_remote->Call("Die", "({'for': <0.5>},)"), Done);
    EXPECT_EQ(m_remote->Call("Seek", "(7.0,)"), Done);
    ASSERT_TRUE(m_remote->WaitFor("Running", "true"));
    EXPECT_NEAR(m_remote->Number("Position"), 7.0, 0.001);
}

TEST_F(ServiceDeath, ASeekIsRefusedWhileApplicationsAreAwaited)
{
    StartControlled({"--loop", "--wait-for", "1"});
    std::string const refusal =
        std::string(Invalid) + "play has not begun: --wait-for still waits for applications";
    EXPECT_EQ(m_remote->Call("Seek", "(7.0,)"), refusal);
    ASSERT_EQ(m_remote->Call("Die", "({'for': <0.5>},)"), Done);
    EXPECT_EQ(m_remote->Call("Seek", "(7.0,)"), refusal);
}

/// Its caller would not know of it.
TEST_F(ServiceDeath, DropsACallWhoseCallerHasLeft)
{
    StartControlled();
    ASSERT_EQ(m_remote->Call("Die", "({'for': <100000.0>},)"), Done);
    std::string name;
    {
        Remote caller(m_bus.Address());
        name = caller.Name();
        caller.Send("Mute", "('audio', true)");
    }
    ASSERT_TRUE(m_watcher.WaitForOwner(name, false));
    m_remote->Send("Mute", "('video', true)");
    ASSERT_EQ(m_remote->Call("Restart"), Done);
    EXPECT_EQ(m_remote->Get("VideoMuted"), "true");
    EXPECT_EQ(m_remote->Get("AudioMuted"), "false");
}

/// Killed at any moment of its life, again and again.
TEST_F(ServiceDeath, AtAnyMomentIsSurvived)
{
    StartControlled({"--loop", "--restart-after", "0"});
    ASSERT_EQ(m_remote->Call("AddFault", "('MuteAudio=result:7', {})"), Done);
    for (int round = 0; round < 40; ++round) {
        std::this_thread::sleep_for(std::chrono::milliseconds(3 * round % 60)); // the moment
        for (pid_t const service : ChildrenOf(m_simulator->Pid())) {
            if (service > 0 && m_remote->Get("Running") == "true") {
                kill(service, SIGKILL);
            }
        }
    }
    NewService();
    ASSERT_TRUE(m_watcher.WaitForOwner(Helper, true));
    EXPECT_EQ(m_remote->Get("Faults"), "[{'fault': <'MuteAudio=result:7'>}]");
}

} // namespace
} // namespace zviptv::test
