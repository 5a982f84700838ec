// SPDX-License-Identifier: MIT
#include "TestSupport.h"

#include <gmock/gmock.h>

namespace zviptv::test {
namespace {

using sim::Guide;
using testing::ElementsAre;
using testing::IsEmpty;

/// Start and stop, in minutes of the year 1970, of all programmes of a guide.
std::vector<std::pair<unsigned, unsigned>> Times(Guide const& guide)
{
    std::vector<std::pair<unsigned, unsigned>> times;
    for (std::uint32_t i = 0; i < guide.All().count; ++i) {
        times.emplace_back(guide.At(i).start / 60, static_cast<unsigned>(guide.At(i).Stop() / 60));
    }
    return times;
}

using T = std::pair<unsigned, unsigned>;

std::string At(char const* start, char const* stop = "")
{
    std::string const day = "19700101";
    return Programme("1", day + start, *stop ? day + stop : "");
}

TEST(GuideSchedule, FileOrderDoesNotMatter)
{
    auto const loaded = ReadText(Tv(At("0030", "0040") + At("0010", "0020") + At("0020", "0030")));
    EXPECT_THAT(Times(*loaded.guide), ElementsAre(T(10, 20), T(20, 30), T(30, 40)));
    EXPECT_THAT(loaded.warnings.First(), IsEmpty());
}

TEST(GuideSchedule, MissingStopIsTheNextStartOfTheSameChannel)
{
    auto const loaded =
        ReadText(Tv(At("0010") + Programme("2", "197001010015", "197001010020") + At("0030")));
    EXPECT_THAT(Times(*loaded.guide), ElementsAre(T(10, 30), T(30, 60), T(15, 20)));
    EXPECT_THAT(loaded.warnings.First(), IsEmpty());
}

TEST(GuideSchedule, KeepsGaps)
{
    EXPECT_THAT(Times(*ReadText(Tv(At("0010", "0015") + At("0030", "0040"))).guide),
                ElementsAre(T(10, 15), T(30, 40)));
}

TEST(GuideSchedule, CutsAProgrammeAtTheStartOfTheNext)
{
    auto const loaded = ReadText(Tv(At("0010", "0040") + At("0030", "0050")));
    EXPECT_THAT(Times(*loaded.guide), ElementsAre(T(10, 30), T(30, 50)));
    EXPECT_THAT(loaded.warnings.First(), ElementsAre("service 1: programme 1 overlaps programme 2, cut"));
}

TEST(GuideSchedule, OfTwoWithEqualStartKeepsTheFirst)
{
    auto const loaded = ReadText(Tv(At("0010", "0020") + At("0010", "0040") + At("0010", "0040") +
                                    Programme("2", "197001010010", "")));
    EXPECT_THAT(Times(*loaded.guide), ElementsAre(T(10, 20), T(10, 40)));
    EXPECT_THAT(loaded.warnings.First(),
                ElementsAre("service 1: programme 2 starts at the same time as programme 1, left out",
                            "service 1: programme 3 starts at the same time as programme 1, left out"));
    EXPECT_FALSE(loaded.guide->Find(2));
}

TEST(GuideSchedule, StopBeforeStartCountsAsMissing)
{
    EXPECT_THAT(Times(*ReadText(Tv(At("0010", "0005") + At("0050", "0050"))).guide),
                ElementsAre(T(10, 50), T(50, 80)));
}

TEST(GuideSchedule, LastSecondOfTheGuidesTime)
{
    auto const loaded = ReadText(Tv(Programme("1", "21060207062815", ""))); // 2^32 - 1
    auto const& guide = *loaded.guide;
    ASSERT_EQ(guide.All().count, 1u);
    EXPECT_EQ(guide.Present(1, 0xFFFFFFFF), 0u);
    EXPECT_EQ(guide.Present(1, std::int64_t{0xFFFFFFFF} + 1799), 0u);
    EXPECT_EQ(guide.List(1, 0xFFFFFFFF, 0xFFFFFFFF).count, 1u);
}

class GuideQueries : public testing::Test
{
protected:
    std::shared_ptr<Guide const> m_guide = ReadText(Tv(Programme("7", "19700101000100", "19700101000200") +
                                                       Programme("7", "19700101000200", "19700101000300") +
                                                       Programme("7", "19700101000400", "19700101000500") +
                                                       Programme("9", "19700101000230", "19700101000330")))
                                               .guide;

    T List(unsigned start, unsigned duration, std::uint64_t service = 7)
    {
        auto const range = m_guide->List(service, start, duration);
        return range.count == 0 ? T(0, 0) : T(range.first, range.count);
    }
};

TEST_F(GuideQueries, ListContainsProgrammesThatOverlapTheWindow)
{
    EXPECT_EQ(List(60, 60), T(0, 1));
    EXPECT_EQ(List(119, 1), T(0, 1));
    EXPECT_EQ(List(119, 2), T(0, 2));
    EXPECT_EQ(List(120, 1), T(1, 1));
    EXPECT_EQ(List(0, 60), T(0, 0));
    EXPECT_EQ(List(0, 61), T(0, 1));
    EXPECT_EQ(List(180, 60), T(0, 0));
    EXPECT_EQ(List(179, 62), T(1, 2));
    EXPECT_EQ(List(300, 1000), T(0, 0));
    EXPECT_EQ(List(0, 0xFFFFFFFF), T(0, 3));
    EXPECT_EQ(List(0, 0xFFFFFFFF, 9), T(3, 1));
    EXPECT_EQ(List(100, 0), T(0, 0));
    EXPECT_EQ(List(0, 0xFFFFFFFF, 8), T(0, 0));
}

TEST_F(GuideQueries, PresentIsFromStartUntilBeforeStop)
{
    EXPECT_EQ(m_guide->Present(7, 59), std::nullopt);
    EXPECT_EQ(m_guide->Present(7, 60), 0u);
    EXPECT_EQ(m_guide->Present(7, 119), 0u);
    EXPECT_EQ(m_guide->Present(7, 120), 1u);
    EXPECT_EQ(m_guide->Present(7, 180), std::nullopt);
    EXPECT_EQ(m_guide->Present(7, 300), std::nullopt);
    EXPECT_EQ(m_guide->Present(7, -1), std::nullopt);
    EXPECT_EQ(m_guide->Present(9, 150), 3u);
    EXPECT_EQ(m_guide->Present(8, 150), std::nullopt);
}

TEST_F(GuideQueries, FindByEvent)
{
    EXPECT_EQ(m_guide->Find(3), 2u);
    EXPECT_EQ(m_guide->Find(4), 3u);
    EXPECT_EQ(m_guide->Find(0), std::nullopt);
    EXPECT_EQ(m_guide->Find(5), std::nullopt);
    EXPECT_EQ(m_guide->Find(7, 3), 2u);
    EXPECT_EQ(m_guide->Find(9, 3), std::nullopt);
    EXPECT_EQ(m_guide->Find(9, 4), 3u);
    EXPECT_EQ(m_guide->Find(7, 4), std::nullopt);
    EXPECT_EQ(m_guide->Find(8, 1), std::nullopt);
}

TEST_F(GuideQueries, NeighboursAreOfTheSameService)
{
    EXPECT_EQ(m_guide->Neighbour(0, 1), 1u);
    EXPECT_EQ(m_guide->Neighbour(1, -1), 0u);
    EXPECT_EQ(m_guide->Neighbour(1, 0), 1u);
    EXPECT_EQ(m_guide->Neighbour(0, -1), std::nullopt);
    EXPECT_EQ(m_guide->Neighbour(2, 1), std::nullopt);
    EXPECT_EQ(m_guide->Neighbour(3, -1), std::nullopt);
    EXPECT_EQ(m_guide->Neighbour(3, 1), std::nullopt);
}

TEST_F(GuideQueries, KeyContainsServiceEventAndStart)
{
    EXPECT_EQ(m_guide->Find({7, 2, 0}), 1u);
    EXPECT_EQ(m_guide->Find({7, 2, 120}), 1u);
    EXPECT_EQ(m_guide->Find({7, 2, 60}), std::nullopt);
    EXPECT_EQ(m_guide->Find({7, 2, 121}), std::nullopt);
    EXPECT_EQ(m_guide->Find({7, 2, 9999}), std::nullopt);
    EXPECT_EQ(m_guide->Find({9, 2, 0}), std::nullopt);
    EXPECT_EQ(m_guide->Find({8, 2, 0}), std::nullopt);
}

TEST(GuideKeys, StartDistinguishesEventsWithEqualLowBits)
{
    std::string programmes;
    for (unsigned i = 0; i < 65536 + 2; ++i) {
        char start[16];
        std::snprintf(start, sizeof start, "197001%02u%02u%02u%02u", 1 + i / 86400 % 31, i / 3600 % 24,
                      i / 60 % 60, i % 60);
        programmes += Programme("1", start, "", "<title/>");
    }
    auto const guide = ReadText(Tv(programmes), {}, 65536).guide;
    // Event 2 starts at 1 s, event 65538 at 65537 s; the first second of all was no time for the guide (0).
    EXPECT_EQ(guide->At(*guide->Find({1, 2, 0})).eventId, 2u);
    EXPECT_EQ(guide->At(*guide->Find({1, 2, 1})).eventId, 2u);
    EXPECT_EQ(guide->At(*guide->Find({1, 2, 65537})).eventId, 65538u);
    EXPECT_EQ(guide->At(*guide->Find(1, 65538)).start, 65537u);
    EXPECT_EQ(guide->Find({1, 2, 2}), std::nullopt);
}

} // namespace
} // namespace zviptv::test
