// SPDX-License-Identifier: MIT
#include "ChildProcess.h"
#include "MessageLog.h"
#include "WaitUntil.h"

#include <gtest/gtest.h>

#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <thread>

using namespace zviptv::test;
using namespace std::chrono_literals;

namespace {

std::vector<std::string> Shell(std::string const& script)
{
    return {"sh", "-c", script};
}

/// The role of the process that starts another one and never ends by itself.
[[noreturn]] void StartAndHang()
{
    ChildProcess const child({"sleep", "1000"});
    std::printf("\nchild %d started\n", static_cast<int>(child.Pid()));
    std::fflush(stdout);
    while (true) {
        pause();
    }
}

} // namespace

TEST(ChildProcessTest, CatchesOutputErrorsAndExitCode)
{
    ChildProcess child(Shell("echo out; echo err >&2; exit 3"));
    EXPECT_EQ(child.Wait(patience), (ExitStatus{3, 0}));
    EXPECT_EQ(child.Output(), "out\n");
    EXPECT_EQ(child.Errors(), "err\n");
}

TEST(ChildProcessTest, PassesArgumentsAndEnvironmentAsTheyAre)
{
    setenv("ZVIPTV_KEPT", "kept", 1);
    setenv("ZVIPTV_CHANGED", "before", 1);
    ChildProcess child(
        {"sh", "-c", "printf '%s|' \"$@\" $ZVIPTV_KEPT $ZVIPTV_CHANGED", "sh", "a b", "", "$c"},
        {{"ZVIPTV_CHANGED", "after"}});
    EXPECT_EQ(child.Wait(patience), (ExitStatus{0, 0}));
    EXPECT_EQ(child.Output(), "a b||$c|kept|after|");
    unsetenv("ZVIPTV_KEPT");
    unsetenv("ZVIPTV_CHANGED");
}

TEST(ChildProcessTest, CompleteOutputOfALargeWriter)
{
    ChildProcess child(Shell("head -c 3000000 /dev/zero"));
    EXPECT_EQ(child.Wait(patience), (ExitStatus{0, 0}));
    EXPECT_EQ(child.Output().size(), 3000000U);
}

TEST(ChildProcessTest, WaitTimesOutOnARunningProcessAndSignalsReachIt)
{
    ChildProcess child(Shell("trap 'echo asked; exit 7' TERM; echo ready; while :; do sleep 0.05; done"));
    ASSERT_TRUE(child.WaitForOutput("ready", patience));
    EXPECT_FALSE(child.Wait(10ms));
    child.Signal(SIGTERM);
    EXPECT_EQ(child.Wait(patience), (ExitStatus{7, 0}));
    EXPECT_EQ(child.Output(), "ready\nasked\n");
    child.Signal(SIGTERM);
}

TEST(ChildProcessTest, ReportsTheSignalThatEndedIt)
{
    ChildProcess child({"sleep", "1000"});
    child.Signal(SIGKILL);
    auto const status = child.Wait(patience);
    EXPECT_EQ(status, (ExitStatus{-1, SIGKILL}));
    EXPECT_EQ(testing::PrintToString(*status), "ended by signal 9");
}

TEST(ChildProcessTest, TheDestructorEndsIt)
{
    pid_t pid = 0;
    {
        ChildProcess const child({"sleep", "1000"});
        pid = child.Pid();
        EXPECT_EQ(kill(pid, 0), 0);
    }
    EXPECT_EQ(kill(pid, 0), -1);
    EXPECT_EQ(errno, ESRCH);
}

TEST(ChildProcessTest, FeedsStandardInput)
{
    ChildProcess child({"cat"});
    EXPECT_TRUE(child.WriteInput("one\n"));
    EXPECT_TRUE(child.WaitForOutput("one\n", patience));
    EXPECT_TRUE(child.WriteInput("two\n"));
    child.CloseInput();
    EXPECT_EQ(child.Wait(patience), (ExitStatus{0, 0}));
    EXPECT_EQ(child.Output(), "one\ntwo\n");
    EXPECT_FALSE(child.WriteInput("three\n"));
}

TEST(ChildProcessTest, WritingToAProcessThatIsGoneFails)
{
    ChildProcess child({"true"});
    ASSERT_TRUE(child.Wait(patience));
    EXPECT_FALSE(child.WriteInput("anybody there?"));
}

TEST(ChildProcessTest, WaitForTextReturnsWhenTheProcessEnds)
{
    ChildProcess child(Shell("echo something >&2"));
    EXPECT_FALSE(child.WaitForOutput("something", patience));
    EXPECT_TRUE(child.WaitForErrors("something", patience));
}

TEST(ChildProcessTest, WaitDoesNotWaitForAGrandchildWithThePipe)
{
    ChildProcess child(Shell("sleep 30 & echo $!; exit 0"));
    EXPECT_EQ(child.Wait(patience), (ExitStatus{0, 0}));
    kill(static_cast<pid_t>(std::stol(child.Output())), SIGKILL);
}

TEST(ChildProcessTest, ThrowsForAProgramThatDoesNotExist)
{
    try {
        ChildProcess const child({"/no/such/program"});
        FAIL() << "runs as " << child.Pid();
    } catch (std::system_error const& error) {
        EXPECT_EQ(error.code(), std::errc::no_such_file_or_directory);
    }
}

TEST(ChildProcessTest, OutlivesTheThreadThatStartedIt)
{
    std::unique_ptr<ChildProcess> child;
    std::thread([&] { child = std::make_unique<ChildProcess>(std::vector<std::string>{"cat"}); }).join();
    EXPECT_TRUE(child->WriteInput("alive"));
    EXPECT_TRUE(child->WaitForOutput("alive", patience));
}

/// The parent, which is this test program run again, is killed and cannot clean up. The kernel must.
TEST(ChildProcessTest, DiesWithTheProcessThatStartedIt)
{
    if (getenv("ZVIPTV_TEST_STARTER") != nullptr) {
        StartAndHang();
    }
    // The orphan then becomes a child of this process, which can see its end.
    ASSERT_EQ(prctl(PR_SET_CHILD_SUBREAPER, 1), 0);
    ChildProcess starter({std::filesystem::read_symlink("/proc/self/exe").string(),
                          "--gtest_filter=ChildProcessTest.DiesWithTheProcessThatStartedIt"},
                         {{"ZVIPTV_TEST_STARTER", "1"}});
    ASSERT_TRUE(starter.WaitForOutput(" started\n", patience));
    auto const output = starter.Output();
    auto const orphan = static_cast<pid_t>(std::stol(output.substr(output.find("\nchild ") + 7)));
    EXPECT_EQ(kill(orphan, 0), 0) << output;

    starter.Signal(SIGKILL);
    ASSERT_TRUE(starter.Wait(patience));
    int status = 0;
    EXPECT_TRUE(WaitUntil([&] { return waitpid(orphan, &status, WNOHANG) == orphan; }, patience));
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << status;
    prctl(PR_SET_CHILD_SUBREAPER, 0);
}
