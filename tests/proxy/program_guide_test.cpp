// SPDX-License-Identifier: MIT
#include "MethodTable.h"

using namespace zviptv::test;

namespace {

class ProgramGuide : public ServiceTest
{
protected:
    /// The JSON text of the latest request without its indentation, line by line.
    std::vector<std::string> JsonLines() const
    {
        std::vector<std::string> lines(1);
        for (char const character : m_service.LastRequest().Value("inID")) {
            if (character == '\n') {
                lines.emplace_back();
            } else if (!lines.back().empty() || (character != ' ' && character != '\t')) {
                lines.back() += character;
            }
        }
        return lines;
    }
};

TEST_F(ProgramGuide, SendsTheProgrammeIdAsJson)
{
    m_service.Answer("GetProgramIPG", {{"data", "a programme"}});
    std::string programme;
    EXPECT_TRUE(
        CreateGuide()->GetProgram({12345678901ULL, 7, 1600000000U, 3600U}, PROGRAM_IPG_NEXT, programme));
    EXPECT_EQ(programme, "a programme");
    WireMessage const request = m_service.LastRequest();
    ASSERT_EQ(request.entries.size(), 3U);
    EXPECT_EQ(request.entries.at(0), (WireEntry{"functionname", "ay", "GetProgramIPG"}));
    EXPECT_EQ(request.entries.at(1).key, "inID");
    EXPECT_EQ(request.entries.at(2), (WireEntry{"program", "ay", "1"}));
    EXPECT_EQ(JsonLines(), (std::vector<std::string>{"{", "\"duration\" : 3600,", "\"event_id\" : 7,",
                                                     "\"service_id\" : \"12345678901\",",
                                                     "\"start_time\" : 1600000000", "}", ""}));
}

TEST_F(ProgramGuide, LargestProgrammeId)
{
    std::string programme;
    auto const program = static_cast<Program_IPG>(-2147483647 - 1);
    EXPECT_TRUE(CreateGuide()->GetProgram({18446744073709551615ULL, 65535, 4294967295U, 4294967295U}, program,
                                          programme));
    EXPECT_EQ(m_service.LastRequest().Value("program"), "-2147483648");
    EXPECT_EQ(JsonLines(),
              (std::vector<std::string>{"{", "\"duration\" : 4294967295,", "\"event_id\" : 65535,",
                                        "\"service_id\" : \"18446744073709551615\",",
                                        "\"start_time\" : 4294967295", "}", ""}));
}

TEST_F(ProgramGuide, SmallestProgrammeId)
{
    std::string programme;
    EXPECT_TRUE(CreateGuide()->GetProgram({0, 0, 0, 0}, PROGRAM_IPG_PREVIOUS, programme));
    EXPECT_EQ(m_service.LastRequest().Value("program"), "-1");
    EXPECT_EQ(JsonLines(),
              (std::vector<std::string>{"{", "\"duration\" : 0,", "\"event_id\" : 0,",
                                        "\"service_id\" : \"0\",", "\"start_time\" : 0", "}", ""}));
}

TEST_F(ProgramGuide, QueryByProgrammeIdLogsEntryJsonAndAnswer)
{
    m_service.Answer("GetProgramIPG", {{"data", "found"}});
    IIPGUtil& guide = *CreateGuide();
    m_log.Clear();
    std::string programme;
    EXPECT_TRUE(guide.GetProgram({1, 2, 3, 4}, PROGRAM_IPG_PRESENT, programme));
    EXPECT_EQ(LinesOf(m_log, "IPGUtilProxy.cpp: GetProgram"),
              (Lines{{ZV_LOG_INFO, ""},
                     {ZV_LOG_INFO, m_service.LastRequest().Value("inID")},
                     {ZV_LOG_INFO, "Receive data : found"}}));
}

TEST_F(ProgramGuide, FailedQueryByProgrammeIdKeepsTheText)
{
    m_service.AnswerError("GetProgramIPG");
    IIPGUtil& guide = *CreateGuide();
    m_log.Clear();
    std::string programme = "untouched";
    EXPECT_FALSE(guide.GetProgram({1, 2, 3, 4}, PROGRAM_IPG_PRESENT, programme));
    EXPECT_EQ(programme, "untouched");
    EXPECT_EQ(LinesOf(m_log, "IPGUtilProxy.cpp: GetProgram"),
              (Lines{{ZV_LOG_INFO, ""},
                     {ZV_LOG_INFO, m_service.LastRequest().Value("inID")},
                     {ZV_LOG_ERROR, "SendMessage failed."}}));
}

TEST_F(ProgramGuide, EmptyPathIsSent)
{
    m_service.Answer("CloneUSBToTV", {{"data", "0"}});
    bool done = true;
    EXPECT_TRUE(CreateGuide()->CloneUSBToTV("", done));
    EXPECT_FALSE(done);
    EXPECT_EQ(m_service.LastRequest().entries, Entries({{"functionname", "CloneUSBToTV"}, {"path", ""}}));
}

TEST_F(ProgramGuide, PathEndsAtItsFirstZeroByte)
{
    m_service.Answer("CloneUSBToTV", {{"data", "1"}});
    bool done = false;
    EXPECT_TRUE(CreateGuide()->CloneUSBToTV(std::string("/media\0/usb", 11), done));
    EXPECT_EQ(m_service.LastRequest().entries,
              Entries({{"functionname", "CloneUSBToTV"}, {"path", "/media"}}));
}

TEST_F(ProgramGuide, DecodesFlags)
{
    IIPGUtil& guide = *CreateGuide();
    for (auto const& [data, expected] :
         {std::pair("1", true), {"-3", true}, {"  7xyz", true}, {"0", false}}) {
        m_service.Answer("ExistXmlForIPG", {{"data", data}});
        bool exists = !expected;
        EXPECT_TRUE(guide.ExistXmlForIPG(exists));
        EXPECT_EQ(exists, expected) << data;
    }
    m_service.Answer("CloneUSBToTV", {{"data", "2"}});
    bool done = false;
    EXPECT_TRUE(guide.CloneUSBToTV("/media", done));
    EXPECT_TRUE(done);
    for (std::string const data : {"", "abc"}) {
        m_service.Answer("ExistXmlForIPG", {{"data", data}});
        bool exists = true;
        EXPECT_EQ(FailureOf([&] { guide.ExistXmlForIPG(exists); }), "invalid_argument: stoi");
        EXPECT_TRUE(exists);
    }
}

TEST_F(ProgramGuide, MalformedNumbersKeepTheOutput)
{
    IIPGUtil& guide = *CreateGuide();
    m_service.Answer("GetProgramListSize", {{"data", "many"}});
    m_service.Answer("CloneUSBToTV", {{"data", "99999999999"}});
    int size = 77;
    EXPECT_EQ(FailureOf([&] { guide.GetProgramListSize(1, 2, 3, size); }), "invalid_argument: stoi");
    EXPECT_EQ(size, 77);
    bool done = true;
    EXPECT_EQ(FailureOf([&] { guide.CloneUSBToTV("/media", done); }), "out_of_range: stoi");
    EXPECT_TRUE(done);
}

TEST_F(ProgramGuide, QueryByProgrammeIdAcceptsAnyAnswer)
{
    IIPGUtil& guide = *CreateGuide();
    std::string programme = "before";
    m_service.Answer("GetProgramIPG", {{"result_internal", "0"}, {"data", "refused"}});
    EXPECT_TRUE(guide.GetProgram({1, 2, 3, 4}, PROGRAM_IPG_PRESENT, programme));
    EXPECT_EQ(programme, "refused");
    m_service.Answer("GetProgramIPG", {{"result_internal", "1"}});
    EXPECT_TRUE(guide.GetProgram({1, 2, 3, 4}, PROGRAM_IPG_PRESENT, programme));
    EXPECT_EQ(programme, "");
}

TEST_F(ProgramGuide, TextsMayHoldAnyBytes)
{
    std::string const bytes = PatternBytes(1000);
    m_service.Answer("GetRating", {{"data", bytes}});
    std::string rating;
    EXPECT_TRUE(CreateGuide()->GetRating(1, rating));
    EXPECT_EQ(rating, bytes);
}

TEST_F(ProgramGuide, TheFirstDataIsUsed)
{
    m_service.Answer("GetGenre", {{"data", "first"}, {"data", "second"}});
    std::string genre;
    EXPECT_TRUE(CreateGuide()->GetGenre(1, genre));
    EXPECT_EQ(genre, "first");
}

using ProgramGuideWithoutService = ProxyTest;

TEST_F(ProgramGuideWithoutService, EveryQueryFails)
{
    IIPGUtil* const guide = CreateGuide();
    ASSERT_NE(guide, nullptr);
    std::string text = "untouched";
    bool flag = true;
    int number = 77;
    EXPECT_FALSE(guide->ExistXmlForIPG(flag));
    EXPECT_FALSE(guide->GetProgramListSize(1, 2, 3, number));
    EXPECT_FALSE(guide->GetProgram(1, text));
    EXPECT_FALSE(guide->GetProgram({1, 2, 3, 4}, PROGRAM_IPG_NEXT, text));
    EXPECT_FALSE(guide->GetPresentProgram(1, text));
    EXPECT_FALSE(guide->FindProgram(1, 2, text));
    EXPECT_FALSE(guide->GetRating(1, text));
    EXPECT_FALSE(guide->GetGenre(1, text));
    EXPECT_FALSE(guide->GetProgramList(1, 2, 3, text));
    EXPECT_FALSE(guide->CloneUSBToTV("/media", flag));
    EXPECT_EQ(text, "untouched");
    EXPECT_TRUE(flag);
    EXPECT_EQ(number, 77);
    EXPECT_EQ(m_log.Count("SendMessage failed."), 10U);
}

} // namespace
