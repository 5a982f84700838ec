// SPDX-License-Identifier: MIT
#include "Remote.h"

#include "../input/UdpSender.h"

namespace zviptv::test {
namespace {

using testing::StartsWith;

class Verbs : public ControlTest
{
protected:
    /// The result of a request without arguments.
    std::string Ask(std::string const& endpoint, std::initializer_list<TextEntry> entries,
                    std::string const& key = "result_internal")
    {
        m_application.Announce(endpoint);
        return m_application.Ask(endpoint, entries).Value(key);
    }

    Application m_application;
};

TEST_F(Verbs, PauseAndPlayStopAndStartTheStc)
{
    StartControlled();
    ASSERT_EQ(m_remote->Call("Pause"), Done);
    EXPECT_EQ(m_remote->Get("Paused"), "true");
    auto const stc = [this] { return Ask("PLAYERCONTROL", {{"functionname", "GetSTCCount"}}, "stcCount"); };
    std::string const stands = stc();
    EXPECT_NE(stands, "");
    double const position = m_remote->Number("Position");
    std::this_thread::sleep_for(std::chrono::milliseconds(200)); // as long as it would move
    EXPECT_EQ(stc(), stands);
    EXPECT_EQ(m_remote->Number("Position"), position);
    ASSERT_EQ(m_remote->Call("Play"), Done);
    EXPECT_TRUE(WaitUntil([&] { return stc() != stands; }, Patience));
    EXPECT_EQ(m_remote->Get("Paused"), "false");
}

TEST_F(Verbs, APauseStopsPushes)
{
    StartControlled();
    m_application.Announce("IPTVDATASUBSCRIBER");
    m_application.Ask("IPTVDATASUBSCRIBER", {{"functionname", "requestPESCB"}, {"on", "1"}});
    ASSERT_TRUE(m_application.WaitForPackets("257", 1));
    ASSERT_EQ(m_remote->Call("Pause"), Done);
    // After an answer, all earlier messages have arrived.
    m_application.Ask("IPTVDATASUBSCRIBER", {{"functionname", "requestPESCB"}, {"on", "1"}});
    ASSERT_TRUE(WaitUntil(
        [this] { return m_remote->Get("Subscribers").find("'queued': <uint64 0>") != std::string::npos; },
        Patience));
    std::size_t const count = m_application.Packets("257").size();
    EXPECT_FALSE(m_application.Peer().Received().WaitForCount(
        [](WireMessage const& message) { return message.Value("pesPID") == "257"; }, count + 1,
        std::chrono::milliseconds(500)));
    ASSERT_EQ(m_remote->Call("Play"), Done);
    EXPECT_TRUE(m_application.WaitForPackets("257", count + 1));
}

TEST_F(Verbs, SpeedIsSetAndRefused)
{
    StartControlled();
    EXPECT_EQ(m_remote->Call("SetSpeed", "(20.0,)"), Done);
    EXPECT_EQ(m_remote->Get("Speed"), "20.0");
    EXPECT_EQ(m_remote->Call("SetSpeed", "(0.0,)"),
              std::string(Invalid) + "'0.0' is not a speed from 0.01 to 1000");
    EXPECT_EQ(m_remote->Get("Speed"), "20.0");
}

TEST_F(Verbs, LoadsAnotherInputOrKeepsTheFirst)
{
    StartControlled();
    std::string const other = m_bus.Directory() + "/other.ts";
    std::ofstream(other, std::ios::binary) << std::ifstream(ZVIPTV_SAMPLE_FILE, std::ios::binary).rdbuf();
    ASSERT_EQ(m_remote->Call("Load", "('" + other + "',)"), Done);
    EXPECT_EQ(m_remote->Get("Input"), "'" + other + "'");
    EXPECT_EQ(m_remote->Call("Load", "('/no/such.ts',)"),
              std::string(Failed) + "cannot open /no/such.ts: No such file or directory");
    EXPECT_EQ(m_remote->Get("Input"), "'" + other + "'");
    EXPECT_EQ(m_remote->Call("Load", "('',)"), std::string(Invalid) + "'' is not an input like that of --ts");
}

/// Its sender sets the pace.
TEST_F(Verbs, LiveInputCanNeitherPauseNorSeekNorRunFaster)
{
    StartControlled();
    std::string const url = "udp://127.0.0.1:" + std::to_string(UdpSender("127.0.0.1").Port());
    ASSERT_EQ(m_remote->Call("Load", "('" + url + "',)"), Done);
    for (auto const& [method, arguments] : std::vector<std::pair<std::string, std::string>>{
             {"Pause", "()"}, {"Seek", "(1.0,)"}, {"SetSpeed", "(2.0,)"}}) {
        EXPECT_EQ(m_remote->Call(method, arguments),
                  Invalid + url + " is live input, which sets its own pace: load a file first");
    }
    EXPECT_EQ(m_remote->Call("Load", std::string("('") + ZVIPTV_SAMPLE_FILE + "',)"), Done);
    EXPECT_EQ(m_remote->Call("Pause"), Done);
}

/// The sender sets the pace, regardless of the speed of an earlier file.
TEST_F(Verbs, LiveInputRunsTheClockAtNormalSpeed)
{
    StartControlled({"--loop", "--speed", "4"});
    ASSERT_EQ(m_remote->Call("Pause"), Done);
    EXPECT_THAT(m_remote->Call("Load", "('udp://127.0.0.1:0',)"), StartsWith(Failed));
    EXPECT_EQ(m_remote->Get("Speed"), "4.0");
    EXPECT_EQ(m_remote->Get("Paused"), "true");
    std::string const url = "udp://127.0.0.1:" + std::to_string(UdpSender("127.0.0.1").Port());
    ASSERT_EQ(m_remote->Call("Load", "('" + url + "',)"), Done);
    EXPECT_EQ(m_remote->Get("Speed"), "1.0");
    EXPECT_EQ(m_remote->Get("Paused"), "false");
    EXPECT_EQ(m_remote->Call("SetSpeed", "(1.0,)"), Done);
    EXPECT_EQ(m_remote->Call("Play"), Done);
    EXPECT_EQ(m_remote->Call("SetSpeed", "(2.0,)"),
              Invalid + url + " is live input, which sets its own pace: load a file first");
    ASSERT_EQ(m_remote->Call("Reset"), Done);
    EXPECT_EQ(m_remote->Get("Speed"), "4.0");
}

TEST_F(Verbs, RefusesAMissingProgramme)
{
    StartControlled();
    EXPECT_EQ(m_remote->Call("SelectProgramme", "(1,)"), Done);
    EXPECT_EQ(m_remote->Call("SelectProgramme", "(7,)"),
              std::string(Invalid) + "the input has no programme 7: use 1");
    EXPECT_EQ(m_remote->Get("Programme"), "uint32 1");
    EXPECT_EQ(m_remote->Call("SelectProgramme", "(0,)"),
              std::string(Invalid) + "'0' is not a programme number, 1 to 65535");
}

TEST_F(Verbs, NoProgrammeCanBeSelectedBeforeItsTables)
{
    StartControlled();
    std::string const url = "udp://127.0.0.1:" + std::to_string(UdpSender("127.0.0.1").Port());
    ASSERT_EQ(m_remote->Call("Load", "('" + url + "',)"), Done);
    EXPECT_EQ(m_remote->Call("SelectProgramme", "(1,)"),
              std::string(Invalid) +
                  "programme 1 is not known, because no PAT and PMT were received yet: wait until "
                  "the property Programmes lists it");
}

TEST_F(Verbs, ApplicationsSeeLocks)
{
    StartControlled();
    ASSERT_EQ(m_remote->Call("Lock", "('programme',)"), Done);
    ASSERT_EQ(m_remote->Call("Lock", "('service',)"), Done);
    EXPECT_EQ(m_remote->Get("ProgrammeLocked"), "true");
    EXPECT_EQ(m_remote->Get("ServiceLocked"), "true");
    EXPECT_EQ(Ask("BROADCASTDATA", {{"functionname", "UnMuteByRatingPin"}}),
              "1"); // it was locked, and is not now
    EXPECT_EQ(m_remote->Get("ProgrammeLocked"), "false");
    ASSERT_EQ(m_remote->Call("Lock", "('programme',)"), Done); // again
    EXPECT_EQ(m_remote->Get("ProgrammeLocked"), "true");
    ASSERT_EQ(m_remote->Call("Unlock", "('programme',)"), Done);
    ASSERT_EQ(m_remote->Call("Unlock", "('service',)"), Done);
    EXPECT_EQ(m_remote->Get("ProgrammeLocked"), "false");
    EXPECT_EQ(m_remote->Get("ServiceLocked"), "false");
    EXPECT_EQ(m_remote->Call("Lock", "('door',)"),
              std::string(Invalid) + "'door' is not programme or service");
}

TEST_F(Verbs, TheGuidesClockIsSet)
{
    StartControlled();
    ASSERT_EQ(m_remote->Call("SetTime", "(1774735200,)"), Done);
    EXPECT_NEAR(m_remote->Number("GuideTime"), 1774735200, 5);
    EXPECT_THAT(m_remote->Call("SetTime", "(-1,)"),
                StartsWith(std::string(Invalid) + "'-1' is not a number of "));
}

TEST_F(Verbs, FaultsAreCountedRemovedAndCleared)
{
    StartControlled();
    auto const mute = [this] {
        return Ask("PLAYERCONTROL", {{"functionname", "MuteAudio"}, {"onoff", "1"}});
    };
    ASSERT_EQ(m_remote->Call("AddFault", "('MuteAudio=result:7', {'count': <uint32 2>})"), Done);
    EXPECT_EQ(m_remote->Get("Faults"), "[{'fault': <'MuteAudio=result:7,count=2'>, 'count': <uint32 2>}]");
    EXPECT_EQ(mute(), "7");
    EXPECT_EQ(m_remote->Get("Faults"), "[{'fault': <'MuteAudio=result:7,count=2'>, 'count': <uint32 1>}]");
    EXPECT_EQ(mute(), "7");
    EXPECT_EQ(mute(), "1");
    EXPECT_EQ(m_remote->Get("Faults"), "@aa{sv} []");
    ASSERT_EQ(m_remote->Call("AddFault", "('MuteAudio=result:8', {})"), Done);
    EXPECT_EQ(mute(), "8");
    EXPECT_EQ(m_remote->Call("RemoveFault", "('MuteAudio=drop',)"),
              std::string(Invalid) +
                  "cannot remove the fault 'MuteAudio=drop': it is not active; use MuteAudio=result:8");
    EXPECT_EQ(m_remote->Call("RemoveFault", "('MuteAudio=result:8',)"), Done);
    EXPECT_EQ(mute(), "1");
    ASSERT_EQ(m_remote->Call("AddFault", "('*=result:9', {})"), Done);
    EXPECT_EQ(mute(), "9");
    ASSERT_EQ(m_remote->Call("ClearFaults"), Done);
    EXPECT_EQ(mute(), "1");
}

TEST_F(Verbs, AFaultEndsOnTheSimulatedClock)
{
    StartControlled();
    ASSERT_EQ(m_remote->Call("Pause"), Done);
    ASSERT_EQ(m_remote->Call("AddFault", "('MuteAudio=result:7', {'for': <3.0>})"), Done);
    double const now = m_remote->Number("Position");
    ASSERT_EQ(m_remote->Call("Seek", "(" + std::to_string(now + 2.9) + ",)"), Done);
    EXPECT_NE(m_remote->Get("Faults"), "@aa{sv} []");
    ASSERT_EQ(m_remote->Call("Seek", "(" + std::to_string(now + 3.1) + ",)"), Done);
    EXPECT_EQ(m_remote->Get("Faults"), "@aa{sv} []");
}

TEST_F(Verbs, BadFaultsAreRefused)
{
    StartControlled();
    EXPECT_THAT(m_remote->Call("AddFault", "('MuteAudio=bad', {})"),
                StartsWith(std::string(Invalid) +
                           "cannot use the fault 'MuteAudio=bad': unknown fault 'bad' of MuteAudio; use "));
    EXPECT_THAT(m_remote->Call("AddFault", "('MuteAudio=drop', {'count': <uint32 0>})"),
                StartsWith(std::string(Invalid) + "'0' is not a number of messages, 1 to 1000000"));
    EXPECT_EQ(m_remote->Call("AddFault", "('MuteAudio=drop', {'for': <0.0>})"),
              std::string(Invalid) + "'0.0' is not a number of seconds, 0.001 to 1000000");
    EXPECT_THAT(m_remote->Call("AddFault", "('MuteAudio=drop', {'count': <'two'>})"),
                StartsWith(std::string(Invalid) + "a value of the type s is not a number of messages"));
    EXPECT_THAT(m_remote->Call("AddFault", "('MuteAudio=drop', {'often': <uint32 1>})"),
                StartsWith(std::string(Invalid) + "fault add: unknown option 'often'"));
    EXPECT_EQ(m_remote->Get("Faults"), "@aa{sv} []");
}

TEST_F(Verbs, SetsMutesAndReportsTheirOrigin)
{
    StartControlled();
    ASSERT_EQ(m_remote->Call("Mute", "('audio', true)"), Done);
    EXPECT_EQ(m_remote->Get("AudioMuted"), "true");
    EXPECT_EQ(m_remote->Get("AudioMutedBy"), "'control'");
    ASSERT_EQ(m_remote->Call("Mute", "('audio', false)"), Done);
    EXPECT_EQ(m_remote->Get("AudioMuted"), "false");
    EXPECT_EQ(Ask("PLAYERCONTROL", {{"functionname", "MuteVideo"}, {"onoff", "1"}}), "1");
    EXPECT_EQ(m_remote->Get("VideoMuted"), "true");
    EXPECT_EQ(m_remote->Get("VideoMutedBy"), "'" + m_application.Peer().Name() + "'");
    EXPECT_EQ(m_remote->Call("Mute", "('smell', true)"),
              std::string(Invalid) + "'smell' is not audio or video");
}

TEST_F(Verbs, TracksAreSelected)
{
    StartControlled();
    ASSERT_EQ(m_remote->Call("Select", "('audio', 1)"), Done);
    ASSERT_EQ(m_remote->Call("Select", "('subtitle', 2)"), Done);
    EXPECT_EQ(m_remote->Get("Audio"), "uint32 1");
    EXPECT_EQ(m_remote->Get("Subtitle"), "uint32 2");
    EXPECT_EQ(m_remote->Call("Select", "('audio', 2)"),
              std::string(Invalid) + "there is no audio track 2: use 0 to 1");
    EXPECT_EQ(m_remote->Get("Audio"), "uint32 1");
}

TEST_F(Verbs, QuitEndsTheSimulatorOrderly)
{
    StartControlled();
    EXPECT_EQ(m_remote->Call("Quit"), Done);
    EXPECT_EQ(m_simulator->Wait(Patience), (ExitStatus{0, 0}));
}

} // namespace
} // namespace zviptv::test
