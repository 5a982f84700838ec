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

TEST(WireMessageTest, ValueIsThatOfTheFirstEntryWithTheKey)
{
    WireMessage message;
    message.entries = Entries({{"k", "first"}, {"k", "second"}});
    EXPECT_EQ("first", message.Value("k"));
    EXPECT_EQ("", message.Value("other"));
    EXPECT_TRUE(message.Has("k"));
    EXPECT_FALSE(message.Has("other"));
}

TEST(WireMessageTest, ValueLooksIntoPairsToo)
{
    WireMessage message;
    message.pairs = Pairs({{"type", "IPGUTIL"}});
    EXPECT_EQ("IPGUTIL", message.Value("type"));
    EXPECT_TRUE(message.Has("type"));
}

TEST(WireMessageTest, EqualityLooksAtEverythingButSerials)
{
    WireMessage const original = Named("SendSignal");
    WireMessage other = original;
    other.serial = 7;
    other.replySerial = 6;
    EXPECT_EQ(original, other);
    other.entries = Entries({{"a", "1"}});
    EXPECT_NE(original, other);
}

TEST(WireMessageTest, OrderOfEntriesMatters)
{
    EXPECT_NE(Entries({{"a", "1"}, {"b", "2"}}), Entries({{"b", "2"}, {"a", "1"}}));
    EXPECT_NE((WireEntry{"a", "ay", ""}), (WireEntry{"a", "s", ""}));
}

TEST(WireMessageTest, OnlyByteArraysNeedsTheWholeBodyToBeOne)
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
    EXPECT_EQ(R"("a\"\\\x00\xff")", Printable(std::string("a\"\\\0\xff", 5)));
    EXPECT_EQ(R"("abc"... (5 bytes))", Printable("abcde", 3));
    EXPECT_EQ(R"({"k": ay "v"})", testing::PrintToString(WireEntry{"k", "ay", "v"}));
    auto message = Named("SendSignal");
    message.entries = Entries({{"functionname", "PESCB"}});
    auto const text = testing::PrintToString(message);
    EXPECT_NE(std::string::npos, text.find("signal #0 member=\"SendSignal\"")) << text;
    EXPECT_NE(std::string::npos, text.find("{\"functionname\": ay \"PESCB\"}")) << text;
}

TEST(BytesTest, RecordsAndPatternsKeepEveryByte)
{
    struct Record
    {
        std::uint32_t first;
        std::uint32_t second;
    };
    EXPECT_EQ(std::string("\x01\0\0\0\x02\0\0\0", 8), BytesOf(Record{1, 2}));
    auto const pattern = PatternBytes(1000);
    ASSERT_EQ(1000U, pattern.size());
    EXPECT_NE(pattern.substr(0, 500), pattern.substr(256, 500));
}

TEST(MessageLogTest, WaitForFindsWhatIsThereAndWhatComes)
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

TEST(MessageLogTest, WaitForSkipsWhatIsBeforeTheMark)
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
    EXPECT_EQ(50U, log.Count(IsSignal("odd")));
    log.Clear();
    EXPECT_EQ(0U, log.Size());
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
