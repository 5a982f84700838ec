// SPDX-License-Identifier: MIT
#include "TestSupport.h"
#include "guide/GuideBuilder.h"
#include "guide/GuideJson.h"

#include <gmock/gmock.h>

namespace zviptv::test {
namespace {

TEST(GuideJson, EveryMemberIsPresentEvenIfEmpty)
{
    auto const guide = ReadText(Tv(Programme("1", "20260101", "20260102", ""))).guide;
    EXPECT_EQ(sim::ProgrammeJson(*guide, 0),
              R"({"channel":"","description":"","duration":86400,"episode":"","event_id":1,"genres":[],)"
              R"("icon":"","language":"","rating":null,"service_id":"1","start_time":1767225600,)"
              R"("subtitle":"","title":"","translations":[]})");
}

TEST(GuideJson, ServiceIdsAreDigitsInAString)
{
    auto const guide = ReadText(Tv(Programme("18446744073709551615", "2026", ""))).guide;
    EXPECT_EQ(ParseJson(sim::ProgrammeJson(*guide, 0))["service_id"], "18446744073709551615");
}

TEST(GuideJson, TextsAreUnchanged)
{
    std::string const title = "\"Quotes\" \\ / é € 😀 おはよう \u2028";
    auto const guide = ReadText(Tv(Programme("1", "2026", "", "<title>" + title + "</title>"))).guide;
    std::string const json = sim::ProgrammeJson(*guide, 0);
    EXPECT_EQ(ParseJson(json)["title"], title);
    EXPECT_NE(json.find("é € 😀"), std::string::npos) << "not escaped";
    EXPECT_TRUE(IsUtf8(json));
}

TEST(GuideJson, RatingWithoutAnAge)
{
    auto const guide =
        ReadText(Tv(Programme("1", "2026", "", "<rating system=\"MPAA\"><value>PG</value></rating>"))).guide;
    EXPECT_EQ(sim::RatingJson(*guide, 0), R"({"minimum_age":null,"system":"MPAA","value":"PG"})");
}

TEST(GuideJson, ListIsAnArrayInOrder)
{
    auto const guide = ReadText(Tv(Programme("1", "20260102", "") + Programme("1", "20260101", ""))).guide;
    auto const list = ParseJson(sim::ProgrammesJson(*guide, guide->All()));
    ASSERT_EQ(list.size(), 2u);
    EXPECT_EQ(list[0], ParseJson(sim::ProgrammeJson(*guide, 0)));
    EXPECT_EQ(list[1], ParseJson(sim::ProgrammeJson(*guide, 1)));
    EXPECT_LT(list[0]["start_time"].asUInt(), list[1]["start_time"].asUInt());
    EXPECT_EQ(sim::ProgrammesJson(*guide, {}), "[]");
}

} // namespace
} // namespace zviptv::test
