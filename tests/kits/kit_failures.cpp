// SPDX-License-Identifier: MIT
// Tests that fail, for failures_test.cpp, which runs each of them.
#include "KitTest.h"

#include <csignal>
#include <fstream>

namespace zviptv::test {
namespace {

using namespace std::chrono_literals;

TEST_F(KitTest, Unmet)
{
    m_television.Lock("programme");
    m_television.Fault("MuteAudio=result:0", 1);
    Mute(false);
    EXPECT_TRUE(m_television.Expect("MuteAudio", {{"onoff", true}}, 100ms));
}

TEST_F(KitTest, ForgottenScenario)
{
    auto const scenario = m_television.Scenario("expect MuteAudio within 0.1");
}

TEST_F(KitTest, KilledSimulator)
{
    std::ifstream status("/proc/" + m_television.Property("ServicePid") + "/status");
    std::string word;
    while (status >> word && word != "PPid:") {
    }
    pid_t simulator = 0;
    ASSERT_TRUE(status >> simulator);
    kill(simulator, SIGKILL);
    (void)m_television.Expect("MuteAudio", {}, 100ms);
}

TEST(NoKit, SimulatorIsNotInPath)
{
    setenv("PATH", "/no/such/folder", 1);
    simulated::Television const television;
}

TEST(NoKit, WrongOption)
{
    FindSimulator();
    simulated::Television const television({ZVIPTV_SAMPLE_FILE, "", {"--sped", "3"}});
}

TEST(NoKit, NoSample)
{
    FindSimulator();
    simulated::Television const television;
}

} // namespace
} // namespace zviptv::test
