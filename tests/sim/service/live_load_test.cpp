// SPDX-License-Identifier: MIT
#include "LiveInput.h"

#include "Files.h"

#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <iostream>
#include <thread>

namespace zviptv::test {
namespace {

constexpr std::size_t PacketSize = 188;
constexpr std::size_t PacketsInDatagram = 7;

/// Sends a second of a stream over and over as RTP, at its pace, with counters that go on.
class Broadcaster
{
public:
    explicit Broadcaster(Bytes second) : m_second(std::move(second)) {}

    int Port() const { return m_sender.Port(); }
    std::uint16_t Sent() const { return m_sequence; }

    void SendSecond()
    {
        auto const begin = std::chrono::steady_clock::now();
        std::size_t const size = PacketsInDatagram * PacketSize;
        std::size_t const count = m_second.size() / size;
        for (std::size_t i = 0; i < count; ++i) {
            RtpParts parts;
            parts.sequence = m_sequence++;
            parts.timestamp = m_timestamp + static_cast<std::uint32_t>(90'000 * i / count);
            parts.payload.assign(m_second.begin() + static_cast<std::ptrdiff_t>(i * size),
                                 m_second.begin() + static_cast<std::ptrdiff_t>((i + 1) * size));
            for (std::size_t at = 0; at < size; at += PacketSize) {
                GoOn(parts.payload, at);
            }
            std::this_thread::sleep_until(begin + i * std::chrono::seconds(1) / count);
            m_sender.Send(MakeRtp(parts));
        }
        m_timestamp += 90'000;
        std::this_thread::sleep_until(begin + std::chrono::seconds(1));
    }

private:
    /// Gives a transport packet the next counter of its PID; all of them have payload.
    void GoOn(Bytes& packets, std::size_t at)
    {
        std::size_t const pid = (packets[at + 1] & 0x1FU) << 8 | packets[at + 2];
        if ((packets[at + 3] & 0x10) != 0) {
            packets[at + 3] =
                static_cast<std::uint8_t>((packets[at + 3] & 0xF0) | (m_counters[pid]++ & 0x0F));
        }
    }

    Bytes m_second;
    UdpSender m_sender{"127.0.0.1"};
    std::uint16_t m_sequence = 0;
    std::uint32_t m_timestamp = 0;
    std::map<std::size_t, unsigned> m_counters;
};

/// Processor time of a process so far.
double SecondsOf(pid_t pid)
{
    std::string const stat = ReadFile("/proc/" + std::to_string(pid) + "/stat");
    std::istringstream fields(stat.substr(stat.rfind(')') + 2));
    std::string word;
    double ticks = 0;
    for (int field = 3; field <= 15 && fields >> word; ++field) {
        ticks += field >= 14 ? std::stod(word) : 0;
    }
    return ticks / static_cast<double>(sysconf(_SC_CLK_TCK));
}

/// ZVIPTV_LOAD_SECONDS=60 runs a minute.
int Duration()
{
    char const* const text = std::getenv("ZVIPTV_LOAD_SECONDS");
    return text == nullptr ? 3 : std::atoi(text);
}

TEST_F(LiveInput, LosesNothingAt20MegabitsASecond)
{
    Bytes second = WriteDenseStream(m_bus.Directory() + "/second.ts", {50, 47'000, 1});
    while (second.size() % (PacketsInDatagram * PacketSize) != 0) {
        second = second + StreamBuilder().Null().Stream();
    }
    Broadcaster broadcaster(second);
    StartLive("rtp://127.0.0.1:" + std::to_string(broadcaster.Port()), {"--pes", "video"});
    m_control.Announce("PLAYERCONTROL");
    while (SourceState() != "2") {
        broadcaster.SendSecond();
    }
    std::unique_ptr<ChildProcess> const client = Run({"pes", "--count", "1000000"});
    ASSERT_TRUE(WaitForSubscribers(1));
    double const simulatorBefore = SecondsOf(ServicePid());
    double const clientBefore = SecondsOf(client->Pid());
    int const duration = Duration();
    for (int i = 0; i < duration; ++i) {
        broadcaster.SendSecond();
    }
    double const simulator = (SecondsOf(ServicePid()) - simulatorBefore) / duration;
    double const ctl = (SecondsOf(client->Pid()) - clientBefore) / duration;
    Json::Value const input = InputWhere([&](Json::Value const& now) {
        return now["bytes"].asUInt64() > static_cast<std::uint64_t>(duration) * second.size();
    });
    std::cout << duration << " s at " << static_cast<double>(second.size()) * 8 / 1e6
              << " Mbit/s: " << input["lost"].asString() << " RTP packets lost, " << input["gaps"].asString()
              << " gaps, jitter " << input["jitterMicroseconds"].asString() << " us, "
              << Status()["dropped"].asString() << " notifications dropped; simulator " << simulator * 100
              << " %, client " << ctl * 100 << " % of a processor\n";
    auto const wanted = static_cast<std::ptrdiff_t>(duration) * 50; // pictures, of which the last may be open
    EXPECT_TRUE(WaitUntil(
        [&] {
            std::string const output = client->Output();
            return std::count(output.begin(), output.end(), '\n') >= wanted - 1;
        },
        Patience));
    EXPECT_EQ(input["lost"], 0);
    EXPECT_EQ(input["gaps"], 0);
    EXPECT_EQ(input["skippedBytes"], 0);
    EXPECT_EQ(Status()["dropped"], 0);
}

} // namespace
} // namespace zviptv::test
