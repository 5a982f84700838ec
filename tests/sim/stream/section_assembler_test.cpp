// SPDX-License-Identifier: MIT
#include "StreamTestSupport.h"

#include "stream/SectionAssembler.h"

#include <gtest/gtest.h>

using namespace zviptv;
using namespace zviptv::sim;
using namespace zviptv::test;

namespace {

/// Sections out of payloads; a payload's first byte is its pointer field if it is marked as a start.
class Sections : public testing::Test
{
protected:
    std::vector<Bytes> Push(PacketParts parts)
    {
        m_bytes = ToTsBytes(MakePacket(parts));
        return m_assembler.Push(*ParseTsPacket(m_bytes));
    }

    std::vector<Bytes> Push(std::uint8_t counter, bool start, Bytes payload)
    {
        return Push({0x20, counter, start, std::move(payload), false, false, false, {}});
    }

    static Bytes Slice(Bytes const& bytes, std::size_t from, std::size_t to)
    {
        return Bytes(bytes.begin() + static_cast<std::ptrdiff_t>(from),
                     bytes.begin() + static_cast<std::ptrdiff_t>(to));
    }

    Bytes const m_long = MakeSection(0x02, 1, 0, Noise(300));
    Bytes const m_short = MakeSection(0x00, 2, 0, Noise(20));

private:
    TsBytes m_bytes{};
    SectionAssembler m_assembler;
};

} // namespace

TEST_F(Sections, ReadsOneInOnePacket)
{
    EXPECT_EQ(Push(0, true, Bytes{0} + m_short), std::vector<Bytes>{m_short});
}

TEST_F(Sections, ReadsOneAcrossPackets)
{
    EXPECT_TRUE(Push(0, true, Bytes{0} + Slice(m_long, 0, 183)).empty());
    EXPECT_EQ(Push(1, false, Slice(m_long, 183, m_long.size())), std::vector<Bytes>{m_long});
}

TEST_F(Sections, ReadsEndAndStartInOnePacket)
{
    Push(0, true, Bytes{0} + Slice(m_long, 0, 183));
    Bytes const rest = Slice(m_long, 183, m_long.size());
    Bytes const payload = Bytes{static_cast<std::uint8_t>(rest.size())} + rest + m_short;
    EXPECT_EQ(Push(1, true, payload), (std::vector<Bytes>{m_long, m_short}));
}

TEST_F(Sections, ReadsSeveralUpToTheStuffing)
{
    Bytes const payload = Bytes{0} + m_short + m_short + Bytes(10, 0xFF);
    EXPECT_EQ(Push(0, true, payload), (std::vector<Bytes>{m_short, m_short}));
}

TEST_F(Sections, ReadsAHeaderSplitAfterItsFirstByte)
{
    EXPECT_TRUE(Push(0, true, Bytes{0} + Slice(m_short, 0, 1)).empty());
    EXPECT_EQ(Push(1, false, Slice(m_short, 1, m_short.size())), std::vector<Bytes>{m_short});
}

TEST_F(Sections, AGapDropsTheOpenSection)
{
    Push(0, true, Bytes{0} + Slice(m_long, 0, 183));
    EXPECT_TRUE(Push(2, false, Slice(m_long, 183, m_long.size())).empty());
    EXPECT_EQ(Push(3, true, Bytes{0} + m_short), std::vector<Bytes>{m_short});
}

TEST_F(Sections, ADuplicatePacketCountsOnce)
{
    Push(0, true, Bytes{0} + Slice(m_long, 0, 183));
    EXPECT_TRUE(Push(0, true, Bytes{0} + Slice(m_long, 0, 183)).empty());
    EXPECT_EQ(Push(1, false, Slice(m_long, 183, m_long.size())), std::vector<Bytes>{m_long});
}

TEST_F(Sections, DamagedAndScrambledPacketsAreNotUsed)
{
    EXPECT_TRUE(Push({0x20, 0, true, Bytes{0} + m_short, true, false, false, {}}).empty());
    EXPECT_TRUE(Push({0x20, 1, true, Bytes{0} + m_short, false, true, false, {}}).empty());
}

TEST_F(Sections, AWrongCrcIsRefused)
{
    Bytes wrong = m_short;
    wrong.back() ^= 1;
    EXPECT_TRUE(Push(0, true, Bytes{0} + wrong).empty());
}

TEST_F(Sections, APointerPastThePacketIsHarmless)
{
    EXPECT_TRUE(Push(0, true, Bytes{250} + m_short).empty());
    EXPECT_EQ(Push(1, true, Bytes{0} + m_short), std::vector<Bytes>{m_short});
}

TEST_F(Sections, EmptySectionsAreHarmless)
{
    EXPECT_TRUE(Push(0, true, Bytes{0} + Bytes(183, 0x00)).empty());
}

TEST(ValidSection, RequiresAVersionAndNumbersInOrder)
{
    Bytes const sound = MakeSection(0x02, 1, 0, Noise(8));
    EXPECT_TRUE(IsValidSection(sound));
    EXPECT_FALSE(IsValidSection(MakeSection(0x02, 1, 0, Noise(8), 2, 1))) << "number past the last";
    EXPECT_TRUE(IsValidSection(MakeSection(0x02, 1, 0, Noise(1012)))) << "1024 bytes";
    EXPECT_FALSE(IsValidSection(MakeSection(0x02, 1, 0, Noise(1013)))) << "1025 bytes";
    EXPECT_FALSE(IsValidSection(Bytes{}));
    EXPECT_FALSE(IsValidSection(Bytes{0x00, 0xB0, 0x00}));
}

TEST(ValidSection, OfEventsMayBeLongerWithNumbersThatJump)
{
    EXPECT_TRUE(IsValidSection(MakeSection(0x4E, 1, 0, Noise(8), 2, 1), EventSections));
    EXPECT_TRUE(IsValidSection(MakeSection(0x4E, 1, 0, Noise(4084)), EventSections)) << "4096 bytes";
    EXPECT_FALSE(IsValidSection(MakeSection(0x4E, 1, 0, Noise(4085)), EventSections)) << "4097 bytes";
    EXPECT_FALSE(IsValidSection(Bytes{}, EventSections));
}

TEST(ValidSection, HasTheRulesOfTheAssembler)
{
    Bytes const section = MakeSection(0x4E, 1, 0, Noise(4084));
    StreamBuilder stream;
    stream.Section(0x12, section);
    SectionAssembler events(EventSections);
    SectionAssembler services;
    std::vector<Bytes> found;
    MemorySource source(stream.Stream());
    for (TsBytes packet{}; source.Read(packet);) {
        EXPECT_TRUE(services.Push(*ParseTsPacket(packet)).empty());
        for (Bytes const& one : events.Push(*ParseTsPacket(packet))) {
            found.push_back(one);
        }
    }
    EXPECT_EQ(found, std::vector<Bytes>{section});
}
