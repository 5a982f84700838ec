// SPDX-License-Identifier: MIT
#include "Remote.h"

namespace zviptv::test {
namespace {

using testing::HasSubstr;
using testing::Not;

std::string LossOf(std::string const& address)
{
    return "zviptv-sim: the bus " + address +
           " is lost: it died, or closed the connection; check that it runs, and start the simulator again\n";
}

class BusLoss : public ControlTest
{
};

TEST_F(BusLoss, EndsTheSimulatorWithExitCode1)
{
    StartControlled({"--loop", "--restart-after", "0"});
    m_bus.Kill();
    EXPECT_EQ(m_simulator->Wait(Patience), (ExitStatus{1, 0}));
    EXPECT_THAT(m_simulator->Errors(), HasSubstr(LossOf(m_bus.Address())));
    EXPECT_THAT(m_simulator->Errors(), Not(HasSubstr("status 0")));
}

TEST_F(BusLoss, IsNoticedWhileTheServiceIsDead)
{
    StartControlled();
    ASSERT_EQ(m_remote->Call("Die", "({},)"), Done);
    m_bus.Kill();
    EXPECT_EQ(m_simulator->Wait(Patience), (ExitStatus{1, 0}));
    EXPECT_THAT(m_simulator->Errors(), HasSubstr(LossOf(m_bus.Address())));
}

/// The command continues. Its own failure remains the exit status.
TEST_F(BusLoss, MakesTheStatusOfTheCommand1)
{
    for (int const code : {0, 3}) {
        ChildProcess process({ZVIPTV_SIM, "--ts", ZVIPTV_SAMPLE_FILE, "--loop", "--", "sh", "-c",
                              "echo \"$DBUS_SYSTEM_BUS_ADDRESS\"; read line; exit \"$0\"",
                              std::to_string(code)});
        ASSERT_TRUE(process.WaitForOutput("\n", Patience));
        std::string const output = process.Output();
        for (pid_t const child : ChildrenOf(process.Pid())) {
            if (ReadFile("/proc/" + std::to_string(child) + "/comm") == "dbus-daemon\n") {
                kill(child, SIGKILL);
            }
        }
        if (code != 0) { // else it ends at the same time
            EXPECT_TRUE(process.WaitForErrors(LossOf(output.substr(0, output.find('\n'))), Patience));
        }
        ASSERT_TRUE(process.WriteInput("\n"));
        EXPECT_EQ(process.Wait(Patience), (ExitStatus{code == 0 ? 1 : code, 0}));
        EXPECT_THAT(process.Errors(), HasSubstr(LossOf(output.substr(0, output.find('\n')))));
    }
}

} // namespace
} // namespace zviptv::test
