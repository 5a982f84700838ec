// SPDX-License-Identifier: MIT
#include "../stream/NaiveReassembly.h"
#include "Crowd.h"

namespace zviptv::test {
namespace {

constexpr std::size_t Many = 16;

std::vector<std::string> PacketsOf(Bytes const& stream, std::uint16_t pid)
{
    std::vector<std::string> packets;
    for (Bytes const& packet : ReassembleNaively(stream, pid)) {
        packets.emplace_back(packet.begin(), packet.end());
    }
    return packets;
}

/// A caption begins after the PES header (9 bytes and a PTS) and the data identifier.
std::vector<std::string> CaptionsOf(Bytes const& stream)
{
    std::vector<std::string> captions;
    for (std::string const& packet : PacketsOf(stream, DenseTeletext)) {
        captions.push_back(packet.substr(15));
    }
    return captions;
}

TEST_F(Crowd, EveryProcessGetsTheSamePackets)
{
    Play({});
    std::vector<Received> const all = Gather("pes", Many, 150);
    for (std::uint16_t const pid : {DenseVideo, DenseAudio, DenseTeletext}) {
        std::vector<std::string> const wanted = PacketsOf(m_stream, pid);
        ASSERT_EQ(wanted.size(), 40U);
        for (Received const& one : all) {
            EXPECT_EQ(one.packets.size(), 150U);
            EXPECT_GT(one.Of(pid).size(), wanted.size()) << "more than a pass of PID " << pid;
            EXPECT_TRUE(IsRunOf(one.Of(pid), wanted)) << "PID " << pid;
        }
    }
}

TEST_F(Crowd, EveryProcessGetsTheSameCaptions)
{
    Play({});
    std::vector<std::string> const wanted = CaptionsOf(m_stream);
    for (Received const& one : Gather("caption", Many, 50)) {
        EXPECT_EQ(one.packets.size(), 50U);
        EXPECT_TRUE(IsRunOf(one.Of(0), wanted));
    }
}

/// The simulator treats each process as a separate client, and no client loses data.
TEST_F(Crowd, CountsEveryProcess)
{
    Play({}, {"--json"});
    std::vector<std::unique_ptr<ChildProcess>> processes;
    for (std::size_t i = 0; i < Many; ++i) {
        processes.push_back(Run({i % 2 == 0 ? "pes" : "caption", "--json"}));
    }
    ASSERT_TRUE(WaitForSubscribers(Many));
    for (auto const& process : processes) {
        EXPECT_TRUE(process->WaitForOutput("\n", Patience));
    }
    Json::Value const last = Status();
    EXPECT_EQ(last["clients"], 16);
    EXPECT_EQ(last["subscribers"].size(), Many);
    for (Json::Value const& subscriber : last["subscribers"]) {
        EXPECT_EQ(subscriber["dropped"], 0) << subscriber.toStyledString();
    }
}

} // namespace
} // namespace zviptv::test
