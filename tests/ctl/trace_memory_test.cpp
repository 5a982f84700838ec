// SPDX-License-Identifier: MIT
#include "Files.h"
#include "PeakMemory.h"
#include "TraceFixture.h"
#include "WaitUntil.h"

#include <cstdint>
#include <fstream>
#include <string>

using namespace zviptv::test;

namespace {

constexpr std::size_t HeaderSize = 24; // of a pcap file
constexpr std::size_t PacketSize = 4'000'000;

class TraceMemoryTest : public TraceTest
{
protected:
    /// Memory for a file that contains the messages of `recording` the given number of times.
    std::uint64_t MemoryFor(std::string const& recording, int times)
    {
        std::string const path = InFolder("long.pcap");
        std::ofstream file(path, std::ios::binary);
        file << recording.substr(0, HeaderSize);
        for (int i = 0; i < times; ++i) {
            file << recording.substr(HeaderSize);
        }
        file.close();
        auto const trace = StartCtl({"trace", "--in", path, "--follow"},
                                    {{"ASAN_OPTIONS", KeepNoFreedMemory}, {"TZ", "UTC"}});
        auto const packets = [&trace] {
            std::string const text = trace->Output();
            std::size_t count = 0;
            for (auto at = text.find("pid=0x0103"); at != std::string::npos;
                 at = text.find("pid=0x0103", at + 1)) {
                ++count;
            }
            return count;
        };
        EXPECT_TRUE(WaitUntil([&] { return packets() == static_cast<std::size_t>(times); }, patience))
            << trace->Output() << trace->Errors();
        std::uint64_t const peak = PeakMemory(trace->Pid());
        trace->Signal(SIGINT);
        EXPECT_EQ(Finish(*trace).code, 0);
        return peak;
    }
};

} // namespace

/// The packet is large, so that reading the long file is quick.
TEST_F(TraceMemoryTest, DoesNotGrowWithTheFile)
{
    Start({"--out", InFolder("one.pcap")});
    Push("259", std::string(PacketSize, 'x'));
    m_service.Peer().Sync();
    EXPECT_EQ(End().code, 0);
    std::string const recording = ReadFile(InFolder("one.pcap"));
    ASSERT_GT(recording.size(), PacketSize);
    std::uint64_t const ofShortFile = MemoryFor(recording, 3);
    std::uint64_t const ofLongFile = MemoryFor(recording, 30);
    EXPECT_LT(ofLongFile, ofShortFile + 2 * PacketSize);
}
