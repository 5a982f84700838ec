// SPDX-License-Identifier: MIT
#include "LogCapture.h"

#include "log/Log.h"

#include <zviptv/MessageBuffer.h>
#include <zviptv/ProxyDBusHelper.h>

#include <gmock/gmock.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

using namespace zviptv::test;

namespace {

void Count(EZVLogPriority, char const*, char const*, void* counter)
{
    ++*static_cast<std::atomic<int>*>(counter);
}

TEST(LogSink, GetsItsUserDataUntilAnotherReplacesIt)
{
    std::atomic<int> first{0};
    std::atomic<int> second{0};
    ZVSetLogSink(Count, &first);
    ZV_LOG_INFO_LINE("one");
    ZVSetLogSink(Count, &second);
    ZV_LOG_INFO_LINE("two");
    ZV_LOG_INFO_LINE("three");
    ZVSetLogSink(nullptr, nullptr);
    ZV_LOG_INFO_LINE("nobody's");
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 2);
}

TEST(LogSink, NullRestoresTheDefault)
{
    setenv("ZV_IPTV_LOG", "stderr", 1);
    std::atomic<int> lines{0};
    ZVSetLogSink(Count, &lines);
    testing::internal::CaptureStderr();
    ZV_LOG_INFO_LINE("to the sink");
    ZVSetLogSink(nullptr, nullptr);
    ZV_LOG_INFO_LINE("to standard error");
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                testing::MatchesRegex("ZV_IPTV_API info: log_sink_test\\.cpp: TestBody\\([0-9]+\\) > "
                                      "to standard error\n"));
    EXPECT_EQ(lines, 1);
}

TEST(LogSink, OverridesNoneOfTheEnvironment)
{
    setenv("ZV_IPTV_LOG", "none", 1);
    std::atomic<int> lines{0};
    ZVSetLogSink(Count, &lines);
    ZV_LOG_DEBUG_LINE("one");
    ZVSetLogSink(nullptr, nullptr);
    EXPECT_EQ(lines, 1);
}

TEST(LogSink, TheLevelAppliesToTheSink)
{
    setenv("ZV_IPTV_LOG_LEVEL", "error", 1);
    LogCapture const log;
    ZV_LOG_DEBUG_LINE("debug");
    ZV_LOG_INFO_LINE("info");
    ZV_LOG_ENTRY();
    ZV_LOG_ERROR_LINE("error");
    zviptv::WriteLogEntry(ZV_LOG_HERE, ZV_LOG_ERROR);
    EXPECT_EQ(log.Messages(), (std::vector<std::string>{"error", ""}));
}

TEST(LogSink, TheLevelInfoOmitsOnlyDebug)
{
    setenv("ZV_IPTV_LOG_LEVEL", "info", 1);
    LogCapture const log;
    ZV_LOG_DEBUG_LINE("debug");
    ZV_LOG_INFO_LINE("info");
    ZV_LOG_ERROR_LINE("error");
    EXPECT_EQ(log.Messages(), (std::vector<std::string>{"info", "error"}));
}

TEST(LogSink, DoesNotEvaluateArgumentsOfFilteredLines)
{
    int evaluated = 0;
    auto const text = [&evaluated] {
        ++evaluated;
        return "text";
    };
    setenv("ZV_IPTV_LOG", "none", 1);
    ZVSetLogSink(nullptr, nullptr);
    ZV_LOG_ERROR_LINE("%s", text());
    EXPECT_EQ(evaluated, 0);
    ZVSetLogSink([](EZVLogPriority, char const*, char const*, void*) {}, nullptr);
    ZV_LOG_ERROR_LINE("%s", text());
    EXPECT_EQ(evaluated, 1);
    ZVSetLogSink(nullptr, nullptr);
    ZV_LOG_ERROR_LINE("%s", text());
    EXPECT_EQ(evaluated, 1);
}

TEST(LogSink, ReceivesForeignPercentSignsUnchanged)
{
    setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus", 1);
    LogCapture const log;
    CProxyDBusHelper const channel("50%s%n");
    EXPECT_TRUE(log.Has(ZV_LOG_INFO, "Constructor - 50%s%n"));
}

/// Counts incomplete lines.
void Examine(EZVLogPriority, char const*, char const* line, void* counter)
{
    std::string const text(line);
    std::size_t const at = text.find(" > ");
    bool const whole = at != std::string::npos && text.size() == at + 3 + 300 &&
                       text.find_first_not_of(text.back(), at + 3) == std::string::npos;
    if (!whole) {
        ++*static_cast<std::atomic<int>*>(counter);
    }
}

TEST(LogSink, MayBeReplacedWhileOthersLog)
{
    static std::atomic<int> broken[2]; // a line that is being written may still reach the earlier sink
    std::vector<std::thread> writers;
    for (char const letter : {'a', 'b', 'c'}) {
        writers.emplace_back([letter] {
            std::string const text(300, letter);
            for (int i = 0; i < 3000; ++i) {
                ZV_LOG_INFO_LINE("%s", text.c_str());
            }
        });
    }
    for (int i = 0; i < 3000; ++i) {
        ZVSetLogSink(Examine, &broken[i % 2]);
    }
    for (std::thread& writer : writers) {
        writer.join();
    }
    ZVSetLogSink(nullptr, nullptr);
    EXPECT_EQ(broken[0] + broken[1], 0);
}

} // namespace
