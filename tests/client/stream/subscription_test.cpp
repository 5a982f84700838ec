// SPDX-License-Identifier: MIT
#include "Pushes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zviptv::test {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using Clock = client::Subscriber::Clock;

class SubscriptionTest : public testing::Test
{
protected:
    void Push(std::string const& pid, std::string const& data = "12345", std::string const& type = "2")
    {
        m_hub->Take(PushOf(PesFields(pid, data, type)), m_now);
    }

    /// A subscription that records the PIDs of its packets.
    Subscription Note(PesFilter filter, std::vector<int>& pids)
    {
        return m_hub->Add(std::move(filter),
                          [&pids](PesPacket const& packet) { pids.push_back(packet.Pid()); });
    }

    FakeLink m_link;
    std::shared_ptr<client::PushHub> m_hub = std::make_shared<client::PushHub>(m_link);
    Clock::time_point m_now;
    std::vector<int> m_pids;
    std::vector<int> m_others;
};

} // namespace

TEST_F(SubscriptionTest, SendsOneRequestForAllSubscriptions)
{
    Subscription first = Note({}, m_pids);
    {
        Subscription const second = Note({}, m_others);
        EXPECT_THAT(m_link.requests, ElementsAre("pes on"));
    }
    EXPECT_THAT(m_link.requests, ElementsAre("pes on"));
    Subscription const caption = m_hub->Add([](CaptionData const&) {});
    EXPECT_THAT(m_link.requests, ElementsAre("pes on", "caption on"));
    first.End();
    first.End();
    EXPECT_THAT(m_link.requests, ElementsAre("pes on", "caption on", "pes off"));
    EXPECT_FALSE(m_hub->Wants(client::PushKind::Pes));
    EXPECT_TRUE(m_hub->Wants(client::PushKind::Caption));
    first = Note({}, m_pids);
    EXPECT_THAT(m_link.requests, ElementsAre("pes on", "caption on", "pes off", "pes on"));
}

TEST_F(SubscriptionTest, FiltersByPidAndKind)
{
    Subscription const byPid = Note({{257, 258}, {}}, m_pids);
    std::vector<int> both;
    Subscription const byKind = Note({{}, {PesKind::Teletext}}, m_others);
    Subscription const byBoth = Note({{258}, {PesKind::Teletext}}, both);
    Push("256", "x", "4");
    Push("257", "x", "2");
    Push("258", "x", "4");
    Push("258", "x", "2");
    EXPECT_THAT(m_pids, ElementsAre(257, 258, 258));
    EXPECT_THAT(m_others, ElementsAre(256, 258));
    EXPECT_THAT(both, ElementsAre(258));
}

TEST_F(SubscriptionTest, CountsPacketsBytesAndGaps)
{
    Subscription const all = Note({}, m_pids);
    Subscription const one = Note({{257}, {}}, m_others);
    Push("256", "123");
    Push("257", "12345");
    m_now += 999ms;
    Push("256", "1");
    m_now += 1ms;
    Push("257", "12");
    EXPECT_EQ(all.Counters().packets, 4U);
    EXPECT_EQ(all.Counters().bytes, 11U);
    EXPECT_EQ(all.Counters().gaps, 1U) << "PID 257 paused for a second";
    EXPECT_EQ(one.Counters().packets, 2U);
    EXPECT_EQ(one.Counters().bytes, 7U);
    EXPECT_EQ(one.Counters().gaps, 1U);
    m_now += 1h;
    Push("258");
    EXPECT_EQ(all.Counters().gaps, 1U) << "the first packet of a PID follows no pause";
    Push("256");
    EXPECT_EQ(all.Counters().gaps, 2U);
}

TEST_F(SubscriptionTest, CaptionDataIsDeliveredAndCounted)
{
    std::vector<std::string> texts;
    Subscription const caption = m_hub->Add(
        [&](CaptionData const& data) { texts.emplace_back(data.Data().begin(), data.Data().end()); });
    Subscription const pes = Note({}, m_pids);
    m_hub->Take(PushOf(CaptionFields("one")), m_now);
    m_hub->Take(PushOf(CaptionFields("three")), m_now + 2s);
    EXPECT_THAT(texts, ElementsAre("one", "three"));
    EXPECT_THAT(m_pids, IsEmpty());
    EXPECT_EQ(caption.Counters().bytes, 8U);
    EXPECT_EQ(caption.Counters().gaps, 1U);
}

TEST_F(SubscriptionTest, CallbackMayEndItsSubscription)
{
    std::optional<Subscription> own;
    auto const alive = std::make_shared<int>(7);
    own = m_hub->Add({}, [&own, alive, this](PesPacket const& packet) {
        own.reset();
        m_pids.push_back(packet.Pid() + *alive); // the callback keeps its captures alive
    });
    Subscription const other = Note({}, m_others);
    Push("256");
    Push("257");
    EXPECT_THAT(m_pids, ElementsAre(263));
    EXPECT_THAT(m_others, ElementsAre(256, 257));
    EXPECT_EQ(alive.use_count(), 1) << "and then goes";
}

TEST_F(SubscriptionTest, CallbackMayEndAndBeginOthers)
{
    std::optional<Subscription> second;
    std::vector<Subscription> third;
    Subscription const first = m_hub->Add({}, [&](PesPacket const&) {
        second.reset();
        third.push_back(Note({}, m_others));
    });
    second = Note({}, m_pids);
    Push("256");
    EXPECT_THAT(m_pids, IsEmpty()) << "it ended before its turn";
    EXPECT_THAT(m_others, IsEmpty()) << "it begins with the next packet";
    Push("257");
    EXPECT_THAT(m_others, ElementsAre(257));
}

TEST_F(SubscriptionTest, CallbackMayCloseTheHub)
{
    Subscription first = m_hub->Add({}, [&](PesPacket const&) {
        m_hub->Close();
        m_hub.reset();
    });
    Subscription const second = Note({}, m_pids);
    std::shared_ptr<client::PushHub> const hub = m_hub;
    hub->Take(PushOf(PesFields("256", "x")), m_now);
    EXPECT_THAT(m_pids, IsEmpty());
    EXPECT_FALSE(first.IsActive());
    EXPECT_FALSE(second.IsActive());
    EXPECT_EQ(first.Counters().packets, 1U) << "counters remain";
    first.End();
    EXPECT_THAT(m_link.requests, ElementsAre("pes on")) << "the service is not told";
    EXPECT_FALSE(hub->Add({}, [](PesPacket const&) {}).IsActive());
}

TEST_F(SubscriptionTest, ExceptionOfACallbackDoesNotStopTheOthers)
{
    Subscription const first =
        m_hub->Add({}, [](PesPacket const&) { throw std::runtime_error("of the application"); });
    Subscription const second = Note({}, m_pids);
    Push("256");
    Push("257");
    EXPECT_THAT(m_pids, ElementsAre(256, 257));
    EXPECT_THAT(m_link.reports,
                ElementsAre("PESCB threw: of the application", "PESCB threw: of the application"));
}

TEST_F(SubscriptionTest, UnreadablePushesAreReportedWhileSubscribed)
{
    m_hub->Take(PushOf(PesFields("x", "data")), m_now);
    EXPECT_THAT(m_link.reports, IsEmpty()) << "it may be on its way still after the end";
    Subscription const pes = Note({}, m_pids);
    m_hub->Take(PushOf(PesFields("x", "data")), m_now);
    m_hub->Take(PushOf(CaptionFields("data", "x")), m_now);
    m_hub->Take(PushOf({{"functionname", "OtherCB"}}), m_now);
    EXPECT_THAT(m_link.reports, ElementsAre("PESCB pesPID: 'x' is not a number"));
    Push("256");
    EXPECT_THAT(m_pids, ElementsAre(256));
}

TEST_F(SubscriptionTest, SubscriptionsMoveAndOutliveTheHub)
{
    Subscription one = Note({}, m_pids);
    Subscription other = std::move(one);
    EXPECT_FALSE(one.IsActive()); // NOLINT(bugprone-use-after-move): a moved subscription has ended
    EXPECT_EQ(one.Counters().packets, 0U);
    Push("256");
    EXPECT_THAT(m_pids, ElementsAre(256));
    other = Note({}, m_others);
    Push("257");
    EXPECT_THAT(m_pids, ElementsAre(256)) << "the former one has ended";
    m_hub->Close();
    m_hub.reset();
    EXPECT_FALSE(other.IsActive());
    EXPECT_EQ(other.Counters().packets, 1U);
}

TEST_F(SubscriptionTest, RefusesANullCallback)
{
    Subscription const none = m_hub->Add({}, nullptr);
    EXPECT_FALSE(none.IsActive());
    EXPECT_FALSE(Subscription().IsActive());
    EXPECT_THAT(m_link.requests, IsEmpty());
}

} // namespace zviptv::test
