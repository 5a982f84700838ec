// SPDX-License-Identifier: MIT
#include "SimulatorTest.h"
#include "WirePeer.h"

#include <gmock/gmock.h>

#include <unistd.h>

#include <fstream>
#include <optional>

namespace zviptv::test {
namespace {

using testing::HasSubstr;

constexpr char ServiceName[] = "org.corvel.zviptvapi.dbushelper";
constexpr char Dies[] = "zviptv-sim: the service dies\n";
constexpr char ComesBack[] = "zviptv-sim: the service comes back\n";
constexpr char Crashed[] = "zviptv-sim: the service was ended by signal 6 (Aborted)\n";

/// A simulator with a command that prints the address of the bus, and ends with 5 when it reads a line.
class DyingService : public testing::Test
{
protected:
    void Start(std::vector<std::string> const& options, std::string const& first = "")
    {
        std::vector<std::string> command{ZVIPTV_SIM, "--ts", ZVIPTV_SAMPLE_FILE, "--loop"};
        command.insert(command.end(), options.begin(), options.end());
        std::string const script = first + "echo $DBUS_SYSTEM_BUS_ADDRESS; read line; exit 5";
        command.insert(command.end(), {"--", "sh", "-c", script});
        m_process.emplace(command);
        ASSERT_TRUE(m_process->WaitForOutput("\n", Patience)) << m_process->Errors();
        std::string const output = m_process->Output();
        m_watcher.emplace(output.substr(0, output.find('\n')));
    }

    bool WaitForService(bool there) { return m_watcher->WaitForOwner(ServiceName, there, Patience); }

    void ExpectEnd()
    {
        EXPECT_TRUE(m_process->WriteInput("\n"));
        EXPECT_EQ(m_process->Wait(Patience), (ExitStatus{5, 0}));
    }

    std::optional<ChildProcess> m_process;
    std::optional<WirePeer> m_watcher;
};

TEST_F(DyingService, IsPermanent)
{
    Start({"--die-after", "1"});
    ASSERT_TRUE(WaitForService(false));
    EXPECT_FALSE(m_process->WaitForErrors(ComesBack, std::chrono::seconds(2)));
    EXPECT_EQ(m_watcher->GetNameOwner(ServiceName), "");
    ExpectEnd();
    EXPECT_EQ(m_process->Errors(), Dies);
}

TEST_F(DyingService, AndReturningWithACommand)
{
    Start({"--die-after", "0.5", "--restart-after", "0.1"});
    for (int round = 0; round < 2; ++round) {
        ASSERT_TRUE(WaitForService(false));
        ASSERT_TRUE(WaitForService(true));
    }
    ExpectEnd();
    EXPECT_THAT(m_process->Errors(), HasSubstr(std::string(Dies) + ComesBack + Dies + ComesBack));
}

/// It has ended before its time to die: that time brings it back as little as anything else.
TEST_F(DyingService, DoesNotFollowACrash)
{
    for (std::vector<std::string> const& more :
         std::vector<std::vector<std::string>>{{}, {"--restart-after", "0.1"}}) {
        std::vector<std::string> options{"--die-after", "3"};
        options.insert(options.end(), more.begin(), more.end());
        Start(options, "kill -ABRT $ZVIPTV_SIM_PID; ");
        ASSERT_TRUE(m_process->WaitForErrors(Crashed, Patience));
        EXPECT_FALSE(m_process->WaitForErrors(ComesBack, std::chrono::seconds(4)));
        EXPECT_EQ(m_watcher->GetNameOwner(ServiceName), "");
        ExpectEnd();
        EXPECT_EQ(m_process->Errors(), Crashed);
    }
}

TEST_F(DyingService, WithACommandReportsACrash)
{
    Start({}, "kill -ABRT $ZVIPTV_SIM_PID; ");
    EXPECT_TRUE(m_process->WaitForErrors(Crashed, Patience));
    ExpectEnd();
}

/// Without a command the end of the service is the simulator's.
TEST(DyingServiceAlone, EndsTheSimulatorOnlyAfterACrash)
{
    ChildProcess process({ZVIPTV_SIM, "--ts", ZVIPTV_SAMPLE_FILE, "--bus", "private", "--die-after", "0.1"});
    ASSERT_TRUE(process.WaitForErrors(Dies, Patience));
    EXPECT_FALSE(process.Wait(std::chrono::seconds(1)));
    process.Signal(SIGTERM);
    EXPECT_EQ(process.Wait(Patience), (ExitStatus{0, 0}));
    EXPECT_EQ(process.Errors(), Dies);
}

/// The guide file was removed meanwhile.
TEST_F(DyingService, ReportsAReturnWithoutItsGuide)
{
    std::string const path = testing::TempDir() + "dying-" + std::to_string(getpid()) + ".xml";
    std::ofstream(path) << std::ifstream(ZVIPTV_SAMPLE_GUIDE).rdbuf();
    Start({"--guide", path, "--die-after", "0.5", "--restart-after", "0.1"}, "rm '" + path + "'; ");
    EXPECT_TRUE(m_process->WaitForErrors(
        std::string(Dies) + ComesBack + "zviptv-sim: cannot load the guide: " + path +
            ": No such file or directory; the service continues without this guide\n",
        Patience));
    ExpectEnd();
}

} // namespace
} // namespace zviptv::test
