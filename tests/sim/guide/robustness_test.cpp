// SPDX-License-Identifier: MIT
#include "EitBuilder.h"
#include "StreamTestSupport.h"
#include "TestSupport.h"
#include "guide/EitGuide.h"
#include "guide/EitReader.h"
#include "guide/GuideJson.h"
#include "guide/GuideProblems.h"

#include <gtest/gtest.h>
#include <random>

namespace zviptv::test {
namespace {

/// Everything that a guide can answer holds together.
void ExpectValid(sim::Guide const& guide)
{
    for (std::uint32_t i = 0; i < guide.All().count; ++i) {
        std::string const json = sim::ProgrammeJson(guide, i);
        ASSERT_TRUE(IsUtf8(json));
        ASSERT_EQ(ParseJson(json)["start_time"].asUInt(), guide.At(i).start);
        ASSERT_EQ(guide.Present(guide.ServiceAt(i).id, guide.At(i).start), i);
        ASSERT_TRUE(guide.Find(guide.At(i).eventId));
    }
}

std::string Mutate(std::string text, std::mt19937& random)
{
    for (auto changes = 1 + random() % 3; changes > 0; --changes) {
        std::size_t const at = random() % text.size();
        std::size_t const count = random() % 40;
        switch (random() % 4) {
        case 0:
            text[at] = static_cast<char>(random());
            break;
        case 1:
            text.erase(at, count);
            break;
        case 2:
            text.insert(at, text.substr(random() % text.size(), count));
            break;
        default:
            text.replace(at, 1, std::string(1, "<>&\"'/0129 +Z"[random() % 13]));
            break;
        }
    }
    return text;
}

TEST(DamagedGuide, DamagedXmltvIsReadOrRefused)
{
    std::string const sample = ReadFile(ZVIPTV_SAMPLE_GUIDE);
    std::mt19937 random(42);
    int refused = 0;
    int read = 0;
    for (int round = 0; round < 1500; ++round) {
        try {
            auto const loaded = ReadText(Mutate(sample, random), {}, 1 + random() % 5000);
            ASSERT_NO_FATAL_FAILURE(ExpectValid(*loaded.guide));
            ++read;
        } catch (sim::GuideError const& error) {
            EXPECT_EQ(std::string(error.what()).rfind("test.xml:", 0), 0u) << error.what();
            ++refused;
        }
    }
    EXPECT_GT(refused, 100);
    EXPECT_GT(read, 100);
}

TEST(DamagedGuide, NoiseIsNotAGuide)
{
    for (unsigned seed = 1; seed <= 500; ++seed) {
        Bytes const noise = Noise(seed * 13, seed);
        EXPECT_THROW(ReadText(std::string(noise.begin(), noise.end())), sim::GuideError);
    }
}

/// Sections with a right CRC around anything.
TEST(DamagedGuide, AnyEitSectionGivesAValidGuide)
{
    std::mt19937 random(4711);
    sim::EitTable table;
    for (unsigned seed = 1; seed <= 3000; ++seed) {
        Bytes events;
        while (events.size() < 300) {
            EitEventParts parts;
            parts.id = static_cast<std::uint16_t>(random());
            parts.start[2] = static_cast<std::uint8_t>(random());
            parts.descriptors =
                MakeShortEvent("eng", Noise(random() % 20, seed), Noise(random() % 20, seed + 1)) +
                MakeDescriptor(static_cast<std::uint8_t>(0x4D + random() % 9), Noise(random() % 30));
            events = events + MakeEvent(parts);
        }
        for (auto changes = random() % 20; changes > 0; --changes) {
            events[random() % events.size()] = static_cast<std::uint8_t>(random());
        }
        EitSectionParts section;
        section.service = static_cast<std::uint16_t>(random() % 8);
        section.table = static_cast<std::uint8_t>(0x4E + random() % 20);
        section.version = static_cast<std::uint8_t>(random() % 32);
        table.Add(MakeEit(section, events));
    }
    auto const made = sim::MakeGuide(table);
    EXPECT_GT(made.guide->All().count, 20u);
    ExpectValid(*made.guide);
}

TEST(DamagedGuide, PacketsOfNoiseContainNoEvents)
{
    sim::EitReader reader;
    for (unsigned seed = 1; seed <= 5000; ++seed) {
        PacketParts parts;
        parts.pid = sim::EitReader::Pid;
        parts.counter = static_cast<std::uint8_t>(seed % 16);
        parts.start = seed % 3 == 0;
        parts.payload = Noise(184, seed);
        ForEachPacket(MakePacket(parts), [&](TsPacket const& packet) { EXPECT_FALSE(reader.Push(packet)); });
    }
    EXPECT_TRUE(reader.Table().Events().empty());
}

TEST(DamagedGuide, KeptSectionsAreBounded)
{
    sim::EitTable table;
    EitEventParts event;
    unsigned taken = 0;
    for (unsigned service = 0; service < 70; ++service) {
        for (unsigned number = 0; number < 256; ++number) {
            event.id = static_cast<std::uint16_t>(number);
            EitSectionParts parts;
            parts.table = Schedule;
            parts.service = static_cast<std::uint16_t>(service);
            parts.number = static_cast<std::uint8_t>(number);
            parts.last = 255;
            taken += table.Add(MakeEit(parts, MakeEvent(event))) ? 1u : 0u;
        }
    }
    EXPECT_EQ(taken, sim::EitTable::MaxSections);
    EXPECT_EQ(table.Events().size(), sim::EitTable::MaxSections);
}

} // namespace
} // namespace zviptv::test
