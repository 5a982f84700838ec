// SPDX-License-Identifier: MIT
#include "FunctionRow.h"

using namespace zviptv;
using namespace zviptv::test;
using namespace std::chrono_literals;
using testing::HasSubstr;

namespace {

std::chrono::system_clock::time_point At(long long seconds)
{
    return std::chrono::system_clock::time_point(std::chrono::seconds(seconds));
}

std::string const FilmJson =
    R"({"channel":"ZV Sample One","description":"Nobody who went down has come up again.","duration":10800,)"
    R"("episode":"S02E05","event_id":4294967295,"genres":["Movie","Horror"],"icon":"https://guide.example/x.png",)"
    R"("language":"en","rating":{"minimum_age":17,"system":"MPAA","value":"R"},"service_id":"18446744073709551615",)"
    R"("start_time":4294967295,"subtitle":"s","title":"Cellar Door","translations":[{"description":"d",)"
    R"("genres":["Spielfilm"],"language":"de","subtitle":"u","title":"Kellertür"}]})";

Programme Film()
{
    Programme film;
    film.serviceId = 18446744073709551615ULL;
    film.eventId = 4294967295U;
    film.start = At(4294967295);
    film.duration = 3h;
    film.channel = "ZV Sample One";
    film.title = "Cellar Door";
    film.subtitle = "s";
    film.description = "Nobody who went down has come up again.";
    film.language = "en";
    film.episode = "S02E05";
    film.icon = "https://guide.example/x.png";
    film.genres = {"Movie", "Horror"};
    film.rating = ProgrammeRating{"MPAA", "R", 17};
    film.translations = {{"de", "Kellertür", "u", "d", {"Spielfilm"}}};
    return film;
}

WireEntries Data(std::string const& value)
{
    return Entries({{"result_internal", "1"}, {"data", value}});
}

TEST_F(FunctionTest, ProgrammesOfTheGuide)
{
    std::optional<Programme> const film = Film();
    Check(Row(Entries({{"functionname", "GetProgram"}, {"index", "4294967295"}}), Data(FilmJson), film,
              [](auto& tv, auto... more) { return tv.Guide().GetProgram(4294967295U, more...); }));
    Check(Row(Entries({{"functionname", "GetPresentProgram"}, {"inID", "18446744073709551615"}}),
              Data(FilmJson), film, [](auto& tv, auto... more) {
                  return tv.Guide().GetPresentProgram(18446744073709551615ULL, more...);
              }));
    Check(Row(Entries({{"functionname", "FindProgram"}, {"inID", "1"}, {"eventID", "4294967295"}}), Data(""),
              std::optional<Programme>(),
              [](auto& tv, auto... more) { return tv.Guide().FindProgram(1, 4294967295U, more...); }));
    Check(Row(
        Entries({{"functionname", "GetProgramList"},
                 {"inID", "3"},
                 {"startTime", "1774677600"},
                 {"duration", "3600"}}),
        Data("[" + FilmJson + "," + FilmJson + "]"), std::vector<Programme>{*film, *film},
        [](auto& tv, auto... more) { return tv.Guide().GetProgramList(3, At(1774677600), 1h, more...); }));
    Check(Row(Entries({{"functionname", "GetProgramIPG"},
                       {"inID", "{\n\t\"duration\" : 0,\n\t\"event_id\" : 2,\n\t\"service_id\" : \"1\",\n"
                                "\t\"start_time\" : 1774719900\n}\n"},
                       {"program", "1"}}),
              Data(FilmJson), film, [](auto& tv, auto... more) {
                  return tv.Guide().GetProgram(ProgrammeId{1, 0x10002, At(1774719900), 0s}, Neighbour::Next,
                                               more...);
              }));
}

TEST_F(FunctionTest, OtherFunctionsOfTheGuide)
{
    Check(Row(Entries({{"functionname", "ExistXmlForIPG"}}), Data("1"), true,
              [](auto& tv, auto... more) { return tv.Guide().ExistXmlForIPG(more...); }));
    Check(Row(Entries({{"functionname", "GetProgramListSize"},
                       {"inID", "1"},
                       {"startTime", "0"},
                       {"duration", "4294967295"}}),
              Data("12"), 12, [](auto& tv, auto... more) {
                  return tv.Guide().GetProgramListSize(1, At(0), 4294967295s, more...);
              }));
    Check(Row(Entries({{"functionname", "GetRating"}, {"eventID", "4"}}),
              Data(R"({"minimum_age":null,"system":"FSK","value":"FSK ?"})"),
              std::optional<ProgrammeRating>(ProgrammeRating{"FSK", "FSK ?", std::nullopt}),
              [](auto& tv, auto... more) { return tv.Guide().GetRating(4, more...); }));
    Check(Row(Entries({{"functionname", "GetGenre"}, {"eventID", "4"}}), Data(R"(["Movie","Horror"])"),
              std::vector<std::string>{"Movie", "Horror"},
              [](auto& tv, auto... more) { return tv.Guide().GetGenre(4, more...); }));
    Check(Row(Entries({{"functionname", "CloneUSBToTV"}, {"path", "/tmp/guide.xml"}}), Data("0"), false,
              [](auto& tv, auto... more) { return tv.Guide().CloneUSBToTV("/tmp/guide.xml", more...); }));
}

TEST_F(FunctionTest, RefusesMalformedGuideData)
{
    std::string const deep(100000, '[');
    for (std::string const& wrong : std::vector<std::string>{
             "{", "[]", "1", R"({"title":1})", R"({"service_id":1})", R"({"service_id":"1x"})",
             R"({"service_id":"-1"})", R"({"start_time":-1})", R"({"start_time":4294967296})",
             R"({"genres":[1]})", R"({"rating":[]})", R"({"translations":[{"title":[]}]})",
             R"({"rating":{"minimum_age":"6"}})", "{} trailing", deep, "\xff"}) {
        SCOPED_TRACE(wrong.substr(0, 60));
        m_service->AnswerWith("GetPresentProgram", Data(wrong));
        auto const programme = m_television->Guide().GetPresentProgram(1);
        ASSERT_EQ(KindOf(programme), "malformed reply");
        EXPECT_EQ(programme.GetFailure().key, "data");
        EXPECT_THAT(programme.GetFailure().message,
                    HasSubstr("data is malformed: expected a programme as JSON, got "));
    }
    m_service->AnswerWith("GetProgramList", Data("{}"));
    EXPECT_EQ(KindOf(m_television->Guide().GetProgramList(1, At(0), 1s)), "malformed reply");
    m_service->AnswerWith("GetPresentProgram", Data("null"));
    EXPECT_FALSE((*m_television->Guide().GetPresentProgram(1)).has_value());
}

TEST_F(FunctionTest, TextsOfTheGuideAreUtf8)
{
    m_service->AnswerWith(
        "GetPresentProgram",
        Data("{\"title\":\"K\xe4lte\",\"subtitle\":\"\xed\xa0\x80\",\"description\":\"a\\u0000b\","
             "\"channel\":\"\\udc00\",\"language\":\"\xc3\xa4\",\"genres\":[\"\xff\",\"Film\"],"
             "\"rating\":{\"value\":\"\xfe 12\"},\"translations\":[{\"title\":\"\xc3\"}]}"));
    auto const answer = m_television->Guide().GetPresentProgram(1);
    ASSERT_TRUE(Succeeded(answer));
    Programme const& programme = **answer;
    EXPECT_EQ(programme.title, "K\xef\xbf\xbdlte");
    EXPECT_EQ(programme.subtitle, "\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd");
    EXPECT_EQ(programme.description, "a\xef\xbf\xbd"
                                     "b");
    EXPECT_EQ(programme.channel, "\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd");
    EXPECT_EQ(programme.language, "\xc3\xa4");
    EXPECT_EQ(programme.genres, (std::vector<std::string>{"\xef\xbf\xbd", "Film"}));
    EXPECT_EQ(programme.rating->value, "\xef\xbf\xbd 12");
    EXPECT_EQ(programme.translations.at(0).title, "\xef\xbf\xbd");
    EXPECT_EQ(ToString(programme), "1970-01-01 00:00:00 UTC, 0 min: K\xef\xbf\xbdlte");
    m_service->AnswerWith("GetGenre", Data("[\"\xff\"]"));
    EXPECT_EQ(*m_television->Guide().GetGenre(1), std::vector<std::string>{"\xef\xbf\xbd"});
    m_service->AnswerWith("GetPresentProgram", Data("{\"title\xff\":1,\"title\":\"Film\"}"));
    EXPECT_EQ((*m_television->Guide().GetPresentProgram(1))->title, "Film") << "keys may be any bytes";
}

TEST_F(FunctionTest, TimesOutsideTheProtocolAreInvalidArguments)
{
    auto const early = m_television->Guide().GetProgramListSize(1, At(-1), 1s);
    ASSERT_EQ(KindOf(early), "invalid argument");
    EXPECT_EQ(early.GetFailure().key, "startTime");
    EXPECT_EQ(KindOf(m_television->Guide().GetProgramListSize(1, At(4294967296), 1s)), "invalid argument");
    EXPECT_EQ(KindOf(m_television->Guide().GetProgramListSize(1, At(0), -1s)), "invalid argument");
    EXPECT_EQ(KindOf(m_television->Guide().GetProgram(ProgrammeId{1, 1, At(-1), 0s}, Neighbour::Next)),
              "invalid argument");
    Outcome<bool> outcome;
    m_television->Guide().CloneUSBToTV(std::string("a\0b", 3), outcome.Take());
    EXPECT_FALSE(outcome.IsThere());
    ASSERT_TRUE(outcome.Await());
    EXPECT_EQ(KindOf(*outcome), "invalid argument");
    EXPECT_TRUE(m_service->Requests().empty());
}

TEST(Programmes, HaveReadableTexts)
{
    Programme const film = Film();
    EXPECT_EQ(ToString(film), "2106-02-07 06:28:15 UTC, 180 min: Cellar Door");
    EXPECT_EQ(ToString(film.Id()), "service 18446744073709551615, event 4294967295, 2106-02-07 06:28:15 UTC");
    EXPECT_EQ(ToString(*film.rating), "MPAA R");
    EXPECT_EQ(ToString(ProgrammeRating{"FSK", "FSK 12", 12}), "FSK 12");
    EXPECT_TRUE(film.End() == At(4294967295 + 10800));
}

} // namespace
