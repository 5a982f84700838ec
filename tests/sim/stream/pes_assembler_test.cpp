// SPDX-License-Identifier: MIT
#include "StreamTestSupport.h"

#include "stream/PesAssembler.h"

#include <gtest/gtest.h>

using namespace zviptv;
using namespace zviptv::sim;
using namespace zviptv::test;

namespace {
using List = std::vector<Bytes>;

class PesAssemblerTest : public testing::Test
{
protected:
    List Push(PacketParts const& parts)
    {
        m_bytes = ToTsBytes(MakePacket(parts));
        return m_assembler.Push(*ParseTsPacket(m_bytes));
    }

    List Push(std::uint8_t counter, bool start, Bytes payload)
    {
        return Push({0x100, counter, start, std::move(payload), false, false, false, {}});
    }

    PesCounters const& Counters() const { return m_assembler.Counters(); }

    static Bytes Cut(Bytes const& bytes, std::size_t from, std::size_t to)
    {
        return Bytes(bytes.begin() + static_cast<std::ptrdiff_t>(from),
                     bytes.begin() + static_cast<std::ptrdiff_t>(to));
    }

    PesAssembler m_assembler{1000};
    Bytes const m_bounded = MakePes(1, Noise(286)); // 300 bytes in all, in two packets
    Bytes const m_first = Cut(m_bounded, 0, 184);
    Bytes const m_second = Cut(m_bounded, 184, 300);
    Bytes const m_open = MakePes(2, Noise(50), true); // of open length, in one packet

private:
    TsBytes m_bytes{};
};

} // namespace

TEST_F(PesAssemblerTest, CompletesAPacketOfKnownLengthAtOnce)
{
    EXPECT_EQ(Push(0, true, m_first), List{});
    EXPECT_EQ(Push(1, false, m_second), List{m_bounded});
    EXPECT_EQ(Counters().delivered, 1u);
    EXPECT_FALSE(m_assembler.Flush());
}

TEST_F(PesAssemblerTest, CutsAtTheGivenLength)
{
    Push(0, true, m_first);
    EXPECT_EQ(Push(1, false, m_second + Bytes{0xDE, 0xAD}), List{m_bounded});
    EXPECT_EQ(Push(2, false, Bytes{0xBE, 0xEF}), List{}) << "not part of any packet";
    EXPECT_FALSE(m_assembler.Flush());
}

TEST_F(PesAssemblerTest, AcceptsTheSmallestPacketOfGivenLength)
{
    Bytes const smallest{0x00, 0x00, 0x01, 0xBE, 0x00, 0x01, 0xFF};
    EXPECT_EQ(Push(0, true, smallest), List{smallest});
}

TEST_F(PesAssemblerTest, AcceptsTheLargestGivenLength)
{
    PesAssembler assembler;
    Bytes const largest = Bytes{0x00, 0x00, 0x01, 0xBD, 0xFF, 0xFF} + Noise(0xFFFF);
    StreamBuilder builder;
    builder.Pes(0x100, largest);
    List packets;
    ForEachPacket(builder.Stream(), [&](TsPacket const& packet) {
        List const done = assembler.Push(packet);
        packets.insert(packets.end(), done.begin(), done.end());
    });
    EXPECT_EQ(packets, List{largest});
}

TEST_F(PesAssemblerTest, CompletesAPacketOfOpenLengthWhenTheNextBegins)
{
    EXPECT_EQ(Push(0, true, m_open), List{});
    EXPECT_EQ(Push(1, false, Bytes{7, 8, 9}), List{});
    EXPECT_EQ(Push(2, true, m_open), (List{m_open + Bytes{7, 8, 9}}));
    EXPECT_EQ(m_assembler.Flush(), m_open) << "at the end of the stream";
    EXPECT_EQ(Counters().delivered, 2u);
}

TEST_F(PesAssemblerTest, OnePacketMayCompleteTwo)
{
    Bytes const small = MakePes({}, {1, 2, 3});
    Push(0, true, m_open);
    EXPECT_EQ(Push(1, true, small), (List{m_open, small}));
}

TEST_F(PesAssemblerTest, IgnoresDataBeforeTheFirstStart)
{
    EXPECT_EQ(Push(5, false, Bytes{0x00, 0x00, 0x01, 0xBD, 0x00, 0x01, 0xFF}), List{});
    EXPECT_EQ(Push(6, true, m_first), List{});
    EXPECT_EQ(Push(7, false, m_second), List{m_bounded});
    EXPECT_EQ(Counters().headless, 0u);
    EXPECT_EQ(Counters().damaged, 0u);
}

TEST_F(PesAssemblerTest, AGapDropsTheIncompletePacket)
{
    Push(0, true, m_first);
    EXPECT_EQ(Push(2, false, m_second), List{});
    EXPECT_EQ(Counters().damaged, 1u);
    EXPECT_EQ(Push(3, true, m_first), List{});
    EXPECT_EQ(Push(4, false, m_second), List{m_bounded}) << "the next is whole again";
    EXPECT_EQ(Counters().damaged, 1u);
}

TEST_F(PesAssemblerTest, AGapBeforeAStartDropsTheOpenPacket)
{
    Push(0, true, m_open);
    EXPECT_EQ(Push(2, true, m_first), List{}) << "its end may be missing";
    EXPECT_EQ(Counters().damaged, 1u);
    EXPECT_EQ(Push(3, false, m_second), List{m_bounded});
}

TEST_F(PesAssemblerTest, AGapBetweenPacketsDropsNothing)
{
    Push(0, true, m_first);
    Push(1, false, m_second);
    EXPECT_EQ(Push(9, true, m_first), List{});
    EXPECT_EQ(Push(10, false, m_second), List{m_bounded});
    EXPECT_EQ(Counters().damaged, 0u);
}

TEST_F(PesAssemblerTest, TheCounterWrapsFrom15To0)
{
    Push(15, true, m_first);
    EXPECT_EQ(Push(0, false, m_second), List{m_bounded});
}

TEST_F(PesAssemblerTest, ADuplicateIsSkippedOnce)
{
    Push(0, true, m_first);
    EXPECT_EQ(Push(0, true, m_first), List{});
    EXPECT_EQ(Push(1, false, m_second), List{m_bounded});
    EXPECT_EQ(Push(1, false, m_second), List{});
    EXPECT_EQ(Counters().duplicatePackets, 2u);
    EXPECT_EQ(Counters().damaged, 0u);
}

TEST_F(PesAssemblerTest, AThirdCopyIsAGap)
{
    Push(0, true, m_open);
    Push(1, false, Bytes{1, 2, 3});
    Push(1, false, Bytes{1, 2, 3});
    Push(1, false, Bytes{1, 2, 3});
    EXPECT_EQ(Counters().duplicatePackets, 1u);
    EXPECT_EQ(Counters().damaged, 1u);
    EXPECT_FALSE(m_assembler.Flush());
}

TEST_F(PesAssemblerTest, TheSameCounterWithOtherContentIsAGap)
{
    Push(0, true, m_first);
    EXPECT_EQ(Push(0, false, m_second), List{});
    EXPECT_EQ(Counters().duplicatePackets, 0u);
    EXPECT_EQ(Counters().damaged, 1u);
}

TEST_F(PesAssemblerTest, ACopyThatClaimsToBeAStartIsAGap)
{
    Push(0, true, m_open);
    Push(1, false, m_open);
    EXPECT_EQ(Push(1, true, m_open), List{});
    EXPECT_EQ(Counters().duplicatePackets, 0u);
    EXPECT_EQ(Counters().damaged, 1u);
    EXPECT_EQ(m_assembler.Flush(), m_open) << "the one that began there";
}

TEST_F(PesAssemblerTest, AnAnnouncedDiscontinuityIsNotAGap)
{
    Push(0, true, m_first);
    EXPECT_EQ(Push({0x100, 9, false, m_second, false, false, true, {}}), List{m_bounded});
    EXPECT_EQ(Counters().damaged, 0u);
}

TEST_F(PesAssemblerTest, ADiscontinuityMayBeAnnouncedInASeparatePacket)
{
    Push(0, true, m_first);
    EXPECT_EQ(Push({0x100, 0, false, {}, false, false, true, {}}), List{});
    EXPECT_EQ(Push(9, false, m_second), List{m_bounded});
}

TEST_F(PesAssemblerTest, PacketsWithoutPayloadDoNotCount)
{
    Push(0, true, m_first);
    EXPECT_EQ(Push({0x100, 0, false, {}, false, false, false, 27000}), List{});
    EXPECT_EQ(Push(1, false, m_second), List{m_bounded});
    EXPECT_EQ(Counters().duplicatePackets, 0u);
}

TEST_F(PesAssemblerTest, ATransmissionErrorDropsTheIncompletePacket)
{
    Push(0, true, m_first);
    EXPECT_EQ(Push({0x100, 1, false, m_second, true, false, false, {}}), List{});
    EXPECT_EQ(Counters().damaged, 1u);
    EXPECT_EQ(Push(2, false, m_second), List{});
    EXPECT_EQ(Push(3, true, m_first), List{});
    EXPECT_EQ(Push(4, false, m_second), List{m_bounded});
    EXPECT_EQ(Counters().damaged, 1u);
}

TEST_F(PesAssemblerTest, ScrambledPayloadIsDropped)
{
    EXPECT_EQ(Push({0x100, 0, true, m_open, false, true, false, {}}), List{});
    EXPECT_EQ(Push({0x100, 1, true, m_open, false, true, false, {}}), List{});
    EXPECT_FALSE(m_assembler.Flush());
    EXPECT_EQ(Counters().scrambledPackets, 2u);
    EXPECT_EQ(Counters().damaged, 0u);

    Push(2, true, m_first);
    Push({0x100, 3, false, m_second, false, true, false, {}});
    EXPECT_EQ(Counters().damaged, 1u) << "scrambling began inside";
}

TEST_F(PesAssemblerTest, PayloadWithoutAStartCodeIsDropped)
{
    EXPECT_EQ(Push(0, true, Bytes{0x00, 0x01, 0x01, 0xBD, 0x00, 0x01, 0xFF}), List{});
    EXPECT_EQ(Push(1, false, Bytes{1, 2, 3}), List{});
    EXPECT_EQ(Push(2, true, Bytes{0x00, 0x00, 0x02, 0xBD}), List{});
    EXPECT_EQ(Push(3, true, Bytes{0x47}), List{}) << "one wrong byte is enough";
    EXPECT_FALSE(m_assembler.Flush());
    EXPECT_EQ(Counters().headless, 3u);
    EXPECT_EQ(Counters().delivered, 0u);
}

TEST_F(PesAssemblerTest, TheHeaderMaySpanPackets)
{
    std::uint8_t counter = 0;
    for (std::size_t at = 0; at < 10; ++at) {
        EXPECT_EQ(Push(counter++, at == 0, Cut(m_bounded, at, at + 1)), List{});
    }
    EXPECT_EQ(Push(counter++, false, Cut(m_bounded, 10, 184)), List{});
    EXPECT_EQ(Push(counter++, false, m_second), List{m_bounded});
}

TEST_F(PesAssemblerTest, APacketShorterThanItsLengthIsCounted)
{
    Push(0, true, m_first);
    EXPECT_EQ(Push(1, true, m_first), List{});
    EXPECT_EQ(Counters().truncated, 1u);
    EXPECT_FALSE(m_assembler.Flush()) << "nor at the end of the stream";
    EXPECT_EQ(Counters().truncated, 2u);
    Push(2, true, Bytes{0x00, 0x00, 0x01});
    EXPECT_FALSE(m_assembler.Flush()) << "not even a head";
    EXPECT_EQ(Counters().truncated, 3u);
}

TEST_F(PesAssemblerTest, APacketOfOpenLengthOverTheLimitIsDropped)
{
    Push(0, true, MakePes({}, Noise(175), true)); // 184 bytes
    for (std::uint8_t counter = 1; counter < 12; ++counter) {
        EXPECT_EQ(Push(counter, false, Noise(184)), List{});
    }
    EXPECT_EQ(Counters().oversized, 1u);
    EXPECT_EQ(Push(12, true, m_first), List{});
    EXPECT_EQ(Push(13, false, m_second), List{m_bounded});
}

TEST_F(PesAssemblerTest, APacketOfExactlyTheLimitIsDelivered)
{
    PesAssembler assembler(59);
    ASSERT_EQ(m_open.size(), 64u);
    Bytes const pes = MakePes(2, Noise(45), true); // 59 bytes
    auto const one = ToTsBytes(MakePacket({0x100, 0, true, pes, false, false, false, {}}));
    auto const two = ToTsBytes(MakePacket({0x100, 1, true, m_open, false, false, false, {}}));
    EXPECT_EQ(assembler.Push(*ParseTsPacket(one)), List{});
    EXPECT_EQ(assembler.Push(*ParseTsPacket(two)), List{pes});
    EXPECT_EQ(assembler.Counters().oversized, 1u) << "64 bytes are too many";
}

TEST_F(PesAssemblerTest, ALengthOverTheLimitIsDroppedAtOnce)
{
    EXPECT_EQ(Push(0, true, Bytes{0x00, 0x00, 0x01, 0xBD, 0xFF, 0xFF}), List{});
    EXPECT_EQ(Counters().oversized, 1u);
    EXPECT_FALSE(m_assembler.Flush());
}

TEST_F(PesAssemblerTest, RestartDropsPacketsWithoutCountingThem)
{
    Push(0, true, m_first);
    m_assembler.Restart();
    EXPECT_EQ(Push(9, false, m_second), List{});
    EXPECT_EQ(Push(10, true, m_first), List{});
    EXPECT_EQ(Push(11, false, m_second), List{m_bounded});
    EXPECT_EQ(Counters().damaged, 0u);
    EXPECT_EQ(Counters().truncated, 0u);
}
