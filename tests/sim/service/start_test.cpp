// SPDX-License-Identifier: MIT
#include "../guide/GuideGenerator.h"
#include "Processes.h"
#include "SimulatorTest.h"
#include "WaitUntil.h"

#include <sys/stat.h>

#include <csignal>

namespace zviptv::test {
namespace {

constexpr std::uint64_t BigGuide = 40'000'000; // bytes; takes many times as long as a signal

/// A simulator that has much to load before it is ready.
class SlowStart : public Simulator
{
protected:
    SlowStart() { WriteGuide(m_guide, BigGuide); }

    std::vector<std::string> Command(std::vector<std::string> const& more) const
    {
        std::vector<std::string> command{ZVIPTV_SIM, "--ts", ZVIPTV_SAMPLE_FILE, "--guide", m_guide};
        command.insert(command.end(), more.begin(), more.end());
        return command;
    }

    /// True when the process, a simulator, reads the guide.
    bool Reads(pid_t pid) const { return HasOpen(pid, m_guide); }

    /// Waits until the service's process reads the guide. Returns its id.
    pid_t Loading(ChildProcess const& simulator) const
    {
        pid_t found = 0;
        WaitUntil(
            [&] {
                for (pid_t const child : ChildrenOf(simulator.Pid())) {
                    found = Reads(child) ? child : found;
                }
                return found != 0;
            },
            Patience);
        return found;
    }

    std::string const m_guide = m_bus.Directory() + "/big.xml";
};

/// As on a very slow machine: the service is stopped for longer than any time-out.
TEST_F(SlowStart, IsAwaited)
{
    ChildProcess process(Command({"--", "echo", "ready"}));
    pid_t const service = Loading(process);
    ASSERT_NE(service, 0);
    ASSERT_EQ(kill(service, SIGSTOP), 0);
    EXPECT_FALSE(process.Wait(std::chrono::seconds(12)));
    EXPECT_EQ(process.Output(), "");
    ASSERT_EQ(kill(service, SIGCONT), 0);
    EXPECT_EQ(process.Wait(3 * Patience), (ExitStatus{0, 0})) << process.Errors();
    EXPECT_EQ(process.Output(), "ready\n");
}

TEST_F(SlowStart, IsAbandonedOnASignal)
{
    for (int const number : {SIGINT, SIGTERM}) {
        ChildProcess process(Command({"--", "echo", "ready"}));
        ASSERT_NE(Loading(process), 0);
        process.Signal(number);
        EXPECT_EQ(process.Wait(Patience), (ExitStatus{128 + number, 0}));
        EXPECT_EQ(process.Errors(), "zviptv-sim: ended before the service was ready\n");
        EXPECT_EQ(process.Output(), "");
    }
}

TEST_F(SlowStart, EndsAtOnceOnASystemBus)
{
    for (int const number : {SIGINT, SIGTERM}) {
        ChildProcess process(Command({"--bus", "system"}));
        ASSERT_NE(Loading(process), 0);
        process.Signal(number);
        EXPECT_EQ(process.Wait(Patience), (ExitStatus{128 + number, 0}));
    }
}

TEST_F(SlowStart, ReportsThatTheServiceIsKilled)
{
    ChildProcess process(Command({"--", "echo", "ready"}));
    pid_t const service = Loading(process);
    ASSERT_NE(service, 0);
    ASSERT_EQ(kill(service, SIGKILL), 0);
    EXPECT_EQ(process.Wait(Patience), (ExitStatus{128 + SIGKILL, 0}));
    EXPECT_EQ(process.Errors(), "zviptv-sim: the service was ended by signal 9 (Killed)\n");
}

TEST_F(Simulator, RefusesADeviceAsAStream)
{
    ChildProcess process({ZVIPTV_SIM, "--ts", "/dev/null", "--", "true"});
    EXPECT_EQ(process.Wait(Patience), (ExitStatus{1, 0}));
    EXPECT_EQ(process.Errors(),
              "zviptv-sim: /dev/null is not a regular file: save the stream in one first\n");
}

} // namespace
} // namespace zviptv::test
