// SPDX-License-Identifier: MIT
#include "CtlFixture.h"

namespace zviptv::test {
namespace {

constexpr char const* GuideWord = "IPGUTIL";

WireEntries Data(std::string const& data)
{
    return Entries({{"data", data}});
}

std::vector<CallCase> GuideCases()
{
    return {
        {{"ExistXmlForIPG"},
         GuideWord,
         Entries({{"functionname", "ExistXmlForIPG"}}),
         Data("-3"),
         "result: true\nexist: true\n"},
        {{"GetProgramListSize", "18446744073709551615", "1600000000", "3600"},
         GuideWord,
         Entries({{"functionname", "GetProgramListSize"},
                  {"inID", "18446744073709551615"},
                  {"startTime", "1600000000"},
                  {"duration", "3600"}}),
         Data("-1"),
         "result: true\nsize: -1\n"},
        {{"GetProgram", "7"},
         GuideWord,
         Entries({{"functionname", "GetProgram"}, {"index", "7"}}),
         Data("News\nat \\ ten\t\x1b[1m"),
         "result: true\nprogram: News\\nat \\\\ ten\\t\\x1b[1m\n"},
        {{"GetPresentProgram", "0x10"},
         GuideWord,
         Entries({{"functionname", "GetPresentProgram"}, {"inID", "16"}}),
         Data(""),
         "result: true\nprogram: \n"},
        {{"FindProgram", "1", "4294967295"},
         GuideWord,
         Entries({{"functionname", "FindProgram"}, {"inID", "1"}, {"eventID", "4294967295"}}),
         Data("found"),
         "result: true\nprogram: found\n"},
        {{"GetRating", "9"},
         GuideWord,
         Entries({{"functionname", "GetRating"}, {"eventID", "9"}}),
         Data("12"),
         "result: true\nrating: 12\n"},
        {{"GetGenre", "10"},
         GuideWord,
         Entries({{"functionname", "GetGenre"}, {"eventID", "10"}}),
         Data("drama"),
         "result: true\ngenre: drama\n"},
        {{"GetProgramList", "1", "2", "3"},
         GuideWord,
         Entries({{"functionname", "GetProgramList"}, {"inID", "1"}, {"startTime", "2"}, {"duration", "3"}}),
         Data("[a, b]"),
         "result: true\nlist: [a, b]\n"},
        {{"CloneUSBToTV", "[/media/usb,1]"},
         GuideWord,
         Entries({{"functionname", "CloneUSBToTV"}, {"path", "[/media/usb,1]"}}),
         Data("0"),
         "result: true\ndone: false\n"},
    };
}

using GuideCallTest = CallTest;

TEST_P(GuideCallTest, SendsTheRequestAndPrintsTheReply)
{
    Check();
}

INSTANTIATE_TEST_SUITE_P(Methods, GuideCallTest, testing::ValuesIn(GuideCases()), NameOfCase);

/// The programme id is sent as JSON text, whose indentation does not matter.
TEST_F(CtlTest, GetProgramByIdSendsTheIdAsJson)
{
    m_service.AnswerWith("GetProgramIPG", Data("the one before"));
    CtlResult const result =
        RunCtl({"call", "GetProgram", "18446744073709551615", "65535", "1600000000", "3600", "previous"});
    EXPECT_EQ(result.code, 0) << result.errors;
    EXPECT_EQ(result.output, "result: true\nout: the one before\n");

    WireMessage const request = m_service.LastRequest();
    ASSERT_EQ(request.entries.size(), 3U);
    EXPECT_EQ(request.entries[0], (WireEntry{"functionname", "ay", "GetProgramIPG"}));
    EXPECT_EQ(request.entries[1].key, "inID");
    EXPECT_EQ(request.entries[2], (WireEntry{"program", "ay", "-1"}));
    Json::Value const id = ParseJson(request.entries[1].bytes);
    EXPECT_EQ(id["service_id"].asString(), "18446744073709551615");
    EXPECT_EQ(id["event_id"].asUInt(), 65535U);
    EXPECT_EQ(id["start_time"].asUInt(), 1600000000U);
    EXPECT_EQ(id["duration"].asUInt(), 3600U);
}

TEST_F(CtlTest, TextsThatStartWithADashFollowTwoDashes)
{
    EXPECT_EQ(RunCtl({"call", "SetAppID", "--", "--json"}).code, 0);
    EXPECT_EQ(m_service.LastRequest().Value("AppID"), "--json");
    EXPECT_EQ(RunCtl({"call", "SetAppID", ""}).code, 0);
    EXPECT_TRUE(m_service.LastRequest().Has("AppID"));
    EXPECT_EQ(m_service.LastRequest().Value("AppID"), "");
}

} // namespace
} // namespace zviptv::test
