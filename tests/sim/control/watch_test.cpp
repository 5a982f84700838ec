// SPDX-License-Identifier: MIT
#include "Json.h"
#include "Remote.h"

#include <sstream>

namespace zviptv::test {
namespace {

using testing::HasSubstr;

/// zviptvctl beside a simulator.
class SimCommand : public ControlTest
{
protected:
    struct Outcome
    {
        int code;
        std::string output;
        std::string errors;
    };

    static Outcome Run(std::vector<std::string> words)
    {
        words.insert(words.begin(), {ZVIPTVCTL, "sim"});
        ChildProcess process(words);
        int const code = process.Wait(Patience).value_or(ExitStatus{-1, -1}).code;
        return {code, process.Output(), process.Errors()};
    }
};

TEST_F(SimCommand, ControlsWithVerbs)
{
    StartControlled();
    for (std::vector<std::string> const& words : std::vector<std::vector<std::string>>{
             {"pause"},
             {"play"},
             {"seek", "3.5"},
             {"speed", "2"},
             {"load", ZVIPTV_SAMPLE_FILE},
             {"programme", "1"},
             {"lock", "programme"},
             {"unlock", "programme"},
             {"time", "1774735200"},
             {"fault", "add", "MuteAudio=drop", "--count", "2", "--for", "3"},
             {"fault", "remove", "MuteAudio=drop"},
             {"fault", "clear"},
             {"mute", "audio", "on"},
             {"select", "audio", "1"},
             {"die", "--for", "0"},
             {"restart"},
             {"reset"},
             {"quit"}}) {
        Outcome const outcome = Run(words);
        EXPECT_EQ(outcome.code, 0) << words.front() << ": " << outcome.errors;
        EXPECT_EQ(outcome.output, "") << words.front();
    }
    EXPECT_EQ(m_simulator->Wait(Patience), (ExitStatus{0, 0}));
}

TEST_F(SimCommand, ShowsStatusWithThePropertyNames)
{
    StartControlled();
    Json::Value const status = ParseJson(Run({"status", "--json"}).output);
    std::string const file = ReadFile(ZVIPTV_CONTROL_XML);
    for (std::string const& name : status.getMemberNames()) {
        EXPECT_THAT(file, HasSubstr("<property name=\"" + name + "\""));
    }
    EXPECT_EQ(status["Input"].asString(), ZVIPTV_SAMPLE_FILE);
    EXPECT_EQ(status["Speed"].asDouble(), 1.0);
    EXPECT_EQ(status["Programmes"][0][1].asString(), "ZV Sample One");
    EXPECT_EQ(status["InputStatus"]["lost"].asUInt(), 0U);
    EXPECT_TRUE(status["InputStatus"].isMember("jitterMicroseconds"));
    std::string const text = Run({"status"}).output;
    EXPECT_THAT(text, HasSubstr("\nSpeed:           1\n"));
    EXPECT_THAT(text, HasSubstr("\nInputStatus:     {"));
}

TEST_F(SimCommand, RefusesWithAMessageAndACode)
{
    struct Case
    {
        std::vector<std::string> words;
        int code;
        char const* text;
    };
    StartControlled();
    for (Case const& one : std::vector<Case>{
             {{"seek", "soon"},
              2,
              "zviptvctl: seek: 'soon' is not a position in seconds, 0 to 1000000; use seek"},
             {{"seek"}, 2, "SECONDS is required"},
             {{"mute", "audio", "maybe"}, 2, "mute: 'maybe' is not on or off; use mute audio|video on|off"},
             {{"fault", "add", "MuteAudio=drop", "--count", "0"}, 2, "'0' is not a number of messages"},
             {{"jump"}, 2, "unknown command 'jump'"},
             {{"load", "/no/such.ts"}, 1, "zviptvctl: cannot open /no/such.ts: No such file"},
             {{"select", "audio", "9"}, 1, "there is no audio track 9: use 0 to 1"},
         }) {
        Outcome const outcome = Run(one.words);
        EXPECT_EQ(outcome.code, one.code) << outcome.errors;
        EXPECT_THAT(outcome.errors, HasSubstr(one.text));
    }
    ASSERT_EQ(Run({"die"}).code, 0);
    Outcome const dead = Run({"pause"});
    EXPECT_EQ(dead.code, 3);
    EXPECT_THAT(dead.errors, HasSubstr("'zviptvctl sim restart' starts it"));
}

TEST_F(SimCommand, ReportsHowToStartASimulator)
{
    for (char const* const verb : {"status", "watch", "pause"}) {
        Outcome const outcome = Run({verb});
        EXPECT_EQ(outcome.code, 3);
        EXPECT_EQ(outcome.errors,
                  "zviptvctl: no simulator runs on this bus; start one with 'zviptv-sim --ts FILE', "
                  "and set DBUS_SYSTEM_BUS_ADDRESS to its bus\n");
    }
    EXPECT_THAT(Run({"status", "--json"}).output, HasSubstr("\"result\":false"));
}

/// Nothing listens at the address.
TEST_F(SimCommand, ReportsHowToStartASimulatorWithoutABus)
{
    for (char const* const verb : {"status", "watch", "pause"}) {
        ChildProcess process({ZVIPTVCTL, "sim", verb},
                             {{"DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus"}});
        EXPECT_EQ(process.Wait(Patience), (ExitStatus{3, 0}));
        EXPECT_THAT(process.Errors(), HasSubstr("zviptvctl: the system bus cannot be reached ("));
        EXPECT_THAT(process.Errors(), HasSubstr("; 'zviptv-sim --ts FILE -- bash' starts a simulator"));
    }
}

TEST_F(SimCommand, WatchFollowsChangesAndRequests)
{
    StartControlled();
    ChildProcess watch({ZVIPTVCTL, "sim", "watch"});
    ChildProcess json({ZVIPTVCTL, "sim", "watch", "--json"});
    ASSERT_TRUE(watch.WaitForOutput("\nSpeed: 1\n", Patience)) << watch.Errors();
    ASSERT_TRUE(json.WaitForOutput("\"Speed\":1.0", Patience)) << json.Errors();
    ASSERT_EQ(m_remote->Call("SetSpeed", "(2.0,)"), Done);
    EXPECT_TRUE(watch.WaitForOutput("\nSpeed: 2\n", Patience));
    EXPECT_TRUE(json.WaitForOutput("\"Speed\":2.0", Patience));
    Application application;
    application.Announce("PLAYERCONTROL");
    application.Ask("PLAYERCONTROL", {{"functionname", "MuteAudio"}, {"onoff", "1"}});
    std::string const name = application.Peer().Name();
    EXPECT_TRUE(watch.WaitForOutput("\nrequest " + name + " PLAYERCONTROL MuteAudio onoff=1: 1\n", Patience));
    EXPECT_TRUE(
        json.WaitForOutput("{\"application\":\"" + name +
                               "\",\"arguments\":{\"onoff\":\"1\"},\"endpoint\":\"PLAYERCONTROL\",\"event\":"
                               "\"request\",\"fault\":\"\",\"function\":\"MuteAudio\",\"result\":1}\n",
                           Patience));
    ASSERT_EQ(m_remote->Call("Restart"), Done);
    EXPECT_TRUE(watch.WaitForOutput("\ndied\n", Patience));
    EXPECT_TRUE(watch.WaitForOutput("\nrestarted\n", Patience));
    json.Signal(SIGINT);
    EXPECT_EQ(json.Wait(Patience), (ExitStatus{0, 0}));
    ASSERT_EQ(m_remote->Call("Quit"), Done);
    EXPECT_EQ(watch.Wait(Patience), (ExitStatus{3, 0}));
    EXPECT_EQ(watch.Errors(), "zviptvctl: the simulator left the bus\n");
}

TEST_F(SimCommand, WatchEndsWhenItsTimeIsOver)
{
    StartControlled();
    EXPECT_EQ(Run({"watch", "--seconds", "0.2"}).code, 0);
}

} // namespace
} // namespace zviptv::test
