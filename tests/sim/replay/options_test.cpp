// SPDX-License-Identifier: MIT
#include "ReplayTest.h"

namespace zviptv::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

ExitStatus EndOf(ChildProcess& process)
{
    return process.Wait(Patience).value_or(ExitStatus{-1, -1});
}

TEST(ReplayOptions, WithoutEffectAreRefused)
{
    struct Case
    {
        std::vector<std::string> options;
        char const* words;
    };
    for (Case const& one : std::vector<Case>{
             {{"--die-after", "3"}, "zviptv-sim: --die-after does not go together with --replay: the"},
             {{"--restart-from-start"},
              "zviptv-sim: --restart-from-start does not go together with --replay"},
             {{"--wait-for", "1"}, "zviptv-sim: --wait-for does not go together with --replay"},
             {{"--lock-stops-pushes"}, "zviptv-sim: --lock-stops-pushes does not go together with --replay"},
             {{"--list-services"}, "zviptv-sim: --list-services does not go together with --replay"},
             {{"--ts", "x.ts"},
              "zviptv-sim: --ts has no effect with --replay, which plays no stream: leave it out, or add "
              "--unrecorded stream\n"},
             {{"--loop"}, "zviptv-sim: --loop has no effect with --replay"},
             {{"--guide", "x.xml"}, "zviptv-sim: --guide has no effect with --replay"},
             {{"--rating-limit", "12"}, "zviptv-sim: --rating-limit has no effect with --replay"},
             {{"--unrecorded", "stream"},
              "zviptv-sim: --unrecorded stream needs a stream to answer from: add --ts FILE\n"},
             {{"--unrecorded", "true"},
              "zviptv-sim: --unrecorded: 'true' is neither error, false nor stream"},
         }) {
        std::vector<std::string> command{ZVIPTV_SIM, "--replay", "some.pcapng"};
        command.insert(command.end(), one.options.begin(), one.options.end());
        ChildProcess process(command);
        EXPECT_EQ(EndOf(process), (ExitStatus{2, 0})) << one.words;
        EXPECT_THAT(process.Errors(), StartsWith(one.words));
    }
}

TEST(ReplayOptions, NeedARecording)
{
    ChildProcess unrecorded({ZVIPTV_SIM, "--ts", ZVIPTV_SAMPLE_FILE, "--unrecorded", "false"});
    EXPECT_EQ(EndOf(unrecorded), (ExitStatus{2, 0}));
    EXPECT_THAT(unrecorded.Errors(), HasSubstr("--unrecorded requires --replay"));
    ChildProcess empty({ZVIPTV_SIM, "--replay", ""});
    EXPECT_EQ(EndOf(empty), (ExitStatus{2, 0}));
    EXPECT_THAT(empty.Errors(), HasSubstr("the name of the file is empty"));
}

class ReplayControl : public Replaying
{
};

TEST_F(ReplayControl, RefusesToControlTheRecordedTelevision)
{
    Recording().Exchange(0, "BROADCASTDATA", AskAudio("0"), Answered("recorded"));
    Replay();
    for (auto const& [method, arguments] :
         std::vector<std::pair<std::string, std::string>>{{"Pause", "()"},
                                                          {"Play", "()"},
                                                          {"Seek", "(1.0,)"},
                                                          {"SetSpeed", "(2.0,)"},
                                                          {"Load", "('x.ts',)"},
                                                          {"SelectProgramme", "(1,)"},
                                                          {"Lock", "('service',)"},
                                                          {"Unlock", "('service',)"},
                                                          {"SetTime", "(0,)"},
                                                          {"Mute", "('audio', true)"},
                                                          {"Select", "('audio', 0)"}}) {
        EXPECT_EQ(m_remote->Call(method, arguments),
                  Invalid + method +
                      " is not possible: the simulator replays a recording; use die, restart, reset, quit or "
                      "fault, or start it with --ts and without --replay");
    }
}

TEST_F(ReplayControl, AddsFaultsToTheRecording)
{
    Recording().Exchange(0, "BROADCASTDATA", AskAudio("0"), Answered("recorded"));
    Replay();
    Application application;
    application.Announce("BROADCASTDATA");
    auto const ask = [&application] {
        return application.Ask("BROADCASTDATA",
                               {{"functionname", "GetAudio"}, {"handleID", "256"}, {"index", "0"}});
    };
    ASSERT_EQ(m_remote->Call("AddFault", "('GetAudio=error', {})"), Done);
    EXPECT_EQ(ask().errorName, "org.corvel.zviptvapi.Error.Injected");
    ASSERT_EQ(m_remote->Call("ClearFaults"), Done);
    EXPECT_EQ(ask().Value("audio"), "recorded");
}

TEST_F(ReplayControl, DoesNotOverwriteItsRecording)
{
    Recording().Exchange(0, "BROADCASTDATA", AskAudio("0"), Answered("recorded"));
    Recording().Save();
    ChildProcess process({ZVIPTV_SIM, "--replay", Path(), "--record", m_folder / "." + "/made.pcapng"});
    EXPECT_EQ(EndOf(process), (ExitStatus{2, 0}));
    EXPECT_THAT(process.Errors(), HasSubstr("--record would overwrite the recording that --replay reads"));
}

TEST_F(ReplayControl, Ends)
{
    Recording().Exchange(0, "BROADCASTDATA", AskAudio("0"), Answered("recorded"));
    Replay();
    ASSERT_EQ(m_remote->Call("Quit"), Done);
    EXPECT_EQ(EndOf(*m_simulator), (ExitStatus{0, 0}));
}

} // namespace
} // namespace zviptv::test
