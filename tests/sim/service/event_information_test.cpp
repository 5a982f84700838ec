// SPDX-License-Identifier: MIT
#include "GeneratedStreamTest.h"

#include "../guide/EitBuilder.h"

#include <json/reader.h>

#include <sstream>

namespace zviptv::test {
namespace {

constexpr char Guide[] = "IPGUTIL";
constexpr std::int64_t Noon = 1774526400; // 2026-03-26 12:00:00 UTC

/// Service 1 with news from 12:00 on, from 16 years, and a match from 14:00 on, for all.
class EventInformation : public GeneratedStream
{
protected:
    void Begin(std::vector<std::string> const& options = {})
    {
        StreamBuilder builder;
        builder.Section(0, MakePat({{1, 0x1000}})).Section(0x1000, MakePmt(1, 0x101, {{0x03, 0x101, {}}}));
        builder.Pcr(0x101, 27'000'000);
        EitEventParts news;
        news.id = 70;
        news.descriptors = MakeShortEvent("eng", FromText("News"), FromText("Of the day")) +
                           MakeDescriptor(0x54, {0x20, 0x00}) + MakeDescriptor(0x55, FromText("DEU\x0D"));
        EitEventParts match;
        match.id = 71;
        match.start[2] = 0x14;
        match.descriptors = MakeShortEvent("eng", FromText("Match"), {});
        EitSectionParts following;
        following.number = 1;
        builder.Section(0x12, MakeEit({}, MakeEvent(news)))
            .Section(0x12, MakeEit(following, MakeEvent(match)));
        builder.Pes(0x101, MakePes(90'000, Noise(100)));
        PlayToTheEnd(builder, options);
        m_application.Announce(Guide);
    }

    WireMessage Ask(std::initializer_list<TextEntry> entries) { return m_application.Ask(Guide, entries); }

    Json::Value JsonData(std::initializer_list<TextEntry> entries)
    {
        Json::Value json;
        std::istringstream(Ask(entries).Value("data")) >> json;
        return json;
    }

    std::string SizeFrom(std::int64_t start, std::int64_t seconds)
    {
        return Number(Ask({{"functionname", "GetProgramListSize"},
                           {"inID", "1"},
                           {"startTime", std::to_string(start)},
                           {"duration", std::to_string(seconds)}}),
                      "data");
    }

    std::string Lock(std::string const& function, std::string const& key)
    {
        return Number(m_application.Ask("BROADCASTDATA", {{"functionname", function}}), key);
    }
};

TEST_F(EventInformation, IsTheGuideWithoutAFile)
{
    Begin();
    EXPECT_EQ(Number(Ask({{"functionname", "ExistXmlForIPG"}}), "data"), "1");
    // The stream determines the present programme, although its time is in the past or in the future.
    Json::Value const present = JsonData({{"functionname", "GetPresentProgram"}, {"inID", "1"}});
    EXPECT_EQ(present["title"], "News");
    EXPECT_EQ(present["event_id"], 70);
    EXPECT_EQ(present["start_time"], Json::Int64(Noon));
    EXPECT_EQ(present["duration"], 5400);
    EXPECT_EQ(present["genres"][0], "News/Current affairs");
    WireMessage const none = Ask({{"functionname", "GetPresentProgram"}, {"inID", "2"}});
    EXPECT_EQ(Number(none, "result_internal"), "0");
    EXPECT_EQ(Number(none, "data"), "");
}

TEST_F(EventInformation, ListsPresentAndFollowing)
{
    Begin();
    EXPECT_EQ(SizeFrom(Noon, 3600), "1");
    EXPECT_EQ(SizeFrom(Noon + 2 * 3600, 3600), "1");
    EXPECT_EQ(SizeFrom(Noon + 86400, 86400), "0");
    EXPECT_EQ(SizeFrom(Noon, 3 * 3600), "2");
    EXPECT_EQ(JsonData({{"functionname", "GetProgram"}, {"index", "0"}})["title"], "News");
    EXPECT_EQ(JsonData({{"functionname", "GetProgram"}, {"index", "1"}})["title"], "Match");
}

TEST_F(EventInformation, CarriesRatings)
{
    Begin();
    Json::Value const rating = JsonData({{"functionname", "GetRating"}, {"eventID", "70"}});
    EXPECT_EQ(rating["minimum_age"], 16);
    EXPECT_EQ(rating["system"], "DEU");
    WireMessage const none = Ask({{"functionname", "GetRating"}, {"eventID", "71"}});
    EXPECT_EQ(Number(none, "result_internal"), "0");
    EXPECT_EQ(Number(none, "data"), "");
}

TEST_F(EventInformation, LocksByTheRatingOfThePresentEvent)
{
    Begin({"--rating-limit", "15"});
    m_application.Announce("BROADCASTDATA");
    EXPECT_EQ(Lock("GetRatingInfo", "ratingInfo"), std::string("\0\0\x10", 3));
    EXPECT_EQ(Lock("GetRatingLockState", "lockState"), "1");
    EXPECT_EQ(Lock("UnMuteByRatingPin", "result_internal"), "1");
    EXPECT_EQ(Lock("GetRatingLockState", "lockState"), "0");
}

TEST_F(EventInformation, WithinTheLimitLocksNothing)
{
    Begin({"--rating-limit", "16"});
    m_application.Announce("BROADCASTDATA");
    EXPECT_EQ(Lock("GetRatingInfo", "ratingInfoSize"), "1");
    EXPECT_EQ(Lock("GetRatingLockState", "lockState"), "0");
    EXPECT_EQ(Lock("UnMuteByRatingPin", "result_internal"), "0");
}

TEST_F(GeneratedStream, AGuideFileFindsAServiceByItsNameInTheDefaultCharacterTable)
{
    StreamBuilder builder;
    builder.Section(0, MakePat({{4660, 0x1000}})).Section(0x1000, MakePmt(4660, 0x101, {}));
    builder.Section(0x11, MakeSdt(4660, "Z\xC8urich")).Pes(0x101, MakePes(90'000, Noise(100)));
    std::string const guide = m_bus.Directory() + "/guide.xml";
    std::ofstream(guide)
        << "<tv><channel id=\"zh\"><display-name>Zürich</display-name></channel>"
           "<programme channel=\"zh\" start=\"20260326120000\"><title>Limmat</title></programme></tv>";
    PlayToTheEnd(builder, {"--guide", guide, "--time", std::to_string(Noon)});
    m_application.Announce(Guide);
    WireMessage const present =
        m_application.Ask(Guide, {{"functionname", "GetPresentProgram"}, {"inID", "4660"}});
    EXPECT_THAT(present.Value("data"), testing::HasSubstr("\"title\":\"Limmat\""));
}

} // namespace
} // namespace zviptv::test
