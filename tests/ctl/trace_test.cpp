// SPDX-License-Identifier: MIT
#include "TraceFixture.h"

#include <chrono>
#include <cstdio>
#include <regex>
#include <sstream>

using namespace zviptv::test;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;

namespace {

/// The lines without times, latencies and process.
std::vector<std::string> LinesOf(std::string const& output)
{
    std::istringstream stream(output);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) {
        EXPECT_THAT(line, MatchesRegex("[0-9]+:[0-9]+:[0-9]+\\.[0-9]+ .*"));
        line = std::regex_replace(line, std::regex("^[0-9:.]+ "), "");
        line = std::regex_replace(line, std::regex(R"( \([0-9.]+ m?s\))"), " (latency)");
        lines.push_back(std::regex_replace(line, std::regex(R"( [^ ]*\[[0-9]+\])"), ""));
    }
    return lines;
}

std::size_t Count(std::string const& text, std::string const& part)
{
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size())) {
        ++count;
    }
    return count;
}

std::vector<Json::Value> ObjectsOf(std::string const& output)
{
    std::istringstream stream(output);
    std::vector<Json::Value> objects;
    for (std::string line; std::getline(stream, line);) {
        objects.push_back(ParseJson(line));
    }
    return objects;
}

} // namespace

TEST_F(TraceTest, ShowsEveryMessageOfTheProtocolAsALine)
{
    m_service.Answer("SetDigitalDualSound", {{"result_internal", "1"}});
    m_service.Answer("GetAudio", {{"result_internal", "0"}, {"audio", std::string(32, '\0')}});
    m_service.AnswerError("SetAppID", "org.corvel.test.Failed");
    Start();
    Announce("PLAYERCONTROL", "y");
    Request("PLAYERCONTROL", Entries({{"functionname", "SetAppID"}, {"AppID", "org.example"}}));
    Request("PLAYERCONTROL",
            Entries({{"functionname", "SetDigitalDualSound"}, {"handleID", "261"}, {"mode", "1"}}));
    Request("BROADCASTDATA", Entries({{"functionname", "GetAudio"}, {"handleID", "256"}, {"index", "x"}}));
    Push("257", "12345");
    Announce("PLAYERCONTROL", "n");
    std::string const app = m_application.Name();
    std::string const service = m_service.Name();
    m_application.Disconnect();
    CtlResult const result = End();
    EXPECT_EQ(result.code, 0);
    std::string const named = app + " org.example ";
    auto const lines = LinesOf(result.output);
    ASSERT_EQ(lines.size(), 12U) << result.output;
    EXPECT_EQ(lines[0], app + " -> announces PLAYERCONTROL");
    EXPECT_EQ(lines[1], app + " <- answers for PLAYERCONTROL dbusname=" + service + " (latency)");
    EXPECT_EQ(lines[2], named + "-> PLAYERCONTROL SetAppID AppID=org.example");
    EXPECT_THAT(
        lines[3],
        MatchesRegex(named + "<- PLAYERCONTROL SetAppID error org.corvel.test.Failed.* \\(latency\\)"));
    EXPECT_EQ(lines[4], named + "-> PLAYERCONTROL SetDigitalDualSound mode=MAIN handle=261");
    EXPECT_EQ(lines[5], named + "<- PLAYERCONTROL SetDigitalDualSound true (latency)");
    EXPECT_EQ(lines[6], named + "-> BROADCASTDATA GetAudio index=x ! index is not a number");
    EXPECT_THAT(
        lines[7],
        HasSubstr("<- BROADCASTDATA GetAudio false audio={language=UNKNOWN encoding=UNKNOWN pid=0x0000"));
    EXPECT_EQ(lines[8], named + "<< IPTVDATASUBSCRIBER PESCB AUDIO pid=0x0101 pts=133200 size=5");
    EXPECT_EQ(lines[9], named + "-> withdraws PLAYERCONTROL");
    EXPECT_EQ(lines[11], named + "-- has left the bus");
    EXPECT_THAT(result.errors, HasSubstr("zviptvctl: 12 events of "));
}

TEST_F(TraceTest, WritesAnObjectForEachMessage)
{
    m_service.Answer("SizeOfAudio", {{"result_internal", "1"}, {"size", "2"}});
    Start({"--json"});
    Request("BROADCASTDATA", Entries({{"functionname", "SizeOfAudio"}, {"handleID", "256"}}));
    Push("258", "1234567");
    auto const objects = ObjectsOf(End().output);
    ASSERT_EQ(objects.size(), 3U);
    EXPECT_EQ(objects[0]["message"].asString(), "request");
    EXPECT_EQ(objects[0]["application"]["bus"].asString(), m_application.Name());
    EXPECT_EQ(objects[1]["result"].asBool(), true);
    EXPECT_EQ(objects[1]["values"]["size"].asInt(), 2);
    EXPECT_EQ(objects[1]["request"].asInt(), objects[0]["number"].asInt());
    EXPECT_GT(objects[1]["latency"].asInt64(), 0);
    EXPECT_EQ(objects[2]["pid"].asInt(), 258);
    EXPECT_EQ(objects[2]["pts"].asInt(), 133200);
    EXPECT_EQ(objects[2]["size"].asInt(), 7);
}

TEST_F(TraceTest, ShowsOnlyTheChosenEvents)
{
    WirePeer other;
    Start({"--out", InFolder("all.pcapng")});
    Request("PLAYERCONTROL", Entries({{"functionname", "MuteAudio"}, {"onoff", "1"}}));
    Request("PLAYERCONTROL", Entries({{"functionname", "SetAppID"}, {"AppID", "org.example"}}));
    Request("IPGUTIL", Entries({{"functionname", "ExistXmlForIPG"}}));
    other.Call(
        {m_service.Name(), ChannelPath("PLAYERCONTROL"), "org.corvel.zviptvapi.DbusCommunication", "Send"},
        Entries({{"functionname", "MuteAudio"}, {"onoff", "0"}}));
    End();
    auto const chosen = [this](Words words) {
        Words all = {"trace", "--in", InFolder("all.pcapng")};
        all.insert(all.end(), words.begin(), words.end());
        return LinesOf(RunCtl(all).output).size();
    };
    EXPECT_EQ(chosen({}), 8U);
    EXPECT_EQ(chosen({"--application", m_application.Name()}), 6U);
    EXPECT_EQ(chosen({"--application", "org.example"}), 4U) << "from the request on that named it";
    EXPECT_EQ(chosen({"--endpoint", "playercontrol"}), 6U);
    EXPECT_EQ(chosen({"--function", "muteaudio"}), 4U);
    EXPECT_EQ(chosen({"--function", "MuteAudio", "--application", other.Name()}), 2U);
    EXPECT_EQ(chosen({"--function", "GetAudio"}), 0U);
}

/// Sends as fast as the bus accepts messages. Returns the rate.
TEST_F(TraceTest, KeepsUpWithPushesWithoutLoss)
{
    constexpr std::size_t count = 20'000;
    m_application.SetRecording(false);
    for (std::size_t const size : {std::size_t{188}, std::size_t{4'096}}) {
        Start({"--out", InFolder("flood.pcap")});
        auto const begin = std::chrono::steady_clock::now();
        m_service.Peer().EmitMany(
            {m_application.Name(), ChannelPath("IPTVDATASUBSCRIBER"),
             "org.corvel.zviptvapi.DbusCommunication", "SendSignal"},
            Entries({{"functionname", "PESCB"}, {"pesPID", "257"}, {"pesData", std::string(size, 'x')}}),
            count);
        m_service.Peer().Sync();
        std::chrono::duration<double> const sent = std::chrono::steady_clock::now() - begin;
        std::string const end = " size=" + std::to_string(size) + "\n";
        std::size_t const shown = Count(End().output, end);
        std::chrono::duration<double> const all = std::chrono::steady_clock::now() - begin;
        EXPECT_EQ(shown, count);
        EXPECT_EQ(Count(RunCtl({"trace", "--in", InFolder("flood.pcap")}).output, end), count);
        std::printf(
            "%zu pushes of %zu bytes: sent in %.2f s, recorded and shown after %.2f s, %.0f a second\n",
            count, size, sent.count(), all.count(), static_cast<double>(count) / all.count());
    }
}

TEST_F(TraceTest, EndsWhenTheBusDoesAfterShowingEverything)
{
    Start();
    Request("PLAYERCONTROL", Entries({{"functionname", "MuteAudio"}, {"onoff", "1"}}));
    m_bus.Kill();
    CtlResult const result = Finish(*m_trace);
    EXPECT_EQ(result.code, 4);
    EXPECT_THAT(result.errors,
                HasSubstr("zviptvctl: the bus closed the connection; check that it still runs\n"));
    EXPECT_THAT(result.output, HasSubstr("PLAYERCONTROL MuteAudio onoff=true\n"));
}

TEST_F(TraceTest, ShowsThatTheServiceHasLeftAndArrived)
{
    Start();
    Request("PLAYERCONTROL", Entries({{"functionname", "MuteAudio"}, {"onoff", "1"}}));
    std::string const former = m_service.Name();
    m_service.Vanish();
    ASSERT_TRUE(m_application.WaitForOwner("org.corvel.zviptvapi.dbushelper", false));
    FakeService const second;
    auto const lines = LinesOf(End().output);
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(lines[2], former + " -- the service has left the bus");
    EXPECT_EQ(lines[3], second.Name() + " -- the service has arrived");
}

TEST_F(TraceTest, AnErrorInsteadOfAnAnswerBelongsToTheAnnouncement)
{
    Request("PLAYERCONTROL", Entries({{"functionname", "MuteAudio"}, {"onoff", "1"}}));
    m_service.Vanish();
    ASSERT_TRUE(m_application.WaitForOwner("org.corvel.zviptvapi.dbushelper", false));
    Start({"--out", InFolder("left.pcapng")});
    Announce("PLAYERCONTROL", "n");
    auto const lines = LinesOf(End().output);
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0], m_application.Name() + " -> withdraws PLAYERCONTROL");
    EXPECT_THAT(lines[1], MatchesRegex(m_application.Name() + " <- answers for PLAYERCONTROL error "
                                                              "org.freedesktop.DBus.Error.ServiceUnknown: .* "
                                                              "\\(latency\\)"));
    std::string const summary = RunCtl({"trace", "--in", InFolder("left.pcapng"), "--summary"}).output;
    EXPECT_THAT(summary, ContainsRegex("PLAYERCONTROL  \\(announcement\\)  1 .* 0 +1 +0\n"));
    EXPECT_THAT(summary, Not(HasSubstr("keeps up")));
}

TEST_F(TraceTest, EndsAfterTheGivenTime)
{
    CtlResult const result = RunCtl({"trace", "--seconds", "0.1"});
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.output, "");
}

TEST_F(TraceTest, FollowsTheBusWithOrWithoutTheOption)
{
    Start({"--follow"});
    Request("PLAYERCONTROL", Entries({{"functionname", "MuteAudio"}, {"onoff", "1"}}));
    CtlResult const result = End();
    EXPECT_EQ(result.code, 0);
    EXPECT_THAT(result.output, HasSubstr("PLAYERCONTROL MuteAudio onoff=true\n"));
}

TEST_F(TraceTest, ReportsWhichBusIsMissing)
{
    CtlResult const result = RunCtl({"trace"}, {{"DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nowhere/bus"}});
    EXPECT_EQ(result.code, 3);
    EXPECT_THAT(result.errors, HasSubstr("cannot connect to the bus at unix:path=/nowhere/bus: "));
}
