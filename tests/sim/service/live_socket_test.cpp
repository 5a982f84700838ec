// SPDX-License-Identifier: MIT
#include "LiveInput.h"

#include <csignal>

namespace zviptv::test {
namespace {

/// The simulator at a port of this machine, to which the test sends.
class LiveSocket : public LiveInput
{
protected:
    void Listen(std::string const& scheme, std::vector<std::string> const& options = {})
    {
        StartLive(scheme + "://127.0.0.1:" + std::to_string(m_sender.Port()), options);
        m_control.Announce("PLAYERCONTROL");
    }

    /// Sends tables until the simulator plays. Packets that arrive before it listens are lost.
    void Begin()
    {
        ASSERT_TRUE(WaitUntil(
            [this] {
                StreamBuilder tables;
                Send(AddTables(tables).Stream());
                return SourceState() == "2";
            },
            Patience));
    }

    virtual void Send(Bytes const& packets) { m_sender.Send(packets); }

    std::string Ask(std::string const& type, std::string const& function, std::string const& key)
    {
        return Number(m_application.Ask(type, {{"functionname", function}}), key);
    }

    UdpSender m_sender{"127.0.0.1"};
    Application m_application;
};

/// RTP packets, numbered from a little before the wrap.
class LiveRtp : public LiveSocket
{
protected:
    void Send(Bytes const& packets) override { SendAs(m_sequence++, packets); }

    void SendAs(std::uint16_t sequence, Bytes const& packets)
    {
        RtpParts parts;
        parts.sequence = sequence;
        parts.timestamp = 900U * sequence;
        parts.payload = packets;
        parts.contributors = {7};
        parts.extension = Bytes(4, 0x47);
        parts.padding = 4;
        m_sender.Send(MakeRtp(parts));
    }

    std::uint16_t m_sequence = 65530;
};

Bytes AudioPes(unsigned number)
{
    return MakePes(90'000 + number, Noise(100, number), false, {}, 0xC0);
}

std::string TextOf(Bytes const& bytes)
{
    return {bytes.begin(), bytes.end()};
}

TEST_F(LiveSocket, AnswersBeforeAnyInputAndLearns)
{
    Listen("udp");
    m_application.Announce("BROADCASTDATA");
    EXPECT_EQ(Ask("BROADCASTDATA", "SizeOfAudio", "size"), "0");
    EXPECT_EQ(Ask("BROADCASTDATA", "GetCurrentAudioInfo", "result_internal"), "0");
    for (char const* const function : {"GetSTCCount", "GetFirstPTS", "GetResolution"}) {
        WireMessage const reply = m_control.Ask("PLAYERCONTROL", {{"functionname", function}});
        EXPECT_EQ(Number(reply, "result_internal"), "0") << function;
    }
    EXPECT_EQ(SourceState(), "1");
    Begin();
    EXPECT_EQ(Ask("BROADCASTDATA", "SizeOfAudio", "size"), "1");
    StreamBuilder builder;
    Send(builder.Pcr(LiveVideo, 5000 * 300).Null(6).Stream());
    ASSERT_TRUE(WaitUntil(
        [this] {
            return Number(m_control.Ask("PLAYERCONTROL", {{"functionname", "GetSTCCount"}}),
                          "result_internal") == "1";
        },
        Patience));
    std::string const stc =
        Number(m_control.Ask("PLAYERCONTROL", {{"functionname", "GetSTCCount"}}), "stcCount");
    EXPECT_GE(std::stoull(stc), 5000U);
    EXPECT_LT(std::stoull(stc), 5000U + 90'000 * 10);
    // It runs on without another PCR.
    EXPECT_TRUE(WaitUntil(
        [&] {
            return std::stoull(Number(m_control.Ask("PLAYERCONTROL", {{"functionname", "GetSTCCount"}}),
                                      "stcCount")) > std::stoull(stc) + 900;
        },
        Patience));
}

TEST_F(LiveSocket, DeliversPacketsUnchangedWithoutWaitingForAClock)
{
    Listen("udp");
    Subscribe();
    Begin();
    StreamBuilder builder;
    for (unsigned i = 0; i < 50; ++i) {
        builder.Pes(LiveAudio, AudioPes(i)).Null(6);
    }
    Bytes const& stream = builder.Stream();
    for (std::size_t at = 0; at < stream.size(); at += 7 * 188) {
        Send({stream.begin() + static_cast<std::ptrdiff_t>(at),
              stream.begin() + static_cast<std::ptrdiff_t>(at + 7 * 188)});
    }
    ASSERT_TRUE(m_subscriber.WaitForPackets("257", 50));
    auto const packets = m_subscriber.Packets("257");
    for (unsigned i = 0; i < 50; ++i) {
        EXPECT_EQ(packets.at(i), TextOf(AudioPes(i))) << i;
    }
}

TEST_F(LiveSocket, ShowsAStallAndRecovers)
{
    Listen("udp");
    Begin();
    ASSERT_TRUE(WaitForState("1"));
    EXPECT_EQ(InputWhere([](Json::Value const& input) { return input["state"] == "stalled"; })["stalls"], 1);
    Begin();
    EXPECT_EQ(InputWhere([](Json::Value const& input) {
                  return input["state"] == "receiving" || input["stalls"] == 2;
              })["error"],
              "");
}

/// Datagrams without transport packets arrive in between.
TEST_F(LiveSocket, Resynchronises)
{
    Listen("udp");
    Subscribe();
    Begin();
    m_sender.Send(std::string(333, 'x'));
    StreamBuilder builder;
    Send(builder.Pes(LiveAudio, AudioPes(1)).Null(6).Stream());
    ASSERT_TRUE(m_subscriber.WaitForPackets("257", 1));
    EXPECT_EQ(InputWhere([](Json::Value const& input) { return input["skippedBytes"] != 0; })["skippedBytes"],
              333);
}

/// The simulator is stopped while more data arrives than its socket's buffer holds.
TEST_F(LiveSocket, CountsDroppedDatagrams)
{
    Listen("udp");
    Begin();
    ASSERT_EQ(kill(ServicePid(), SIGSTOP), 0);
    for (int i = 0; i < 20'000; ++i) {
        m_sender.Send(std::string(1316, '\x47'));
    }
    ASSERT_EQ(kill(ServicePid(), SIGCONT), 0);
    InputWhere([this](Json::Value const& input) {
        StreamBuilder tables;
        Send(AddTables(tables).Stream()); // the next one that finds room tells of those before
        return input["lost"].asUInt64() > 0;
    });
}

TEST_F(LiveRtp, PutsPacketsInOrderAndCounts)
{
    Listen("rtp");
    Subscribe();
    Begin();
    StreamBuilder builder;
    std::vector<Bytes> packets;
    for (unsigned i = 0; i < 50; ++i) {
        StreamBuilder one(builder);
        one.Pes(LiveAudio, AudioPes(i));
        Bytes const& all = one.Stream();
        packets.emplace_back(all.begin() + static_cast<std::ptrdiff_t>(builder.Stream().size()), all.end());
        builder = one;
    }
    std::uint16_t const first = m_sequence;
    for (int const i : {0, 2, 1, 1, 3, 6, 5, 4}) { // two come late, 4 and 5 too; 1 comes twice
        SendAs(static_cast<std::uint16_t>(first + i), packets.at(static_cast<std::size_t>(i)));
    }
    m_sender.Send(std::string("no RTP"));
    for (int i = 8; i < 50; ++i) { // 7 never comes
        SendAs(static_cast<std::uint16_t>(first + i), packets.at(static_cast<std::size_t>(i)));
    }
    ASSERT_TRUE(m_subscriber.WaitForPackets("257", 49));
    std::vector<std::string> wanted;
    for (unsigned i = 0; i < 50; ++i) {
        if (i != 7) {
            wanted.push_back(TextOf(AudioPes(i)));
        }
    }
    EXPECT_EQ(m_subscriber.Packets("257"), wanted);
    Json::Value const input = InputWhere([](Json::Value const& now) { return now["lost"] != 0; });
    EXPECT_EQ(input["lost"], 1);
    EXPECT_EQ(input["duplicated"], 1);
    EXPECT_EQ(input["reordered"], 3);
    EXPECT_EQ(input["malformed"], 1);
    EXPECT_EQ(input["gaps"], 1);
    EXPECT_EQ(input["skippedBytes"], 0);
    EXPECT_EQ(input["live"], true);
}

/// A programme that the stream lacks is an error as long as it does.
TEST_F(LiveSocket, ReportsTheProgrammes)
{
    Listen("udp", {"--program", "7"});
    ASSERT_TRUE(WaitUntil(
        [this] {
            StreamBuilder tables;
            Send(AddTables(tables).Stream());
            return SourceState() == "4";
        },
        Patience));
    EXPECT_EQ(
        InputWhere([](Json::Value const& input) { return !input["error"].asString().empty(); })["error"],
        "it has no programme 7: it has 1");
    StreamBuilder seventh;
    seventh.Section(0, MakePat({{7, 0x1000}}, 1))
        .Section(0x1000, MakePmt(7, LiveVideo, {{0x1B, LiveVideo, {}}}));
    Send(seventh.Null(5).Stream());
    EXPECT_TRUE(WaitForState("2"));
}

/// Input from other programs.
void SendWithFfmpeg(std::optional<ChildProcess>& sender, std::string const& format, std::string const& url)
{
    sender.emplace(std::vector<std::string>{"ffmpeg", "-nostdin", "-v", "error", "-re", "-stream_loop", "-1",
                                            "-i", ZVIPTV_SAMPLE_FILE, "-c", "copy", "-f", format, url});
}

TEST_F(LiveSocket, PlaysWhatFfmpegSends)
{
    for (std::string const scheme : {"udp", "rtp"}) {
        SCOPED_TRACE(scheme);
        UdpSender const port("127.0.0.1");
        std::string const url = scheme + "://127.0.0.1:" + std::to_string(port.Port());
        m_simulator.reset();
        ASSERT_TRUE(m_watcher.WaitForOwner("org.corvel.zviptvapi.dbushelper", false));
        StartLive(url);
        std::optional<ChildProcess> sender;
        SendWithFfmpeg(sender, scheme == "udp" ? "mpegts" : "rtp_mpegts", url + "?pkt_size=1316");
        ASSERT_TRUE(WaitForState("2")) << sender->Errors();
        Application subscriber;
        subscriber.Announce("IPTVDATASUBSCRIBER");
        subscriber.Ask("IPTVDATASUBSCRIBER", {{"functionname", "requestPESCB"}, {"on", "1"}});
        ASSERT_TRUE(subscriber.WaitForPackets("257", 5)) << sender->Errors();
        ASSERT_TRUE(subscriber.WaitForPackets("256", 20));
        Json::Value const input =
            InputWhere([](Json::Value const& now) { return now["packets"].asUInt64() > 100; });
        EXPECT_EQ(input["lost"], 0);
        EXPECT_EQ(input["gaps"], 0);
        EXPECT_EQ(input["state"], "receiving");
        if (scheme == "rtp") {
            EXPECT_GT(input["jitterMicroseconds"].asUInt(), 0U);
            EXPECT_LT(input["jitterMicroseconds"].asUInt(), 1'000'000U);
        }
    }
}

} // namespace
} // namespace zviptv::test
