// SPDX-License-Identifier: MIT
#include "Processes.h"
#include "SimulatorTest.h"
#include "WaitUntil.h"
#include "WirePeer.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>

namespace zviptv::test {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

/// A simulator with a private bus, and everything that belongs to it.
class PrivateSimulator : public testing::Test
{
protected:
    PrivateSimulator() : m_process({ZVIPTV_SIM, "--ts", ZVIPTV_SAMPLE_FILE, "--loop", "--bus", "private"})
    {
        EXPECT_TRUE(m_process.WaitForOutput("'\n", Patience));
        std::string const output = m_process.Output();
        std::size_t const at = output.find("='") + 2;
        m_address = output.substr(at, output.find('\'', at) - at);
        m_children = ChildrenOf(m_process.Pid());
    }

    /// The name of the bus's socket.
    std::string Socket() const
    {
        std::string const mark = "unix:abstract=";
        return m_address.substr(mark.size(), m_address.find(',') - mark.size());
    }

    ChildProcess m_process;
    std::string m_address;
    std::vector<pid_t> m_children; ///< the bus and the service
};

TEST_F(PrivateSimulator, NothingIsLeftWhenItIsKilled)
{
    ASSERT_EQ(m_children.size(), 2U);
    ASSERT_THAT(m_address, testing::StartsWith("unix:abstract=zviptv-bus-"));
    ASSERT_THAT(ReadFile("/proc/net/unix"), HasSubstr("@" + Socket()));
    WirePeer peer(m_address);
    m_process.Signal(SIGKILL);
    EXPECT_EQ(m_process.Wait(Patience), (ExitStatus{-1, SIGKILL}));
    EXPECT_TRUE(peer.WaitDisconnected(Patience));
    for (pid_t const child : m_children) {
        EXPECT_TRUE(WaitUntil([child] { return HasEnded(child); }, Patience)) << child;
    }
    EXPECT_TRUE(WaitUntil(
        [this] { return ReadFile("/proc/net/unix").find("@" + Socket()) == std::string::npos; }, Patience));
}

TEST_F(PrivateSimulator, NothingIsLeftWhenItIsTerminated)
{
    m_process.Signal(SIGTERM);
    EXPECT_EQ(m_process.Wait(Patience), (ExitStatus{0, 0}));
    for (pid_t const child : m_children) {
        EXPECT_TRUE(HasEnded(child)) << child;
    }
    EXPECT_THAT(ReadFile("/proc/net/unix"), Not(HasSubstr("@" + Socket())));
}

/// Only the user who started it may use it. The test must be root to become another user.
TEST_F(PrivateSimulator, RefusesOtherUsers)
{
    if (geteuid() != 0) {
        GTEST_SKIP() << "needs root to act for another user";
    }
    std::vector<std::string> const command{"dbus-send",
                                           "--bus=" + m_address,
                                           "--print-reply",
                                           "--dest=org.freedesktop.DBus",
                                           "/org/freedesktop/DBus",
                                           "org.freedesktop.DBus.GetId"};
    ChildProcess own(command);
    EXPECT_EQ(own.Wait(Patience), (ExitStatus{0, 0})) << own.Errors();
    std::vector<std::string> other{"setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"};
    other.insert(other.end(), command.begin(), command.end());
    ChildProcess stranger(other);
    EXPECT_EQ(stranger.Wait(Patience), (ExitStatus{1, 0}));
    EXPECT_THAT(stranger.Errors(), HasSubstr("Failed to"));
}

/// Both tools with every choice of standard streams closed: what is meant for the user gets neither into a
/// pipe of the private bus nor into a connection.
TEST(ClosedStreams, AreHarmless)
{
    for (std::string const closed : {"<&-", "2>&-", "<&- 2>&-", ">&-", ">&- 2>&-", "<&- >&- 2>&-"}) {
        std::string const result = "echo $? > \"$RESULT\"";
        std::string const path = testing::TempDir() + "closed-" + std::to_string(getpid());
        ChildProcess process(
            {"sh", "-c",
             "\"$0\" --verbose --ts \"$1\" --loop -- sh -c 'exec \"$0\" --log call MuteAudio 1 "
             "> \"$RESULT.out\"' \"$2\" " +
                 closed + "; " + result,
             ZVIPTV_SIM, ZVIPTV_SAMPLE_FILE, ZVIPTVCTL},
            {{"RESULT", path}});
        EXPECT_EQ(process.Wait(Patience), (ExitStatus{0, 0})) << closed;
        EXPECT_EQ(ReadFile(path), "0\n") << closed << "\n" << process.Errors();
        EXPECT_EQ(ReadFile(path + ".out"), "result: true\n") << closed;
        std::remove(path.c_str());
        std::remove((path + ".out").c_str());
    }
}

TEST(ClosedStreams, MessagesAppearOnTheOpenStream)
{
    ChildProcess process({"sh", "-c", "exec \"$0\" --ts \"$1\" -- \"$2\" status <&- >&-", ZVIPTV_SIM,
                          ZVIPTV_SAMPLE_FILE, ZVIPTVCTL});
    EXPECT_EQ(process.Wait(Patience), (ExitStatus{6, 0}));
    EXPECT_EQ(process.Errors(), "zviptvctl: cannot write standard output: it is closed\n");
}

/// The private bus needs no folder.
TEST(TemporaryFolder, NeedNotExist)
{
    ChildProcess process({ZVIPTV_SIM, "--ts", ZVIPTV_SAMPLE_FILE, "--", ZVIPTVCTL, "call", "MuteAudio", "1"},
                         {{"TMPDIR", "/no/such/folder"}});
    EXPECT_EQ(process.Wait(Patience), (ExitStatus{0, 0})) << process.Errors();
    EXPECT_EQ(process.Output(), "result: true\n");
    EXPECT_THAT(process.Errors(), IsEmpty());
}

/// No dbus-daemon in PATH.
TEST(PrivateBusOfTheSimulator, ReportsWhyItDoesNotStart)
{
    ChildProcess process({ZVIPTV_SIM, "--ts", ZVIPTV_SAMPLE_FILE, "--bus", "private"},
                         {{"PATH", "/no/such"}});
    EXPECT_EQ(process.Wait(Patience), (ExitStatus{1, 0}));
    EXPECT_THAT(process.Errors(), HasSubstr("zviptv-sim: the private bus did not start: install the package "
                                            "dbus-daemon"));
    EXPECT_THAT(process.Errors(), HasSubstr("cannot run dbus-daemon: No such file or directory"));
}

} // namespace
} // namespace zviptv::test
