// SPDX-License-Identifier: MIT
#include "EitBuilder.h"
#include "StreamTestSupport.h"
#include "guide/EitReader.h"

#include <fstream>
#include <gmock/gmock.h>
#include <iterator>

namespace zviptv::test {
namespace {

using sim::EitReader;
using testing::SizeIs;

class Eit : public testing::Test
{
protected:
    /// How many of the stream's packets brought something new.
    int Feed(StreamBuilder const& builder)
    {
        int changes = 0;
        ForEachPacket(builder.Stream(),
                      [&](TsPacket const& packet) { changes += m_reader.Push(packet) ? 1 : 0; });
        return changes;
    }

    /// Continues at the end of the last stream.
    int Send(Bytes const& section)
    {
        std::size_t const before = m_stream.Stream().size();
        m_stream.Section(EitReader::Pid, section);
        Bytes const fresh(m_stream.Stream().begin() + static_cast<std::ptrdiff_t>(before),
                          m_stream.Stream().end());
        int changes = 0;
        ForEachPacket(fresh, [&](TsPacket const& packet) { changes += m_reader.Push(packet) ? 1 : 0; });
        return changes;
    }

    static Bytes Named(std::uint16_t id, std::string const& title)
    {
        EitEventParts parts;
        parts.id = id;
        parts.descriptors = MakeShortEvent("eng", FromText(title), {});
        return MakeEvent(parts);
    }

    static EitSectionParts Following()
    {
        EitSectionParts parts;
        parts.number = 1;
        return parts;
    }

    std::string PresentTitle(std::uint16_t service = 1) const
    {
        auto const* event = m_reader.Table().Present(service);
        return event && !event->texts.empty() ? event->texts[0].title : "";
    }

    StreamBuilder m_stream;
    EitReader m_reader;
};

TEST_F(Eit, PresentAndFollowing)
{
    EitEventParts parts;
    parts.id = 0x1234;
    parts.status = 0x90; // running, scrambled
    parts.descriptors = MakeShortEvent("eng", FromText("Now"), FromText("Text"));
    EXPECT_EQ(Send(MakeEit({}, MakeEvent(parts))), 1);
    EXPECT_EQ(Send(MakeEit(Following(), Named(2, "Then"))), 1);

    auto const* present = m_reader.Table().Present(1);
    ASSERT_TRUE(present);
    EXPECT_EQ(present->serviceId, 1u);
    EXPECT_EQ(present->eventId, 0x1234u);
    EXPECT_EQ(present->start, 1774526400u);
    EXPECT_EQ(present->duration, 5400u);
    EXPECT_EQ(present->runningStatus, 4u);
    EXPECT_TRUE(present->scrambled);
    EXPECT_EQ(present->texts.at(0).title, "Now");
    ASSERT_TRUE(m_reader.Table().Following(1));
    EXPECT_EQ(m_reader.Table().Following(1)->texts.at(0).title, "Then");
    EXPECT_FALSE(m_reader.Table().Present(2));
}

TEST_F(Eit, UndefinedTimesAreNone)
{
    EitEventParts parts;
    parts.start.assign(5, 0xFF);
    parts.duration.assign(3, 0xFF);
    Send(MakeEit({}, MakeEvent(parts)));
    ASSERT_TRUE(m_reader.Table().Present(1));
    EXPECT_FALSE(m_reader.Table().Present(1)->start);
    EXPECT_FALSE(m_reader.Table().Present(1)->duration);
}

TEST_F(Eit, RepetitionsChangeNothing)
{
    EXPECT_EQ(Send(MakeEit({}, Named(1, "A"))), 1);
    EXPECT_EQ(Send(MakeEit({}, Named(1, "A"))), 0);
}

TEST_F(Eit, AnotherVersionReplacesTheTable)
{
    Send(MakeEit({}, Named(1, "A")));
    Send(MakeEit(Following(), Named(2, "B")));
    EitSectionParts next;
    next.version = 1;
    EXPECT_EQ(Send(MakeEit(next, Named(2, "B"))), 1);
    EXPECT_EQ(PresentTitle(), "B");
    EXPECT_FALSE(m_reader.Table().Following(1));
}

TEST_F(Eit, UsesChangedContentWithoutANewVersion)
{
    Send(MakeEit({}, Named(1, "A")));
    EXPECT_EQ(Send(MakeEit({}, Named(1, "B"))), 1);
    EXPECT_EQ(PresentTitle(), "B");
}

TEST_F(Eit, AnEmptySectionMeansNoEvent)
{
    Send(MakeEit({}, Named(1, "A")));
    EXPECT_EQ(Send(MakeEit({}, {})), 1);
    EXPECT_FALSE(m_reader.Table().Present(1));
}

TEST_F(Eit, OtherStreamsTablesAndTheFutureAreIgnored)
{
    EitSectionParts other;
    for (std::uint8_t const table : Bytes{0x4F, 0x60, 0x6F, 0x42}) {
        other.table = table;
        EXPECT_EQ(Send(MakeEit(other, Named(1, "A"))), 0) << int{table};
    }
    EitSectionParts future;
    future.current = false;
    EXPECT_EQ(Send(MakeEit(future, Named(1, "A"))), 0);
    EXPECT_EQ(Feed(StreamBuilder().Section(0x11, MakeEit({}, Named(1, "A")))), 0);
}

TEST_F(Eit, DamagedSectionsAreIgnored)
{
    Bytes const good = MakeEit({}, Named(1, "Some title"));
    for (std::size_t at = 0; at < good.size(); ++at) {
        Bytes bad = good;
        bad[at] ^= 0x40;
        EXPECT_EQ(Send(bad), 0) << at;
    }
    EXPECT_EQ(Send(good), 1);
}

TEST_F(Eit, SectionsUpTo4096Bytes)
{
    Bytes events;
    for (std::uint16_t id = 1; events.size() + 12 + 200 <= 4096 - 18; ++id) {
        EitEventParts parts;
        parts.id = id;
        parts.descriptors = MakeDescriptor(0x80, Bytes(198, 0x11));
        events = events + MakeEvent(parts);
    }
    std::size_t const rest = 4096 - 18 - events.size();
    EitEventParts filler;
    filler.id = 99;
    filler.descriptors = MakeDescriptor(0x80, Bytes(rest - 14, 0x22));
    Bytes const section = MakeEit({}, events + MakeEvent(filler));
    ASSERT_EQ(section.size(), 4096u);
    EXPECT_EQ(Send(section), 1);
    EXPECT_THAT(m_reader.Table().Events(), SizeIs(20));
}

TEST_F(Eit, ALostPacketLosesOneSection)
{
    Bytes const large = MakeEit({}, [] {
        Bytes events;
        for (std::uint16_t id = 1; id < 20; ++id) {
            events = events + Named(id, "Some event");
        }
        return events;
    }());
    StreamBuilder builder;
    builder.Section(EitReader::Pid, large).Section(EitReader::Pid, MakeEit(Following(), Named(9, "B")));
    Bytes cut = builder.Stream();
    cut.erase(cut.begin() + 188, cut.begin() + 2 * 188);
    int changes = 0;
    ForEachPacket(cut, [&](TsPacket const& packet) { changes += m_reader.Push(packet) ? 1 : 0; });
    EXPECT_EQ(changes, 1);
    EXPECT_FALSE(m_reader.Table().Present(1));
    EXPECT_TRUE(m_reader.Table().Following(1));
}

TEST_F(Eit, SeveralSectionsInOnePacket)
{
    Bytes const two = MakeEit({}, Named(1, "A")) + MakeEit(Following(), Named(2, "B"));
    EXPECT_EQ(Send(two), 1);
    EXPECT_EQ(PresentTitle(), "A");
    EXPECT_TRUE(m_reader.Table().Following(1));
}

TEST_F(Eit, EventsAppearOnceAndPresentBeforeSchedule)
{
    EitSectionParts schedule;
    schedule.table = Schedule;
    Send(MakeEit(schedule, Named(1, "Old") + Named(3, "Later")));
    schedule.table = Schedule + 15;
    Send(MakeEit(schedule, Named(4, "Much later")));
    Send(MakeEit({}, Named(1, "New")));
    auto const events = m_reader.Table().Events();
    ASSERT_THAT(events, SizeIs(3));
    EXPECT_EQ(events[0].texts.at(0).title, "New");
    EXPECT_EQ(events[1].eventId, 3u);
    EXPECT_EQ(events[2].eventId, 4u);
}

TEST_F(Eit, OmitsAnEventThatOverrunsItsSection)
{
    Bytes events = Named(1, "A") + Named(2, "B");
    events[Named(1, "A").size() + 11] += 1; // length of the second one's descriptors
    Send(MakeEit({}, events));
    EXPECT_THAT(m_reader.Table().Events(), SizeIs(1));
}

/// ARIB texts, and of other streams only, but real sections: one over five packets, one that shares them.
TEST(EitCapture, SectionsOfABroadcastAreWhole)
{
    std::string const path = ZVIPTV_MEDIA_DIR "/isdb-arib-caption.ts";
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        GTEST_SKIP() << path << " is not there";
    }
    Bytes const stream((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    sim::SectionAssembler sections(sim::EventSections);
    std::vector<std::pair<unsigned, std::size_t>> found;
    ForEachPacket(stream, [&](TsPacket const& packet) {
        if (packet.pid == EitReader::Pid) {
            for (auto const& section : sections.Push(packet)) {
                found.emplace_back(section[0], section.size());
            }
        }
    });
    using Section = std::pair<unsigned, std::size_t>; // table id and size
    EXPECT_THAT(found, testing::ElementsAre(Section(0x60, 781), Section(0x60, 18), Section(0x4F, 149)));
}

} // namespace
} // namespace zviptv::test
