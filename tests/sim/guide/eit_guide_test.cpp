// SPDX-License-Identifier: MIT
#include "EitBuilder.h"
#include "TestSupport.h"
#include "guide/EitGuide.h"
#include "guide/EitReader.h"
#include "guide/ProgrammeGuide.h"

#include <gmock/gmock.h>

namespace zviptv::test {
namespace {

using testing::IsEmpty;

Bytes Event(std::uint16_t id, std::uint8_t hour, Bytes const& descriptors)
{
    EitEventParts parts;
    parts.id = id;
    parts.start[2] = hour;
    parts.descriptors = descriptors;
    return MakeEvent(parts);
}

TEST(EitGuide, AnswersLikeAGuideFromAFile)
{
    sim::EitTable table;
    table.Add(MakeEit({}, Event(70, 0x12,
                                MakeShortEvent("eng", FromText("Title"), FromText("Sub")) +
                                    MakeExtendedEvent("eng", FromText("Long")) +
                                    MakeDescriptor(0x54, {0x20, 0x00}) +
                                    MakeDescriptor(0x55, FromText("DEU\x03")))));
    EitSectionParts following;
    following.number = 1;
    table.Add(MakeEit(following, Event(71, 0x14, MakeShortEvent("eng", FromText("Next"), FromText("Text")))));

    auto const made = sim::MakeGuide(table, {{"ZV Sample One", 1}});
    EXPECT_THAT(made.warnings.First(), IsEmpty());
    sim::ProgrammeGuide guide;
    guide.Use(made.guide);
    EXPECT_EQ(guide.Present(1, 1774526400),
              R"({"channel":"ZV Sample One","description":"Long","duration":5400,"episode":"","event_id":70,)"
              R"("genres":["News/Current affairs"],"icon":"","language":"eng",)"
              R"("rating":{"minimum_age":6,"system":"DEU","value":"6"},"service_id":"1",)"
              R"("start_time":1774526400,"subtitle":"Sub","title":"Title","translations":[]})");
    auto const next = ParseJson(guide.Programme(R"({"service_id":"1","event_id":70})", 1));
    EXPECT_EQ(next["title"], "Next");
    EXPECT_EQ(next["subtitle"], "");
    EXPECT_EQ(next["description"], "Text") << "the only text there is";
}

TEST(EitGuide, EventIdsBelongToTheirService)
{
    sim::EitTable table;
    for (std::uint16_t const service : {std::uint16_t{5}, std::uint16_t{4}}) {
        EitSectionParts parts;
        parts.service = service;
        table.Add(
            MakeEit(parts, Event(7, 0x12, MakeShortEvent("eng", FromText(std::to_string(service)), {}))));
    }
    sim::ProgrammeGuide guide;
    guide.Use(sim::MakeGuide(table).guide);
    EXPECT_EQ(ParseJson(guide.Find(4, 7))["title"], "4");
    EXPECT_EQ(ParseJson(guide.Find(5, 7))["title"], "5");
    EXPECT_EQ(guide.Find(6, 7), "");
}

TEST(EitGuide, OmitsEventsWithoutStart)
{
    EitEventParts parts;
    parts.start.assign(5, 0xFF);
    sim::EitTable table;
    table.Add(MakeEit({}, MakeEvent(parts)));
    EXPECT_EQ(sim::MakeGuide(table).guide->All().count, 0u);
}

} // namespace
} // namespace zviptv::test
