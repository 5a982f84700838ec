// SPDX-License-Identifier: MIT
#include "TestSupport.h"
#include "guide/GuideProblems.h"
#include "guide/ProgrammeGuide.h"

#include <gmock/gmock.h>

namespace zviptv::test {
namespace {

using testing::HasSubstr;

constexpr std::int64_t Minute = 60;

class ProgrammeGuide : public testing::Test
{
protected:
    ProgrammeGuide()
    {
        TempFile const file(
            Tv("<channel id=\"5\"><display-name>Five</display-name></channel>" +
               Programme("5", "197001010010", "197001010020",
                         "<title>A</title><category>News</category><rating><value>12</value></rating>") +
               Programme("5", "197001010020", "197001010030", "<title>B</title>") +
               Programme("3", "197001010010", "197001010020", "<title>C</title>") +
               "<channel id=\"8\"><display-name>Eight</display-name></channel>"));
        m_guide.Load(file.Path());
    }

    static std::string Title(std::string const& answer)
    {
        return answer.empty() ? "" : ParseJson(answer)["title"].asString();
    }

    static std::string Request(std::string const& service, int event, int start = 0)
    {
        return "{\n\t\"duration\" : 3600,\n\t\"event_id\" : " + std::to_string(event) +
               ",\n\t\"service_id\" : \"" + service + "\",\n\t\"start_time\" : " + std::to_string(start) +
               "\n}\n";
    }

    sim::ProgrammeGuide m_guide;
};

TEST(NoGuide, AnswersNothing)
{
    sim::ProgrammeGuide const guide;
    EXPECT_FALSE(guide.Exists());
    EXPECT_EQ(guide.Select(1, 0, 1000).range.count, 0u);
    EXPECT_EQ(guide.Programme(sim::GuideList(), 0), "");
    EXPECT_EQ(guide.Programme(R"({"service_id":"1","event_id":1})", 0), "");
    EXPECT_EQ(guide.Present(1, 0), "");
    EXPECT_EQ(guide.Find(1, 1), "");
    EXPECT_EQ(guide.Rating(1), "");
    EXPECT_EQ(guide.Genre(1), "");
    EXPECT_EQ(guide.List(1, 0, 1000), "");
}

TEST_F(ProgrammeGuide, Exists)
{
    EXPECT_TRUE(m_guide.Exists());
}

TEST_F(ProgrammeGuide, IndexRefersToTheRequestedList)
{
    auto const list = m_guide.Select(5, 20 * Minute, 10 * Minute);
    EXPECT_EQ(list.range.count, 1u);
    EXPECT_EQ(Title(m_guide.Programme(list, 0)), "B");
    EXPECT_EQ(m_guide.Programme(list, 1), "");
    EXPECT_EQ(m_guide.Programme(list, 0xFFFFFFFF), "");
}

TEST_F(ProgrammeGuide, AnEmptyListHasNoProgrammes)
{
    EXPECT_EQ(m_guide.Programme(m_guide.Select(5, 0, 1), 0), "");
    EXPECT_EQ(m_guide.Programme(m_guide.Select(77, 0, 10000), 0), "");
}

TEST_F(ProgrammeGuide, WithoutAListTheIndexRefersToTheGuide)
{
    EXPECT_EQ(Title(m_guide.Programme(sim::GuideList(), 0)), "C");
    EXPECT_EQ(Title(m_guide.Programme(sim::GuideList(), 1)), "A");
    EXPECT_EQ(Title(m_guide.Programme(sim::GuideList(), 2)), "B");
    EXPECT_EQ(m_guide.Programme(sim::GuideList(), 3), "");
}

TEST_F(ProgrammeGuide, AListOutlivesItsGuide)
{
    auto const list = m_guide.Select(5, 0, 10000);
    TempFile const other(Tv(Programme("5", "2026", "", "<title>X</title>")));
    m_guide.Load(other.Path());
    EXPECT_EQ(Title(m_guide.Programme(list, 1)), "B");
    EXPECT_EQ(Title(m_guide.Programme(sim::GuideList(), 0)), "X");
}

TEST_F(ProgrammeGuide, PreviousPresentAndNext)
{
    EXPECT_EQ(Title(m_guide.Programme(Request("5", 2), 0)), "B");
    EXPECT_EQ(Title(m_guide.Programme(Request("5", 2), -1)), "A");
    EXPECT_EQ(Title(m_guide.Programme(Request("5", 1), 1)), "B");
    EXPECT_EQ(m_guide.Programme(Request("5", 2), 1), "");
    EXPECT_EQ(m_guide.Programme(Request("5", 1), -1), "");
    EXPECT_EQ(m_guide.Programme(Request("5", 2), 2), "");
    EXPECT_EQ(m_guide.Programme(Request("5", 2), -2147483647 - 1), "");
    EXPECT_EQ(Title(m_guide.Programme(Request("5", 1, 600), 0)), "A");
    EXPECT_EQ(m_guide.Programme(Request("5", 1, 601), 0), "");
    EXPECT_EQ(m_guide.Programme(Request("3", 1), 0), "");
}

TEST_F(ProgrammeGuide, ImpossibleRequestsFindNothing)
{
    for (std::string const request :
         {"", "{}", "[]", "7", "null", "{\"service_id\":5,\"event_id\":1}", "{\"service_id\":\"5\"}",
          "{\"service_id\":\"5x\",\"event_id\":1}", "{\"service_id\":\"-5\",\"event_id\":1}",
          "{\"service_id\":\"\",\"event_id\":1}", "{\"service_id\":\"18446744073709551616\",\"event_id\":1}",
          "{\"service_id\":\"5\",\"event_id\":-1}", "{\"service_id\":\"5\",\"event_id\":65537}",
          "{\"service_id\":\"5\",\"event_id\":1.5}", "{\"service_id\":\"5\",\"event_id\":\"1\"}",
          "{\"service_id\":\"5\",\"event_id\":1,\"start_time\":\"600\"}",
          "{\"service_id\":\"5\",\"event_id\":1,\"start_time\":4294967296}",
          "{\"service_id\":\"5\",\"event_id\":1} x", "{\"service_id\":\"5\",\"event_id\":1"}) {
        EXPECT_EQ(m_guide.Programme(request, 0), "") << request;
    }
    EXPECT_EQ(m_guide.Programme(std::string(2000, '['), 0), "");
    EXPECT_EQ(m_guide.Programme(std::string(1 << 20, ' ') + Request("5", 1), 0), "");
    EXPECT_EQ(Title(m_guide.Programme(R"({"service_id":"5","event_id":1})", 0)), "A");
}

TEST_F(ProgrammeGuide, Present)
{
    EXPECT_EQ(Title(m_guide.Present(5, 15 * Minute)), "A");
    EXPECT_EQ(Title(m_guide.Present(5, 20 * Minute)), "B");
    EXPECT_EQ(m_guide.Present(5, 30 * Minute), "");
    EXPECT_EQ(m_guide.Present(18446744073709551615u, 15 * Minute), "");
}

TEST_F(ProgrammeGuide, Find)
{
    EXPECT_EQ(Title(m_guide.Find(3, 3)), "C");
    EXPECT_EQ(m_guide.Find(5, 3), "");
}

TEST_F(ProgrammeGuide, RatingAndGenre)
{
    EXPECT_EQ(m_guide.Rating(1), R"({"minimum_age":12,"system":"","value":"12"})");
    EXPECT_EQ(m_guide.Rating(2), "") << "no rating";
    EXPECT_EQ(m_guide.Rating(99), "") << "no programme";
    EXPECT_EQ(m_guide.Genre(1), R"(["News"])");
    EXPECT_EQ(m_guide.Genre(2), "[]") << "no genre";
    EXPECT_EQ(m_guide.Genre(99), "") << "no programme";
}

TEST_F(ProgrammeGuide, Lists)
{
    auto const list = ParseJson(m_guide.List(5, 0, 10000));
    ASSERT_EQ(list.size(), 2u);
    EXPECT_EQ(list[0]["title"], "A");
    EXPECT_EQ(list[1]["title"], "B");
    EXPECT_EQ(m_guide.List(5, 0, 1), "[]") << "nothing on then";
    EXPECT_EQ(m_guide.List(8, 0, 10000), "[]") << "a channel without programmes";
    EXPECT_EQ(m_guide.List(77, 0, 10000), "") << "no such service";
}

TEST_F(ProgrammeGuide, AFailedLoadLosesNothing)
{
    auto const before = m_guide.Current();
    std::string const answer = m_guide.List(5, 0, 10000);
    TempFile const broken(Tv(Programme("5", "2026", "")) + "<more/>");
    for (std::string const& path : {broken.Path(), std::string("/nowhere/guide.xml"), std::string("/tmp"),
                                    std::string("/dev/null"), std::string()}) {
        EXPECT_THROW(m_guide.Load(path), sim::GuideError) << path;
    }
    EXPECT_EQ(m_guide.Current(), before);
    EXPECT_EQ(m_guide.List(5, 0, 10000), answer);
}

TEST_F(ProgrammeGuide, ErrorsContainReasonAndPlace)
{
    auto const error = [this](std::string const& path) -> std::string {
        try {
            m_guide.Load(path);
        } catch (sim::GuideError const& failure) {
            return failure.what();
        }
        return "none";
    };
    TempFile const broken("<tv>\n<programme start=2026/>\n</tv>");
    EXPECT_EQ(error(broken.Path()), broken.Path() + ":2:18: not well-formed (invalid token)");
    EXPECT_EQ(error("/nowhere/guide.xml"), "/nowhere/guide.xml: No such file or directory");
    EXPECT_EQ(error("/tmp"), "/tmp: not a regular file");
}

TEST_F(ProgrammeGuide, ReportsWarnings)
{
    TempFile const file(Tv(Programme("5", "x", "")));
    auto const warnings = m_guide.Load(file.Path());
    EXPECT_EQ(warnings.Count(), 1u);
    EXPECT_THAT(warnings.First().front(), HasSubstr("line 3:"));
}

} // namespace
} // namespace zviptv::test
