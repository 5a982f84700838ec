// SPDX-License-Identifier: MIT
#include "ChildProcess.h"

#include <gmock/gmock.h>

namespace zviptv::test {
namespace {

using testing::ContainsRegex;
using testing::HasSubstr;

/// The output of a failing test of a user of the kit.
class KitFailures : public testing::Test
{
protected:
    std::string Run(std::string const& test)
    {
        m_process.emplace(std::vector<std::string>{ZVIPTV_KIT_FAILURES, "--gtest_filter=" + test});
        std::optional<ExitStatus> const status = m_process->Wait(std::chrono::seconds(60));
        EXPECT_TRUE(status && status->code == 1);
        return m_process->Output();
    }

    std::optional<ChildProcess> m_process;
};

TEST_F(KitFailures, TableOfTheConversationIsPrinted)
{
    std::string const output = Run("KitTest.Unmet");
    EXPECT_THAT(output,
                ContainsRegex("MuteAudio onoff=1 did not come within 0.1 s: instead came MuteAudio onoff=0 "
                              "after [0-9.]+ s"));
    EXPECT_THAT(output, ContainsRegex("Conversation with the television:\n"
                                      "Time +From +What +Answer\n[- ]+\n"
                                      "0[.0-9]+ s +test +reset\n"
                                      "[.0-9]+ s +test +lock programme\n"
                                      "[.0-9]+ s +test +fault add MuteAudio=result:0 --count 1\n"
                                      "[.0-9]+ s  :1.[0-9]+ +MuteAudio onoff=0 +refused\n"
                                      "[.0-9]+ s +test +expect MuteAudio onoff=1 +not met\n"));
}

TEST_F(KitFailures, ScenarioThatWasNotWaitedForFailsTheTest)
{
    EXPECT_THAT(Run("KitTest.ForgottenScenario"),
                HasSubstr("expect MuteAudio within 0.1: not seen within 0.1 s"));
}

TEST_F(KitFailures, SimulatorThatDiedIsReported)
{
    EXPECT_THAT(Run("KitTest.KilledSimulator"),
                HasSubstr("zviptv-sim has ended during the tests: signal 9 has killed it"));
}

TEST_F(KitFailures, SimulatorThatIsNotInPathIsReported)
{
    EXPECT_THAT(
        Run("NoKit.SimulatorIsNotInPath"),
        HasSubstr("cannot start zviptv-sim: it is not in PATH; install the package zv-iptv-tools, or add the "
                  "folder of zviptv-sim to PATH"));
}

TEST_F(KitFailures, WrongOptionIsReported)
{
    EXPECT_THAT(Run("NoKit.WrongOption"),
                HasSubstr("zviptv-sim did not start: its exit status is 2; standard error"));
    EXPECT_THAT(m_process->Errors(), HasSubstr("--sped"));
}

TEST_F(KitFailures, MissingStreamIsReported)
{
    EXPECT_THAT(Run("NoKit.NoSample"),
                HasSubstr("share/zv-iptv/samples/sample.ts does not exist; set the input of the "
                          "options to a transport stream"));
}

} // namespace
} // namespace zviptv::test
