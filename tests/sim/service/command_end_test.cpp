// SPDX-License-Identifier: MIT
#include "Processes.h"
#include "SimulatorTest.h"
#include "Terminal.h"
#include "WaitUntil.h"

#include <gmock/gmock.h>

#include <csignal>

namespace zviptv::test {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

constexpr char Killed[] = "zviptv-sim: the command did not end when asked to, and is killed\n";

std::vector<std::string> SimulatorWith(std::vector<std::string> const& command)
{
    std::vector<std::string> all{ZVIPTV_SIM, "--ts", ZVIPTV_SAMPLE_FILE, "--loop", "--"};
    all.insert(all.end(), command.begin(), command.end());
    return all;
}

std::vector<std::string> SimulatorWithScript(std::string const& script)
{
    return SimulatorWith({"sh", "-c", script});
}

TEST(CommandEnd, IsForcedWhenItIgnoresRequests)
{
    for (int const number : {SIGTERM, SIGHUP}) {
        ChildProcess process(
            SimulatorWithScript("trap '' TERM HUP; echo running; while :; do sleep 0.1; done"));
        ASSERT_TRUE(process.WaitForOutput("running\n", Patience));
        process.Signal(number);
        EXPECT_EQ(process.Wait(Patience), (ExitStatus{128 + SIGKILL, 0}));
        EXPECT_EQ(process.Errors(), Killed);
    }
}

TEST(CommandEnd, MayBeOrderly)
{
    ChildProcess process(
        SimulatorWithScript("trap 'echo told; exit 3' TERM; echo running; while :; do sleep 0.1; done"));
    ASSERT_TRUE(process.WaitForOutput("running\n", Patience));
    process.Signal(SIGTERM);
    EXPECT_EQ(process.Wait(Patience), (ExitStatus{3, 0}));
    EXPECT_EQ(process.Output(), "running\ntold\n");
    EXPECT_THAT(process.Errors(), IsEmpty());
}

/// It ignores SIGTERM and ends on SIGHUP.
TEST(CommandEnd, EndsAnInteractiveShell)
{
    ChildProcess process(SimulatorWith({"bash", "--norc", "-i"}));
    ASSERT_TRUE(process.WriteInput("echo run''ning\n"));
    ASSERT_TRUE(process.WaitForOutput("running\n", Patience));
    process.Signal(SIGTERM);
    EXPECT_EQ(process.Wait(Patience), (ExitStatus{128 + SIGHUP, 0}));
    EXPECT_THAT(process.Errors(), testing::Not(HasSubstr(Killed)));
}

TEST(CommandEnd, FollowsAnInterruptOfTheSimulatorAlone)
{
    ChildProcess process(SimulatorWithScript("echo running; exec sleep 1000"));
    ASSERT_TRUE(process.WaitForOutput("running\n", Patience));
    process.Signal(SIGINT);
    EXPECT_EQ(process.Wait(Patience), (ExitStatus{128 + SIGINT, 0}));
}

TEST(CommandEnd, FollowsTheTerminalsCtrlC)
{
    Terminal const terminal(80);
    std::vector<std::string> command{"sh", "-c", "exec setsid --ctty \"$0\" \"$@\" <\"$TERMINAL\""};
    std::vector<std::string> const simulator = SimulatorWithScript("echo running; exec sleep 1000");
    command.insert(command.end(), simulator.begin(), simulator.end());
    ChildProcess process(command, {{"TERMINAL", terminal.Name()}});
    ASSERT_TRUE(process.WaitForOutput("running\n", Patience)) << process.Errors();
    ASSERT_TRUE(terminal.Type("\x03"));
    EXPECT_EQ(process.Wait(Patience), (ExitStatus{128 + SIGINT, 0}));
    EXPECT_THAT(process.Errors(), IsEmpty());
}

/// A command that outlives a Ctrl-C keeps the service.
TEST(CommandEnd, IsAwaitedAfterTheTerminalsCtrlC)
{
    Terminal const terminal(80);
    std::vector<std::string> command{"sh", "-c", "exec setsid --ctty \"$0\" \"$@\" <\"$TERMINAL\""};
    std::vector<std::string> const simulator = SimulatorWithScript(
        "trap '\"$ZVIPTVCTL\" call MuteAudio 1; exit 4' INT; echo running; while :; do sleep 0.1; done");
    command.insert(command.end(), simulator.begin(), simulator.end());
    ChildProcess process(command, {{"TERMINAL", terminal.Name()}, {"ZVIPTVCTL", ZVIPTVCTL}});
    ASSERT_TRUE(process.WaitForOutput("running\n", Patience)) << process.Errors();
    ASSERT_TRUE(terminal.Type("\x03"));
    EXPECT_EQ(process.Wait(Patience), (ExitStatus{4, 0}));
    EXPECT_EQ(process.Output(), "running\nresult: true\n");
}

TEST(CommandEnd, FollowsTheEndOfTheSimulator)
{
    ChildProcess process(
        SimulatorWithScript("trap '' TERM HUP INT; echo $$; echo running; while :; do sleep 0.1; done"));
    ASSERT_TRUE(process.WaitForOutput("running\n", Patience));
    auto const command = static_cast<pid_t>(std::stol(process.Output()));
    process.Signal(SIGKILL);
    EXPECT_TRUE(WaitUntil([command] { return HasEnded(command); }, Patience));
}

} // namespace
} // namespace zviptv::test
