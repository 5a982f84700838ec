// SPDX-License-Identifier: MIT
#include "LogCapture.h"

#include "log/DefaultSink.h"
#include "log/Log.h"

#include <gmock/gmock.h>

#include <climits>

using namespace zviptv::test;
using testing::ElementsAre;

namespace {

std::vector<std::string> LinesOf(LogCapture const& log)
{
    std::vector<std::string> lines;
    for (LogLine const& line : log.Lines()) {
        lines.push_back(line.line);
    }
    return lines;
}

int SaySomething()
{
    int const before = __LINE__;
    ZV_LOG_INFO_LINE("text %d", 5);
    return before + 1;
}

TEST(LogLine, HasFileFunctionAndLineInFront)
{
    LogCapture const log;
    int const line = SaySomething();
    EXPECT_THAT(LinesOf(log),
                ElementsAre("log_line_test.cpp: SaySomething(" + std::to_string(line) + ") > text 5"));
}

TEST(LogLine, OfAnEntryContainsOnlyThePrefix)
{
    LogCapture const log;
    zviptv::WriteLogEntry({"/some/where/File.cpp", "Function", 12});
    zviptv::WriteLogEntry({"File.cpp", "~Class", 1}, ZV_LOG_ERROR);
    ZV_LOG_ENTRY();
    ASSERT_EQ(log.Lines().size(), 3U);
    EXPECT_EQ(log.Lines()[0].line, "File.cpp: Function(12) > ");
    EXPECT_EQ(log.Lines()[0].priority, ZV_LOG_INFO);
    EXPECT_EQ(log.Lines()[1].line, "File.cpp: ~Class(1) > ");
    EXPECT_EQ(log.Lines()[1].priority, ZV_LOG_ERROR);
    EXPECT_THAT(log.Lines()[2].line, testing::MatchesRegex("log_line_test\\.cpp: TestBody\\([0-9]+\\) > "));
}

TEST(LogLine, CarriesPriorityAndTag)
{
    LogCapture const log;
    ZV_LOG_DEBUG_LINE("d");
    ZV_LOG_INFO_LINE("i");
    ZV_LOG_ERROR_LINE("e");
    EXPECT_EQ(log.Messages(ZV_LOG_DEBUG), std::vector<std::string>{"d"});
    EXPECT_EQ(log.Messages(ZV_LOG_INFO), std::vector<std::string>{"i"});
    EXPECT_EQ(log.Messages(ZV_LOG_ERROR), std::vector<std::string>{"e"});
    for (LogLine const& line : log.Lines()) {
        EXPECT_EQ(line.tag, "ZV_IPTV_API");
    }
}

TEST(LogLine, FormatsLikePrintf)
{
    LogCapture const log;
    zviptv::WriteLog(ZV_LOG_INFO, {"a/b.cpp", "F", 3}, "%s|%d|%u|%lu|%5.1f|%%|%c", "s", -1, 2U, 3UL, 1.25,
                     'c');
    EXPECT_THAT(LinesOf(log), ElementsAre("b.cpp: F(3) > s|-1|2|3|  1.2|%|c"));
}

TEST(LogLine, PrintsForeignTextAsItIs)
{
    LogCapture const log;
    zviptv::WriteLog(ZV_LOG_INFO, {"b.cpp", "F", 3}, "%s", "100%s %n %d %%");
    zviptv::WriteLog(ZV_LOG_INFO, {"%s/%n.cpp", "%d", 3}, "%s", "\xff\t\n");
    EXPECT_THAT(LinesOf(log), ElementsAre("b.cpp: F(3) > 100%s %n %d %%", "%n.cpp: %d(3) > \xff\t\n"));
}

TEST(LogLine, KeepsBlanksAndLineBreaksOfItsText)
{
    LogCapture const log;
    ZV_LOG_ERROR_LINE("  two lines \n here \n");
    EXPECT_EQ(log.Messages(), std::vector<std::string>{"  two lines \n here \n"});
}

TEST(LogLine, IsCompleteAtAnyLength)
{
    LogCapture const log;
    for (std::size_t const size : {255U, 256U, 1023U, 1024U, 4096U, 65536U, 5000000U}) {
        std::string text(size, 'x');
        text.back() = 'y';
        ZV_LOG_INFO_LINE("%s", text.c_str());
        EXPECT_TRUE(log.Lines().back().Message() == text) << size;
    }
}

TEST(LogLine, OfAnEmptyTextIsThePrefix)
{
    LogCapture const log;
    ZV_LOG_INFO_LINE("%s", "");
    ASSERT_EQ(log.Lines().size(), 1U);
    EXPECT_THAT(log.Lines()[0].line, testing::EndsWith(") > "));
}

TEST(LogLine, TakesExtremeLineNumbers)
{
    LogCapture const log;
    zviptv::WriteLogEntry({"", "", INT_MAX});
    EXPECT_THAT(LinesOf(log), ElementsAre(": (2147483647) > "));
}

TEST(BaseName, IsThePartAfterTheLastSlash)
{
    EXPECT_STREQ(zviptv::BaseName("a.cpp"), "a.cpp");
    EXPECT_STREQ(zviptv::BaseName("/x/y/a.cpp"), "a.cpp");
    EXPECT_STREQ(zviptv::BaseName("x/"), "");
    EXPECT_STREQ(zviptv::BaseName(""), "");
}

TEST(SourceLocation, OfADefaultArgumentIsThePlaceOfTheCall)
{
    int const before = __LINE__;
    zviptv::SourceLocation const here = zviptv::SourceLocation::Here();
    EXPECT_STREQ(zviptv::BaseName(here.file), "log_line_test.cpp");
    EXPECT_STREQ(here.function, "TestBody");
    EXPECT_EQ(here.line, before + 1);
}

} // namespace
