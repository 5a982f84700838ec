// SPDX-License-Identifier: MIT
#include "TestSupport.h"
#include "guide/ProgrammeGuide.h"

#include <gmock/gmock.h>

namespace zviptv::test {
namespace {

using testing::ElementsAre;

constexpr std::uint32_t ChangeOfClocks = 1774746000; // 2026-03-29 01:00 UTC

class SampleGuide : public testing::Test
{
protected:
    SampleGuide() : m_warnings(m_guide.Load(ZVIPTV_SAMPLE_GUIDE, {{"ZV Sample One", 1}})) {}

    sim::ProgrammeGuide m_guide;
    sim::GuideWarnings m_warnings;
};

TEST_F(SampleGuide, HasNoWarnings)
{
    EXPECT_THAT(m_warnings.First(), ElementsAre());
    EXPECT_EQ(m_guide.Current()->All().count, 19u);
}

TEST_F(SampleGuide, HasThreeServicesWithAndWithoutNamesOfTheStream)
{
    auto const names = [](sim::Guide const& guide) {
        std::vector<std::string> result;
        for (auto const& service : guide.Services()) {
            result.push_back(std::to_string(service.id) + " " + service.name);
        }
        return result;
    };
    auto const expected = ElementsAre("1 ZV Sample One", "2 ZV Beispiel Zwei", "3 ZV Exemple Trois");
    EXPECT_THAT(names(*m_guide.Current()), expected);
    EXPECT_THAT(names(*sim::LoadGuide(ZVIPTV_SAMPLE_GUIDE).guide), expected);
}

TEST_F(SampleGuide, ServiceOneHasNoGap)
{
    auto const list = ParseJson(m_guide.List(1, 0, 0xFFFFFFFF));
    ASSERT_EQ(list.size(), 10u);
    for (Json::ArrayIndex i = 1; i < list.size(); ++i) {
        EXPECT_EQ(list[i - 1]["start_time"].asUInt() + list[i - 1]["duration"].asUInt(),
                  list[i]["start_time"].asUInt());
    }
}

TEST_F(SampleGuide, OmitsTheHourSkippedBySummerTime)
{
    auto const trains = ParseJson(m_guide.Present(1, ChangeOfClocks));
    EXPECT_EQ(trains["title"], "Night Trains");
    EXPECT_EQ(trains["start_time"].asUInt(), ChangeOfClocks - 1800);
    EXPECT_EQ(trains["duration"], 3600);
    auto const sameByName = ParseJson(m_guide.Present(2, ChangeOfClocks));
    EXPECT_EQ(sameByName["title"], "Der lange Weg nach Süden");
    EXPECT_EQ(sameByName["duration"], 6 * 3600);
}

TEST_F(SampleGuide, NeighboursEndAtTheBorders)
{
    std::string const request = R"({"service_id":"1","event_id":3})";
    EXPECT_EQ(ParseJson(m_guide.Programme(request, -1))["event_id"].asUInt(), 2u);
    EXPECT_EQ(ParseJson(m_guide.Programme(request, 0))["event_id"].asUInt(), 3u);
    EXPECT_EQ(ParseJson(m_guide.Programme(request, 1))["event_id"].asUInt(), 4u);
    EXPECT_EQ(m_guide.Programme(request, 2), "");
    EXPECT_EQ(m_guide.Programme(request, -2), "");
}

TEST_F(SampleGuide, TranslationsAreKept)
{
    auto const cat = ParseJson(m_guide.Find(1, 2));
    EXPECT_EQ(cat["language"], "en");
    ASSERT_EQ(cat["translations"].size(), 1u);
    EXPECT_EQ(cat["translations"][0]["language"], "de");
    EXPECT_EQ(cat["translations"][0]["title"], "Die Katze des Leuchtturmwärters");
}

} // namespace
} // namespace zviptv::test
