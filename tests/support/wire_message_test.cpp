// SPDX-License-Identifier: MIT
#include "Bytes.h"
#include "MessageLog.h"
#include "WaitUntil.h"
#include "WireMessage.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

using namespace zviptv::test;
using namespace std::chrono_literals;

namespace {

WireMessage Named(std::string const& member)
{
    WireMessage message;
    message.kind = WireKind::Signal;
    message.member = member;
    return message;
}

} // namespace

TEST(WireMessageTest, ValueReturnsTheFirstEntryWithTheKey)
{
    WireMessage message;
    message.entries = Entries({{"k", "first"}, {"k", "second"}});
    EXPECT_EQ(message.Value("k"), "first");
    EXPECT_EQ(message.Value("other"), "");
    EXPECT_TRUE(message.Has("k"));
    EXPECT_FALSE(message.Has("other"));
}

TEST(WireMessageTest, ValueAlsoReadsPairs)
{
    WireMessage message;
    message.pairs = Pairs({{"type", "IPGUTIL"}});
    EXPECT_EQ(message.Value("type"), "IPGUTIL");
    EXPECT_TRUE(message.Has("type"));
}

TEST(WireMessageTest, EqualityIgnoresSerials)
{
    WireMessage const original = Named("SendSignal");
    WireMessage other = original;
    other.serial = 7;
    other.replySerial = 6;
    EXPECT_EQ(other, original);
    other.entries = Entries({{"a", "1"}});
    EXPECT_NE(other, original);
}

TEST(WireMessageTest, OrderOfEntriesMatters)
{
    EXPECT_NE(Entries({{"b", "2"}, {"a", "1"}}), Entries({{"a", "1"}, {"b", "2"}}));
    EXPECT_NE((WireEntry{"a", "s", ""}), (WireEntry{"a", "ay", ""}));
}

TEST(WireMessageTest, OnlyByteArraysRequiresTheWholeBody)
{
    WireMessage message;
    message.signature = "a{sv}";
    EXPECT_TRUE(message.HasOnlyByteArrays());
    message.entries = Entries({{"a", "1"}});
    EXPECT_TRUE(message.HasOnlyByteArrays());
    message.entries.push_back(WireEntry{"b", "s", ""});
    EXPECT_FALSE(message.HasOnlyByteArrays());
    message.entries.pop_back();
    message.signature = "a{sv}s";
    EXPECT_FALSE(message.HasOnlyByteArrays());
}

TEST(WireMessageTest, PrintsReadably)
{
    EXPECT_EQ(Printable(std::string("a\"\\\0\xff", 5)), R"("a\"\\\x00\xff")");
    EXPECT_EQ(Printable("abcde", 3), R"("abc"... (5 bytes))");
    EXPECT_EQ(testing::PrintToString(WireEntry{"k", "ay", "v"}), R"({"k": ay "v"})");
    auto message = Named("SendSignal");
    message.entries = Entries({{"functionname", "PESCB"}});
    auto const text = testing::PrintToString(message);
    EXPECT_NE(text.find("signal #0 member=\"SendSignal\""), std::string::npos) << text;
    EXPECT_NE(text.find("{\"functionname\": ay \"PESCB\"}"), std::string::npos) << text;
}

TEST(BytesTest, RecordsAndPatternsKeepEveryByte)
{
    struct Record
    {
        std::uint32_t first;
        std::uint32_t second;
    };
    EXPECT_EQ(BytesOf(Record{1, 2}), std::string("\x01\0\0\0\x02\0\0\0", 8));
    auto const pattern = PatternBytes(1000);
    ASSERT_EQ(pattern.size(), 1000U);
    EXPECT_NE(pattern.substr(256, 500), pattern.substr(0, 500));
}

TEST(MessageLogTest, WaitForFindsEarlierAndLaterMessages)
{
    MessageLog log;
    log.Add(Named("early"));
    EXPECT_TRUE(log.WaitFor(IsSignal("early"), 0ms));
    std::thread later([&] { log.Add(Named("late")); });
    EXPECT_TRUE(log.WaitFor(IsSignal("late")));
    later.join();
    EXPECT_FALSE(log.WaitFor(IsSignal("never"), 10ms));
    EXPECT_FALSE(log.WaitFor(IsCall("late"), 0ms));
}

TEST(MessageLogTest, WaitForSkipsMessagesBeforeTheMark)
{
    MessageLog log;
    log.Add(Named("one"));
    EXPECT_FALSE(log.WaitFor(IsSignal("one"), 10ms, 1));
    log.Add(Named("one"));
    EXPECT_TRUE(log.WaitFor(IsSignal("one"), 0ms, 1));
}

TEST(MessageLogTest, CountsAndForgets)
{
    MessageLog log;
    std::thread adder([&] {
        for (int i = 0; i < 100; ++i) {
            log.Add(Named(i % 2 == 0 ? "even" : "odd"));
        }
    });
    EXPECT_TRUE(log.WaitForCount(IsSignal("even"), 50));
    adder.join();
    EXPECT_FALSE(log.WaitForCount(IsSignal("even"), 51, 10ms));
    EXPECT_EQ(log.Count(IsSignal("odd")), 50U);
    log.Clear();
    EXPECT_EQ(log.Size(), 0U);
    EXPECT_FALSE(log.WaitFor(IsSignal("odd"), 0ms));
}

TEST(WaitUntilTest, ReturnsTheConditionsAnswer)
{
    std::atomic<bool> done{false};
    EXPECT_FALSE(WaitUntil([&] { return done.load(); }, 10ms));
    std::thread setter([&] { done = true; });
    EXPECT_TRUE(WaitUntil([&] { return done.load(); }, patience));
    setter.join();
}
