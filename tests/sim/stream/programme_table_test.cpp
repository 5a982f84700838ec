// SPDX-License-Identifier: MIT
#include "StreamTestSupport.h"

#include <gtest/gtest.h>

using namespace zviptv;
using namespace zviptv::sim;
using namespace zviptv::test;

namespace {

class ProgrammeTableTest : public testing::Test
{
protected:
    /// Whether anything changed.
    bool Send(std::uint16_t pid, Bytes const& section)
    {
        bool changed = false;
        StreamBuilder one = m_builder; // goes on with the counters
        m_builder.Section(pid, section);
        Bytes const& all = m_builder.Stream();
        Bytes const added(all.begin() + static_cast<std::ptrdiff_t>(one.Stream().size()), all.end());
        ForEachPacket(added, [&](TsPacket const& packet) { changed = m_tables.Push(packet) || changed; });
        return changed;
    }

    std::vector<std::uint16_t> Numbers() const
    {
        std::vector<std::uint16_t> numbers;
        for (auto const& programme : m_tables.Programmes()) {
            numbers.push_back(programme.number);
        }
        return numbers;
    }

    ProgrammeTable m_tables;

private:
    StreamBuilder m_builder;
};

using Numbers_t = std::vector<std::uint16_t>;

} // namespace

TEST_F(ProgrammeTableTest, AProgrammeIsKnownAfterItsPmt)
{
    EXPECT_TRUE(Send(0x0000, MakePat({{0, 0x10}, {7, 0x1000}, {3, 0x1001}})));
    EXPECT_TRUE(Numbers().empty());
    EXPECT_FALSE(m_tables.IsComplete());
    EXPECT_TRUE(Send(0x1001, MakePmt(3, 0x1FF, {{0x1B, 0x1FF, {}}}, 5, {0x09, 0})));
    EXPECT_EQ(Numbers(), Numbers_t{3});
    EXPECT_TRUE(Send(0x1000, MakePmt(7, 0x1FE, {})));
    EXPECT_EQ(Numbers(), (Numbers_t{7, 3})) << "in the order of the PAT";
    EXPECT_TRUE(m_tables.IsComplete());

    auto const* three = m_tables.Find(3);
    ASSERT_TRUE(three);
    EXPECT_EQ(three->pcrPid, 0x1FF);
    EXPECT_EQ(three->pmtPid, 0x1001);
    EXPECT_EQ(three->version, 5);
    EXPECT_EQ(three->descriptors.at(0).tag, 0x09);
    EXPECT_EQ(m_tables.Find(4), nullptr);
}

TEST_F(ProgrammeTableTest, RepetitionsChangeNothing)
{
    Send(0x0000, MakePat({{1, 0x1000}}));
    Send(0x1000, MakePmt(1, 0x100, {}));
    EXPECT_FALSE(Send(0x0000, MakePat({{1, 0x1000}})));
    EXPECT_FALSE(Send(0x1000, MakePmt(1, 0x100, {})));
}

TEST_F(ProgrammeTableTest, ANewVersionOfThePmtIsNoticed)
{
    Send(0x0000, MakePat({{1, 0x1000}}));
    Send(0x1000, MakePmt(1, 0x100, {{0x03, 0x101, {}}}, 0));
    EXPECT_TRUE(Send(0x1000, MakePmt(1, 0x100, {{0x03, 0x102, {}}}, 1)));
    EXPECT_EQ(m_tables.Find(1)->audio.at(0).pid, 0x102);
    EXPECT_EQ(m_tables.Find(1)->version, 1);
    EXPECT_TRUE(Send(0x1000, MakePmt(1, 0x100, {{0x03, 0x101, {}}}, 0))) << "and the old one again";
}

TEST_F(ProgrammeTableTest, AChangeWithoutANewVersionIsNoticedToo)
{
    Send(0x0000, MakePat({{1, 0x1000}}));
    Send(0x1000, MakePmt(1, 0x100, {{0x03, 0x101, {}}}));
    EXPECT_TRUE(Send(0x1000, MakePmt(1, 0x100, {{0x03, 0x102, {}}})));
    EXPECT_EQ(m_tables.Find(1)->audio.at(0).pid, 0x102);
}

TEST_F(ProgrammeTableTest, IgnoresATableThatIsNotYetValid)
{
    Send(0x0000, MakePat({{1, 0x1000}}));
    Bytes const body{0xE1, 0x00, 0xF0, 0x00};
    EXPECT_FALSE(Send(0x1000, MakeSection(0x02, 1, 0, body, 0, 0, false)));
    EXPECT_TRUE(Send(0x1000, MakeSection(0x02, 1, 0, body, 0, 0, true)));
}

TEST_F(ProgrammeTableTest, ProgrammesMayShareAPmtPid)
{
    Send(0x0000, MakePat({{1, 0x1000}, {2, 0x1000}}));
    Send(0x1000, MakePmt(2, 0x102, {}));
    Send(0x1000, MakePmt(1, 0x101, {}));
    EXPECT_EQ(Numbers(), (Numbers_t{1, 2}));
    EXPECT_EQ(m_tables.Find(2)->pcrPid, 0x102);
    EXPECT_FALSE(Send(0x1000, MakePmt(9, 0x109, {}))) << "not in the PAT";
}

TEST_F(ProgrammeTableTest, ANewPatDropsAndMovesProgrammes)
{
    Send(0x0000, MakePat({{1, 0x1000}, {2, 0x1001}, {3, 0x1002}}));
    Send(0x1000, MakePmt(1, 0x101, {}));
    Send(0x1001, MakePmt(2, 0x102, {}));
    Send(0x1002, MakePmt(3, 0x103, {}));
    EXPECT_TRUE(Send(0x0000, MakePat({{3, 0x1002}, {2, 0x1005}}, 1)));
    EXPECT_EQ(Numbers(), Numbers_t{3}) << "1 is gone, 2 has to come on its new PID";
    EXPECT_FALSE(Send(0x1001, MakePmt(2, 0x102, {}, 1))) << "the old PID";
    EXPECT_TRUE(Send(0x1005, MakePmt(2, 0x105, {})));
    EXPECT_EQ(Numbers(), (Numbers_t{3, 2}));
}

TEST_F(ProgrammeTableTest, APatMayHaveSections)
{
    Bytes const one{0x00, 0x01, 0xF0, 0x00};
    Bytes const two{0x00, 0x02, 0xF0, 0x01};
    EXPECT_FALSE(Send(0x0000, MakeSection(0x00, 1, 0, two, 1, 1)));
    EXPECT_TRUE(Send(0x0000, MakeSection(0x00, 1, 0, one, 0, 1)));
    Send(0x1000, MakePmt(1, 0x101, {}));
    Send(0x1001, MakePmt(2, 0x102, {}));
    EXPECT_EQ(Numbers(), (Numbers_t{1, 2}));
}

TEST_F(ProgrammeTableTest, NamesComeFromTheSdt)
{
    Send(0x0000, MakePat({{1, 0x1000}, {2, 0x1001}}));
    Send(0x1000, MakePmt(1, 0x101, {}));
    Send(0x1001, MakePmt(2, 0x102, {}));
    EXPECT_FALSE(Send(0x0011, MakeSection(0x46, 2, 0, {0xFF, 0x01, 0xFF}))) << "another stream's names";
    EXPECT_TRUE(Send(0x0011, MakeSdt(2, "Second")));
    EXPECT_EQ(m_tables.Find(1)->name, "");
    EXPECT_EQ(m_tables.Find(2)->name, "Second");
    EXPECT_EQ(m_tables.Find(2)->provider, "ZV");
    EXPECT_FALSE(Send(0x0011, MakeSdt(2, "Second")));
    EXPECT_TRUE(Send(0x0011, MakeSdt(2, "Renamed", 1)));
    EXPECT_EQ(m_tables.Find(2)->name, "Renamed");
    EXPECT_TRUE(Send(0x0011, MakeSdt(2, "Z\xC8urich", 2)));
    EXPECT_EQ(m_tables.Find(2)->name, "Zürich") << "in the default character table";
}

TEST_F(ProgrammeTableTest, DamagedSectionsAreCounted)
{
    Bytes damaged = MakePat({{1, 0x1000}});
    damaged.back() ^= 1;
    EXPECT_FALSE(Send(0x0000, damaged));
    EXPECT_FALSE(Send(0x0011, damaged));
    EXPECT_FALSE(Send(0x0012, damaged)) << "none of the tables";
    EXPECT_EQ(m_tables.DamagedSections(), 2u);
    EXPECT_TRUE(Send(0x0000, MakePat({{1, 0x1000}})));
    EXPECT_EQ(m_tables.DamagedSections(), 2u);
}

TEST_F(ProgrammeTableTest, WrongLengthsAreHarmless)
{
    Send(0x0000, MakePat({{1, 0x1000}}));
    EXPECT_FALSE(Send(0x1000, MakeSection(0x02, 1, 0, {0xE1, 0x00, 0xFF, 0xFF})))
        << "4095 bytes of descriptors";
    EXPECT_FALSE(Send(0x1000, MakeSection(0x02, 1, 0, {0xE1}))) << "no room for the head";
    EXPECT_FALSE(Send(0x1000, MakeSection(0x02, 1, 0, {}))) << "no content";
    EXPECT_FALSE(Send(0x0000, MakeSection(0x00, 1, 1, {0x00, 0x02, 0xF0}))) << "no whole entry";
    EXPECT_FALSE(Send(0x0011, MakeSection(0x42, 1, 0, {0xFF}))) << "no room for the head";
    EXPECT_FALSE(Send(0x0011, MakeSection(0x46, 1, 0, {0xFF, 0x01, 0xFF}))) << "another stream's names";

    // A stream whose descriptors run past the section, and a descriptor that runs past its list.
    Send(0x1000,
         MakeSection(0x02, 1, 1, {0xE1, 0x00, 0xF0, 0x00, 0x03, 0xE1, 0x01, 0xFF, 0xFF, 0x0A, 0x04, 'e'}));
    ASSERT_TRUE(m_tables.Find(1));
    EXPECT_EQ(m_tables.Find(1)->streams.size(), 1u);
    EXPECT_TRUE(m_tables.Find(1)->streams[0].descriptors.empty());
}

TEST_F(ProgrammeTableTest, AFloodOfProgrammesIsBounded)
{
    for (std::uint8_t section = 0; section < 8; ++section) {
        Bytes body;
        for (unsigned i = 0; i < 200; ++i) {
            unsigned const number = section * 200u + i + 1;
            body = body + Bytes{static_cast<std::uint8_t>(number >> 8),
                                static_cast<std::uint8_t>(number & 0xFF), 0xF0, 0x00};
        }
        Send(0x0000, MakeSection(0x00, 1, 0, body, section, 7));
    }
    for (std::uint16_t number = 1; number <= 300; ++number) {
        Send(0x1000, MakePmt(number, 0x100, {}));
    }
    EXPECT_EQ(Numbers().size(), ProgrammeTable::MaxProgrammes);
}
