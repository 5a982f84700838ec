// SPDX-License-Identifier: MIT
#include "ScenarioTest.h"

#include <set>

namespace zviptv::test {
namespace {

using testing::HasSubstr;

/// The scenarios that are installed, each with an application that behaves, and one that does not.
class ExampleScenarios : public ScenarioTest
{
protected:
    int RunExample(std::string const& name, std::string const& script)
    {
        return End(Start(ZVIPTV_SCENARIOS "/" + name + ".scenario", {"--junit", Path("junit.xml")}, script));
    }
};

/// Until the report has been written.
std::string const UntilOver = Until("grep -q '</testsuites>' \"$DIR/junit.xml\"");

TEST_F(ExampleScenarios, ParentalLock)
{
    EXPECT_EQ(RunExample("parental-lock", Until("\"$CTL\" rating | grep -q '^programme: locked'") +
                                              "\"$CTL\" unlock pin; \"$CTL\" rating; " + UntilOver),
              0)
        << Errors();
    EXPECT_THAT(Errors(), HasSubstr("4 of 4 expectations met\n"));
    EXPECT_EQ(RunExample("parental-lock", Until("\"$CTL\" rating | grep -q '^programme: locked'")), 1);
}

TEST_F(ExampleScenarios, OtherTracks)
{
    EXPECT_EQ(RunExample("other-tracks", "\"$CTL\" audio list; " +
                                             Until("\"$CTL\" audio list | grep -q ita") +
                                             "\"$CTL\" audio select 2; " + UntilOver),
              0)
        << Errors();
    EXPECT_THAT(Output(), HasSubstr("deu"));
    EXPECT_THAT(Output(), HasSubstr("audio track 2 selected"));
    EXPECT_THAT(Errors(), HasSubstr("3 of 3 expectations met\n"));
    EXPECT_EQ(RunExample("other-tracks", "\"$CTL\" audio list"), 1);
}

TEST_F(ExampleScenarios, SlowService)
{
    EXPECT_EQ(RunExample("slow-service", Until("\"$CTL\" call GetResolution") + UntilOver), 0) << Errors();
    EXPECT_THAT(Errors(), HasSubstr("1 of 1 expectation met\n"));
    EXPECT_EQ(RunExample("slow-service", "\"$CTL\" call GetResolution"), 4);
    EXPECT_THAT(Errors(), HasSubstr("0 of 1 expectation met\n"));
}

TEST_F(ExampleScenarios, FlappingService)
{
    EXPECT_EQ(RunExample("flapping-service",
                         "until grep -q '</testsuites>' \"$DIR/junit.xml\"; do \"$CTL\" call "
                         "GetSourceState >/dev/null 2>&1; sleep 0.1; done"),
              0)
        << Errors();
    EXPECT_THAT(Errors(), HasSubstr("3 of 3 expectations met\n"));
    EXPECT_EQ(RunExample("flapping-service", "\"$CTL\" call GetSourceState"), 1);
}

TEST_F(ExampleScenarios, BrokenPushes)
{
    EXPECT_EQ(RunExample("broken-pushes", "s=30; until grep -q '</testsuites>' \"$DIR/junit.xml\"; do "
                                          "\"$CTL\" pes --seconds $s >/dev/null 2>&1; s=1; sleep 0.1; done"),
              0)
        << Errors();
    EXPECT_THAT(Errors(), HasSubstr("2 of 2 expectations met\n"));
    EXPECT_EQ(RunExample("broken-pushes", "\"$CTL\" pes --seconds 4 >/dev/null"), 1);
}

TEST_F(ExampleScenarios, AreAllTested)
{
    std::set<std::string> names;
    for (auto const& entry : std::filesystem::directory_iterator(ZVIPTV_SCENARIOS)) {
        if (entry.path().extension() == ".scenario") {
            names.insert(entry.path().stem());
        }
    }
    EXPECT_THAT(names, testing::ElementsAre("broken-pushes", "flapping-service", "other-tracks",
                                            "parental-lock", "slow-service"));
}

} // namespace
} // namespace zviptv::test
