// SPDX-License-Identifier: MIT
#include "Bytes.h"
#include "Files.h"
#include "LoopRunner.h"
#include "PrivateBus.h"
#include "WirePeer.h"
#include "trace/Conversation.h"
#include "trace/Monitor.h"
#include "trace/ProcessNames.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <unistd.h>

using namespace zviptv::test;
using namespace zviptv::trace;
using testing::HasSubstr;

namespace {

class MonitorTest : public testing::Test
{
protected:
    Monitor::Handlers Collecting()
    {
        return {[this](Message const& message) { m_messages.push_back(message); }, [this] { ++m_pauses; },
                [this](std::string const& reason) { m_end = reason; }};
    }

    bool HasCome(char const* member) const
    {
        return std::any_of(m_messages.begin(), m_messages.end(), [member](Message const& message) {
            return ParseMessage(message.bytes).member == member;
        });
    }

    PrivateBus m_bus;
    std::vector<Message> m_messages;
    int m_pauses = 0;
    std::optional<std::string> m_end;
};

} // namespace

TEST_F(MonitorTest, SeesEveryMessageInOrder)
{
    constexpr std::size_t count = 20'000;
    WirePeer sender;
    WirePeer receiver;
    receiver.SetRecording(false);
    Monitor const monitor(m_bus.Address(), Collecting());
    sender.EmitMany({receiver.Name(), "/p", "a.b", "Many"}, Entries({{"k", "v"}}), count);
    sender.Emit({receiver.Name(), "/p", "a.b", "Last"});
    auto const isLast = [this] {
        return !m_messages.empty() && ParseMessage(m_messages.back().bytes).member == "Last";
    };
    ASSERT_TRUE(RunUntil(isLast, std::chrono::seconds(60)));
    std::uint32_t serial = 0;
    std::size_t many = 0;
    for (Message const& message : m_messages) {
        ParsedMessage const wire = ParseMessage(message.bytes);
        if (wire.member == "Many") {
            EXPECT_GT(wire.serial, serial);
            serial = wire.serial;
            ++many;
        }
    }
    EXPECT_EQ(many, count);
    EXPECT_GT(m_pauses, 0);
    EXPECT_EQ(monitor.Lost(), 0U);
}

/// Such as a signal that ends the program, also if messages arrive faster than they are handled.
TEST_F(MonitorTest, OtherWorkOfTheThreadGetsItsTurn)
{
    constexpr std::size_t count = 20'000;
    WirePeer sender;
    WirePeer receiver;
    receiver.SetRecording(false);
    Monitor const monitor(m_bus.Address(), Collecting());
    sender.EmitMany({receiver.Name(), "/p", "a.b", "Many"}, Entries({{"k", "v"}}), count);
    sender.Sync();
    std::optional<std::size_t> atOnce;
    auto const isOver = [&] {
        if (!atOnce && !m_messages.empty()) {
            atOnce = m_messages.size();
        }
        return m_messages.size() >= count;
    };
    ASSERT_TRUE(RunUntil(isOver, std::chrono::seconds(60)));
    EXPECT_LE(*atOnce, 1'000U);
}

TEST_F(MonitorTest, ReportsTheValuesThatWereSent)
{
    WirePeer sender;
    WirePeer receiver;
    Monitor const monitor(m_bus.Address(), Collecting());
    std::string const pattern = PatternBytes(70'000);
    std::uint32_t const serial =
        sender.Emit({receiver.Name(), "/p", "a.b", "M"}, Entries({{"data", pattern}, {"empty", ""}}));
    auto const isThere = [this] {
        return !m_messages.empty() && ParseMessage(m_messages.back().bytes).member == "M";
    };
    ASSERT_TRUE(RunUntil(isThere));
    ParsedMessage const message = ParseMessage(m_messages.back().bytes);
    EXPECT_EQ(message.serial, serial);
    EXPECT_EQ(message.sender, sender.Name());
    EXPECT_EQ(message.destination, receiver.Name());
    auto const entries = ReadEntries(message);
    ASSERT_EQ(entries.size(), 2U);
    EXPECT_EQ(entries[0].value, pattern);
    EXPECT_EQ(entries[1].value, "");
    EXPECT_NEAR(static_cast<double>(m_messages.back().time), static_cast<double>(g_get_real_time()), 20e6);
}

TEST_F(MonitorTest, DoesNotAnswerCallsToOthers)
{
    WirePeer caller;
    WirePeer callee;
    callee.SetHandler([](WireMessage const&) { return Entries({{"answer", "1"}}); });
    Monitor const monitor(m_bus.Address(), Collecting());
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(caller.Call({callee.Name(), "/p", "a.b", "Ask"}).Value("answer"), "1");
    }
    caller.Call({callee.Name(), "/p", "org.freedesktop.DBus.Peer", "Ping"});
    std::size_t const all = 12; // a monitor that answers one is disconnected by the bus
    ASSERT_TRUE(RunUntil([this] { return m_messages.size() >= all || m_end; }));
    EXPECT_FALSE(m_end);
}

TEST_F(MonitorTest, CatchesUpWithTheBus)
{
    constexpr std::size_t count = 10'000;
    WirePeer sender;
    WirePeer receiver;
    receiver.SetRecording(false);
    Monitor monitor(m_bus.Address(), Collecting());
    sender.EmitMany({receiver.Name(), "/p", "a.b", "Many"}, Entries({{"k", "v"}}), count);
    sender.Sync();
    EXPECT_TRUE(monitor.CatchUp());
    EXPECT_EQ(
        std::count_if(m_messages.begin(), m_messages.end(),
                      [](Message const& message) { return ParseMessage(message.bytes).member == "Many"; }),
        static_cast<std::ptrdiff_t>(count));
    m_bus.Kill();
    EXPECT_FALSE(monitor.CatchUp());
}

TEST_F(MonitorTest, WaitsForABusThatHangsUntilTheLimitOrTheCallerEndsIt)
{
    WirePeer sender;
    Monitor monitor(m_bus.Address(), Collecting());
    sender.Emit({"", "/p", "a.b", "Before"});
    sender.Sync();
    m_bus.Stop();
    EXPECT_FALSE(monitor.CatchUp(std::chrono::milliseconds(50)));
    std::size_t asked = 0;
    EXPECT_FALSE(monitor.CatchUp(std::chrono::minutes(10), [&asked] { return ++asked > 0; }));
    EXPECT_EQ(asked, 1U);
    m_bus.Continue();
    EXPECT_TRUE(monitor.CatchUp());
    EXPECT_TRUE(HasCome("Before"));
}

TEST_F(MonitorTest, ReportsTheEndOfTheBusAfterItsLastMessage)
{
    WirePeer sender;
    Monitor const monitor(m_bus.Address(), Collecting());
    sender.Emit({"", "/p", "a.b", "Before"});
    sender.Sync();
    m_bus.Kill();
    ASSERT_TRUE(RunUntil([this] { return m_end.has_value(); }));
    EXPECT_FALSE(m_end->empty());
    EXPECT_TRUE(HasCome("Before"));
}

TEST_F(MonitorTest, ReportsNothingAfterItsEnd)
{
    WirePeer sender;
    {
        Monitor const monitor(m_bus.Address(), Collecting());
        sender.Emit({"", "/p", "a.b", "M"});
        sender.Sync();
    }
    std::size_t const before = m_messages.size();
    sender.Emit({"", "/p", "a.b", "M"});
    sender.Sync();
    RunPending();
    EXPECT_EQ(m_messages.size(), before);
}

TEST_F(MonitorTest, ReportsAMissingBus)
{
    m_bus.Kill();
    try {
        Monitor const monitor(m_bus.Address(), Collecting());
        FAIL();
    } catch (MonitorError const& error) {
        EXPECT_THAT(error.what(), HasSubstr("cannot connect to the bus at " + m_bus.Address()));
        EXPECT_FALSE(error.HasBus());
    }
}

TEST_F(MonitorTest, ProcessesHaveTheirPrograms)
{
    WirePeer peer;
    std::string program;
    int process = 0;
    ProcessNames const names(m_bus.Address(), [&](std::string const& name, int id, std::string const& found) {
        EXPECT_EQ(name, peer.Name());
        process = id;
        program = found;
    });
    names.Ask(peer.Name());
    ASSERT_TRUE(RunUntil([&] { return process != 0; }));
    EXPECT_EQ(process, getpid());
    EXPECT_EQ(program + "\n", ReadFile("/proc/self/comm")); // an emulator has another name
}
