// SPDX-License-Identifier: MIT
#include "ScenarioTest.h"

namespace zviptv::test {
namespace {

using testing::AllOf;
using testing::ContainsRegex;
using testing::HasSubstr;

using ScenarioSeconds = ScenarioTest;

TEST_F(ScenarioSeconds, PassAtTheSpeedOfTheOption)
{
    auto const begin = std::chrono::steady_clock::now();
    EXPECT_EQ(Run("1000 quit\n", "", {"--speed", "1000", "--bus", "private", "--quiet"}), 0);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(60));
}

TEST_F(ScenarioSeconds, PassAtTheSpeedOfAStep)
{
    EXPECT_EQ(Run("0 speed 1000\n1000 quit\n", "", {"--bus", "private", "--quiet"}), 0);
}

TEST_F(ScenarioSeconds, StopInAPauseOfTheUser)
{
    EXPECT_EQ(Run("2 lock programme\n", "\"$CTL\" sim pause; sleep 3; \"$CTL\" sim status | grep -E "
                                        "'Paused|ProgrammeLocked'; \"$CTL\" sim play; " +
                                            Until("\"$CTL\" sim status | grep -q '^ProgrammeLocked: *yes'")),
              0);
    EXPECT_THAT(Output(), AllOf(ContainsRegex("Paused: *yes"), ContainsRegex("ProgrammeLocked: *no")));
}

TEST_F(ScenarioSeconds, ContinueInAPauseOfTheScenario)
{
    EXPECT_EQ(Run("0.1 pause\n0.5 play\n0.7 quit\n", "", {"--bus", "private", "--quiet"}), 0);
}

TEST_F(ScenarioSeconds, FollowASeekOfTheUser)
{
    // In the pause nothing else moves the time.
    EXPECT_EQ(Run("10 lock programme\n", "set -e; \"$CTL\" sim pause; \"$CTL\" sim seek 11; " +
                                             Until("\"$CTL\" sim status | grep -q '^ProgrammeLocked: *yes'")),
              0)
        << Errors();
}

TEST_F(ScenarioSeconds, DoNotFollowASeekOfTheScenario)
{
    EXPECT_EQ(
        Run("0.5 seek 10\n9 lock programme\n", Until("\"$CTL\" sim status | grep -q 'ScenarioStep:.*:1:1$'") +
                                                   "sleep 0.5; \"$CTL\" sim status | grep ProgrammeLocked"),
        0);
    EXPECT_THAT(Output(), HasSubstr("no\n"));
}

TEST_F(ScenarioSeconds, ContinueWhileTheServiceIsDead)
{
    EXPECT_EQ(Run("0.2 die\n0.6 restart\n0.8 quit\n", "", {"--bus", "private", "--quiet"}), 0);
    EXPECT_EQ(Errors(), "zviptv-sim: the service dies\nzviptv-sim: the service comes back\n");
}

} // namespace
} // namespace zviptv::test
