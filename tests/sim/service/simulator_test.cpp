// SPDX-License-Identifier: MIT
#include "../stream/NaiveReassembly.h"
#include "SimulatorTest.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <csignal>

namespace zviptv::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

TEST_F(Simulator, AnnouncesItsEndpoints)
{
    StartSample();
    Application application;
    std::string const owner = m_watcher.GetNameOwner("org.corvel.zviptvapi.dbushelper");
    EXPECT_EQ(application.Announce("PLAYERCONTROL"), owner);
    EXPECT_EQ(application.Announce("IPTVDATASUBSCRIBER"), owner);
    EXPECT_EQ(application.Announce("BROADCASTDATA"), owner);
    EXPECT_EQ(application.Announce("IPGUTIL"), owner);
    EXPECT_EQ(application.Announce("NOSUCHTYPE"), "");
}

TEST_F(Simulator, AnswersPlayerControl)
{
    StartSample();
    Application application;
    application.Announce("PLAYERCONTROL");
    auto const ask = [&](std::initializer_list<TextEntry> entries) {
        return application.Ask("PLAYERCONTROL", entries);
    };
    EXPECT_EQ(
        Number(ask({{"functionname", "MuteAudio"}, {"handleID", "256"}, {"onoff", "1"}}), "result_internal"),
        "1");
    EXPECT_EQ(Number(ask({{"functionname", "MuteAudio"}, {"handleID", "256"}}), "result_internal"), "0");
    EXPECT_EQ(Number(ask({{"functionname", "GetSourceState"}, {"handleID", "256"}}), "sourcestate"), "2");
    EXPECT_EQ(Number(ask({{"functionname", "SetCurrentAudioByIndex"}, {"index", "1"}}), "result_internal"),
              "1");
    EXPECT_EQ(Number(ask({{"functionname", "SetCurrentAudioByIndex"}, {"index", "2"}}), "result_internal"),
              "0");
    EXPECT_EQ(Number(ask({{"functionname", "SetCurrentAudioByIndex"}, {"index", "-1"}}), "result_internal"),
              "0");
    EXPECT_EQ(Number(ask({{"functionname", "SetCurrentHybridSBT"}, {"index", "0"}}), "result_internal"), "1");
    EXPECT_EQ(Number(ask({{"functionname", "SetCurrentTTX"}, {"index", "2"}}), "result_internal"), "1");
    EXPECT_EQ(Number(ask({{"functionname", "SetCurrentTTX"}, {"index", "3"}}), "result_internal"), "0");
    EXPECT_EQ(Number(ask({{"functionname", "NoSuchFunction"}}), "result_internal"), "0");
}

TEST_F(Simulator, ReportsTheClockOfTheStream)
{
    StartSample();
    Application application;
    application.Announce("IPTVDATASUBSCRIBER");
    application.Ask("IPTVDATASUBSCRIBER", {{"functionname", "requestPESCB"}, {"on", "1"}});
    ASSERT_TRUE(application.WaitForPackets("256", 1));
    WireMessage const first = application.Ask("PLAYERCONTROL", {{"functionname", "GetFirstPTS"}});
    EXPECT_EQ(Number(first, "firstPTS"), "133200");
    EXPECT_EQ(Number(first, "timebaseden"), "90000");
    EXPECT_EQ(Number(first, "timebasenum"), "1");

    auto const stc = [&] {
        return std::stoull(
            Number(application.Ask("PLAYERCONTROL", {{"functionname", "GetSTCCount"}}), "stcCount"));
    };
    auto const begin = std::chrono::steady_clock::now();
    auto const from = stc();
    ASSERT_TRUE(application.WaitForPackets("256", 25)); // a second of pictures
    auto const to = stc();
    std::chrono::duration<double> const passed = std::chrono::steady_clock::now() - begin;
    EXPECT_NEAR(static_cast<double>(to - from) / 90000, passed.count(), 0.1 + passed.count() / 10);
}

TEST_F(Simulator, DescribesThePicture)
{
    StartSample();
    Application application;
    application.Announce("IPTVDATASUBSCRIBER");
    application.Ask("IPTVDATASUBSCRIBER", {{"functionname", "requestPESCB"}, {"on", "1"}});
    ASSERT_TRUE(application.WaitForPackets("256", 26)); // past a sequence head
    WireMessage const reply = application.Ask("PLAYERCONTROL", {{"functionname", "GetResolution"}});
    EXPECT_EQ(Number(reply, "resolution"), "1");
    std::string const record = reply.Value("resolutioninfo");
    ASSERT_EQ(record.size(), 32U);
    EXPECT_EQ(record.substr(0, 8), std::string("\x40\x01\0\0\xB4\0\0\0", 8)); // 320 by 180
    EXPECT_EQ(record.substr(8, 8), std::string("\x19\0\0\0\x01\0\0\0", 8));   // 25 frames a second
}

TEST_F(Simulator, DeliversThePacketsOfTheStreamByteByByte)
{
    Start({"--ts", ZVIPTV_SAMPLE_FILE, "--loop", "--speed", "20", "--pes", "audio,subtitle"});
    Application application;
    application.Announce("IPTVDATASUBSCRIBER");
    application.Ask("IPTVDATASUBSCRIBER",
                    {{"functionname", "requestPESCB"}, {"handleID", "256"}, {"on", "1"}});
    ASSERT_TRUE(application.WaitForPackets("257", 90)); // more than two passes
    Bytes const stream = ReadWholeFile(ZVIPTV_SAMPLE_FILE);
    for (std::uint16_t const pid : std::vector<std::uint16_t>{0x101, 0x102, 0x103}) {
        std::vector<std::string> wanted;
        for (Bytes const& packet : ReassembleNaively(stream, pid)) {
            wanted.emplace_back(packet.begin(), packet.end());
        }
        std::vector<std::string> const got = application.Packets(std::to_string(pid));
        ASSERT_GT(got.size(), wanted.size());
        std::size_t const start =
            static_cast<std::size_t>(std::find(wanted.begin(), wanted.end(), got.front()) - wanted.begin());
        for (std::size_t i = 0; i < got.size(); ++i) {
            ASSERT_EQ(got[i], wanted[(start + i) % wanted.size()]) << "packet " << i << " of PID " << pid;
        }
    }
    EXPECT_THAT(application.Packets("256"), IsEmpty());
}

TEST_F(Simulator, NotificationsHaveTheDocumentedForm)
{
    StartSample();
    Application application;
    application.Announce("IPTVDATASUBSCRIBER");
    application.Ask("IPTVDATASUBSCRIBER", {{"functionname", "requestPESCB"}, {"on", "1"}});
    auto const seen = application.Peer().WaitFor(
        [](WireMessage const& message) { return message.Value("pesPID") == "257"; });
    ASSERT_TRUE(seen);
    EXPECT_EQ(seen->path, "/org/corvel/zviptvapi/DbusCommunication/IPTVDATASUBSCRIBER");
    EXPECT_EQ(seen->interface, "org.corvel.zviptvapi.DbusCommunication");
    EXPECT_EQ(seen->destination, application.Peer().Name());
    std::vector<std::string> keys;
    for (WireEntry const& entry : seen->entries) {
        keys.push_back(entry.key);
    }
    EXPECT_THAT(keys, ElementsAre("functionname", "pesDataSize", "pesType", "pesPID", "pesPTS", "pesData"));
    EXPECT_EQ(seen->Value("pesType"), "2");
    EXPECT_EQ(seen->Value("pesDataSize"), std::to_string(seen->Value("pesData").size()));
}

TEST_F(Simulator, SendsOnlyToSubscribers)
{
    StartSample();
    Application quiet;
    quiet.Announce("IPTVDATASUBSCRIBER");
    Application eager;
    eager.Announce("IPTVDATASUBSCRIBER");
    eager.Ask("IPTVDATASUBSCRIBER", {{"functionname", "requestPESCB"}, {"on", "1"}});
    ASSERT_TRUE(eager.WaitForPackets("257", 3));
    eager.Ask("IPTVDATASUBSCRIBER", {{"functionname", "requestPESCB"}, {"on", "0"}});
    quiet.Ask("IPTVDATASUBSCRIBER", {{"functionname", "requestPESCB"}, {"on", "1"}});
    ASSERT_TRUE(quiet.WaitForPackets("257", 1)); // the service has worked off the request to stop
    eager.Peer().Sync();
    eager.Peer().Received().Clear();
    ASSERT_TRUE(quiet.WaitForPackets("257", 4));
    eager.Peer().Sync();
    EXPECT_THAT(eager.Packets("257"), IsEmpty());
}

TEST_F(Simulator, AStoppedApplicationDelaysNobody)
{
    Start({"--ts", ZVIPTV_SAMPLE_FILE, "--loop", "--speed", "20"});
    Application standing;
    standing.Peer().SetHandler([](WireMessage const&) { return WireAnswer::Nothing(); });
    standing.Announce("IPTVDATASUBSCRIBER");
    standing.Ask("IPTVDATASUBSCRIBER", {{"functionname", "requestPESCB"}, {"on", "1"}});
    Application running;
    running.Announce("IPTVDATASUBSCRIBER");
    running.Ask("IPTVDATASUBSCRIBER", {{"functionname", "requestPESCB"}, {"on", "1"}});
    ASSERT_TRUE(running.WaitForPackets("256", 600)); // two passes
    std::size_t const got = standing.Peer().Received().Count(IsSignal("SendSignal"));
    EXPECT_GT(got, 0U);
    EXPECT_LE(got, 64U); // one window
}

TEST_F(Simulator, AnApplicationMayLeaveDuringPushes)
{
    Start({"--ts", ZVIPTV_SAMPLE_FILE, "--loop", "--speed", "20"});
    for (int round = 0; round < 5; ++round) {
        Application leaving;
        leaving.Announce("IPTVDATASUBSCRIBER");
        leaving.Ask("IPTVDATASUBSCRIBER", {{"functionname", "requestPESCB"}, {"on", "1"}});
        ASSERT_TRUE(leaving.WaitForPackets("256", 10));
        if (round % 2 == 0) {
            leaving.Announce("IPTVDATASUBSCRIBER", "n");
        }
    }
    Application last;
    last.Announce("PLAYERCONTROL");
    EXPECT_EQ(Number(last.Ask("PLAYERCONTROL", {{"functionname", "GetSourceState"}}), "sourcestate"), "2");
}

TEST_F(Simulator, ReportsTheEndOfTheStream)
{
    ChildProcess& simulator = Start({"--ts", ZVIPTV_SAMPLE_FILE, "--speed", "100"});
    ASSERT_TRUE(simulator.WaitForErrors("the stream has ended", Patience));
    Application application;
    application.Announce("PLAYERCONTROL");
    EXPECT_EQ(Number(application.Ask("PLAYERCONTROL", {{"functionname", "GetSourceState"}}), "sourcestate"),
              "3");
    simulator.Signal(SIGTERM);
    EXPECT_EQ(simulator.Wait(Patience), (ExitStatus{0, 0}));
}

/// More than a machine can play: it plays as fast as it can, and answers and ends all the same.
TEST_F(Simulator, AnswersAtAnySpeed)
{
    ChildProcess& simulator = Start({"--ts", ZVIPTV_SAMPLE_FILE, "--loop", "--speed", "1000"});
    Application application;
    application.Announce("IPTVDATASUBSCRIBER");
    application.Ask("IPTVDATASUBSCRIBER", {{"functionname", "requestPESCB"}, {"on", "1"}});
    ASSERT_TRUE(application.WaitForPackets("256", 100));
    application.Announce("PLAYERCONTROL");
    EXPECT_EQ(Number(application.Ask("PLAYERCONTROL", {{"functionname", "GetSourceState"}}), "sourcestate"),
              "2");
    simulator.Signal(SIGTERM);
    EXPECT_EQ(simulator.Wait(Patience), (ExitStatus{0, 0}));
}

TEST_F(Simulator, RefusesASecondServiceOnTheBus)
{
    StartSample();
    ChildProcess second({ZVIPTV_SIM, "--bus", "system", "--ts", ZVIPTV_SAMPLE_FILE});
    EXPECT_EQ(second.Wait(Patience), (ExitStatus{1, 0}));
    EXPECT_THAT(second.Errors(), HasSubstr("a service runs on this bus already"));
}

} // namespace
} // namespace zviptv::test
