// SPDX-License-Identifier: MIT
#include "Texts.h"

#include "guide/XmlParser.h"
#include "scenario/Report.h"

#include <gtest/gtest.h>

namespace zviptv::sim {
namespace {

constexpr char Film[] =
    "1 lock programme\n1 expect UnMuteByRatingPin within 2 # soon\nexpect no MuteAudio for 1\n"
    "after SetAppID AppID=\"<\\\"&'>\" pause\n2 bad-luck";

/// A scenario with every kind of failure.
class Reports : public testing::Test
{
protected:
    Reports()
    {
        m_play.Advance(0);
        m_play.OnRequest({"MuteAudio", {{"onoff", "1"}}}, 0.25);
        m_play.Advance(1);
        m_play.OnRequest({"UnMuteByRatingPin", {}}, 1.5);
        m_play.Advance(2);
        m_play.Fail(4, "no luck");
        m_play.End(4, "the command ended");
    }

    Scenario m_scenario{Parsed(std::map<std::string, std::string>{{"a.scenario", Film}})};
    Play m_play{m_scenario, [](std::size_t) {}};
};

TEST_F(Reports, ListEachExpectationWithWhatWasSeen)
{
    EXPECT_EQ(TextReport(m_play),
              "zviptv-sim: scenario a.scenario: 1 of 2 expectations met\n"
              "  met      a.scenario:2:1: 1 expect UnMuteByRatingPin within 2: seen after 0.5 s: "
              "UnMuteByRatingPin\n"
              "  not met  a.scenario:3:1: expect no MuteAudio for 1: seen after 0.25 s: MuteAudio onoff=1\n"
              "  not run  a.scenario:4:1: after SetAppID AppID=\"<\\\"&'>\" pause\n"
              "  failed   a.scenario:5:1: 2 bad-luck: no luck\n");
}

TEST_F(Reports, AreWrittenAsJUnit)
{
    EXPECT_EQ(
        JUnitReport(m_play, 4.5),
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<testsuites>\n"
        "  <testsuite name=\"a.scenario\" tests=\"3\" failures=\"1\" errors=\"1\" time=\"4.500\">\n"
        "    <testcase classname=\"a.scenario\" name=\"line 2: 1 expect UnMuteByRatingPin within 2\" "
        "time=\"0.500\"/>\n"
        "    <testcase classname=\"a.scenario\" name=\"line 3: expect no MuteAudio for 1\" time=\"0.250\">\n"
        "      <failure message=\"seen after 0.25 s: MuteAudio onoff=1\"/>\n"
        "    </testcase>\n"
        "    <testcase classname=\"a.scenario\" name=\"line 5: 2 bad-luck\" time=\"0.000\">\n"
        "      <error message=\"no luck\"/>\n"
        "    </testcase>\n"
        "  </testsuite>\n"
        "</testsuites>\n");
}

TEST(TextReport, OfStepsThatRanIsEmpty)
{
    Scenario const scenario = Parsed("1 pause");
    Play play(scenario, [](std::size_t) {});
    play.End(1, "the command ended");
    EXPECT_EQ(TextReport(play), "");
}

/// Texts of an application must not control the terminal.
TEST(TextReport, ShowsNoControlCharacters)
{
    Scenario const scenario = Parsed("expect no SetAppID for 1");
    Play play(scenario, [](std::size_t) {});
    play.Advance(0);
    play.OnRequest({"SetAppID", {{"AppID", "\x1B[2J\n"}}}, 0.5);
    EXPECT_EQ(TextReport(play),
              "zviptv-sim: scenario a.scenario: 0 of 1 expectation met\n"
              "  not met  a.scenario:1:1: expect no SetAppID for 1: seen after 0.5 s: SetAppID "
              "AppID=\\x1b[2J\\n\n");
}

/// Returns the message of the only failure.
class Message : public XmlHandler
{
public:
    void OnStart(std::string_view name, XmlAttributes const& attributes) override
    {
        if (name == "error") {
            text = attributes.Get("message");
        }
    }
    void OnEnd(std::string_view /*name*/) override {}
    void OnText(std::string_view /*text*/) override {}

    std::string text;
};

/// The text that an XML parser reads if `text` was reported.
std::string ReadBack(std::string const& text)
{
    Scenario const scenario = Parsed("1 pause");
    Play play(scenario, [](std::size_t) {});
    play.Fail(0, text);
    std::string report = JUnitReport(play, 0);
    Message message;
    XmlParser("report", message).Parse([&report](char* buffer, std::size_t size) {
        std::size_t const count = report.copy(buffer, size);
        report.erase(0, count);
        return count;
    });
    return message.text;
}

TEST(JUnitReport, KeepsEveryTextThatXmlCanHold)
{
    for (char const* const text : {"<a b=\"c\" d='e'>&amp;</a>", "]]>", "two\nlines\tand a tab",
                                   "Z\xC3\xBCrich \xE2\x82\xAC \xF0\x9F\x93\xBA"}) {
        EXPECT_EQ(ReadBack(text), text);
    }
}

TEST(JUnitReport, ReplacesCharactersThatXmlForbids)
{
    EXPECT_EQ(ReadBack(std::string("a\0b", 3)), "a\xEF\xBF\xBD"
                                                "b");
    EXPECT_EQ(ReadBack("\x1B[0m"), "\xEF\xBF\xBD[0m");
    EXPECT_EQ(ReadBack("\xFF"), "\xEF\xBF\xBD");
    EXPECT_EQ(ReadBack("\xC3"), "\xEF\xBF\xBD");                          // ends in the middle
    EXPECT_EQ(ReadBack("\xC0\x80"), "\xEF\xBF\xBD\xEF\xBF\xBD");          // too long
    EXPECT_EQ(ReadBack("\xED\xA0\x80").substr(0, 3), "\xEF\xBF\xBD");     // half a pair
    EXPECT_EQ(ReadBack("\xEF\xBF\xBF").substr(0, 3), "\xEF\xBF\xBD");     // not a character
    EXPECT_EQ(ReadBack("\xF4\x90\x80\x80").substr(0, 3), "\xEF\xBF\xBD"); // beyond Unicode
}

} // namespace
} // namespace zviptv::sim
