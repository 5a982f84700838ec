// SPDX-License-Identifier: MIT
#include "endpoints/PushLine.h"

#include <gmock/gmock.h>

#include <string>
#include <utility>
#include <vector>

namespace zviptv::sim {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

/// A line whose notifications are numbers, at times that the test says.
class PushOrder : public testing::Test
{
protected:
    PushOrder() { m_line.Turn(true); }

    static Damage Of(std::vector<std::string> const& faults)
    {
        Damage damage;
        for (std::string const& fault : faults) {
            damage.Add(FaultRule::Parse(fault), 0);
        }
        return damage;
    }

    /// A notification that arrives at this millisecond.
    void Pass(std::string const& text, int time, Damage const& damage = {}, std::uint16_t stream = 1)
    {
        auto notification = std::make_shared<CMessageBuffer>();
        notification->AddValue("pesData", text.c_str());
        m_line.Pass({notification, text.size(), stream}, damage, At(time), m_send);
    }

    void Release(int time) { m_line.Release(At(time), m_send); }

    static PushLine::Time At(int time) { return PushLine::Time(milliseconds(3600000 + time)); }

    PushLine m_line;
    std::vector<std::pair<std::string, int>> m_sent; ///< texts, and the milliseconds when they are due
    PushLine::Send m_send = [this](PushLine::Push const& push, PushLine::Time due) {
        auto const after = std::chrono::duration_cast<milliseconds>(due - At(0));
        m_sent.emplace_back(push.notification->GetValue("pesData"), static_cast<int>(after.count()));
    };
};

TEST_F(PushOrder, WithoutFaultsFollowsTheStream)
{
    Pass("a", 0);
    Pass("b", 10);
    EXPECT_THAT(m_sent, ElementsAre(Pair("a", 0), Pair("b", 10)));
}

TEST_F(PushOrder, ADelayAlsoDelaysLaterPackets)
{
    Pass("a", 0, Of({"PESCB=delay:50"}));
    Pass("b", 10);
    Pass("c", 60);
    Pass("d", 70, Of({"PESCB=delay:50"}));
    EXPECT_THAT(m_sent, ElementsAre(Pair("a", 50), Pair("b", 50), Pair("c", 60), Pair("d", 120)));
}

TEST_F(PushOrder, ReorderSwapsWithTheNextPacketOfTheStream)
{
    Damage const reorder = Of({"PESCB=reorder"});
    Pass("a", 0, reorder);
    EXPECT_TRUE(m_line.Holds(1));
    EXPECT_FALSE(m_line.Holds(2));
    Pass("other", 5, {}, 2);
    Pass("b", 10, reorder); // one is held already
    Pass("c", 20);
    EXPECT_THAT(m_sent, ElementsAre(Pair("other", 5), Pair("b", 10), Pair("a", 10), Pair("c", 20)));
}

TEST_F(PushOrder, ReleasesAPacketThatNothingFollows)
{
    Pass("a", 0, Of({"PESCB=reorder", "PESCB=delay:30"}));
    Pass("b", 0, Of({"PESCB=reorder", "PESCB=duplicate"}), 2);
    Release(20);
    EXPECT_THAT(m_sent, ElementsAre(Pair("a", 30), Pair("b", 30), Pair("b", 30)));
    EXPECT_FALSE(m_line.Holds(1));
}

TEST_F(PushOrder, DropsHeldPacketsAtTheEnd)
{
    Pass("a", 0, Of({"PESCB=reorder"}));
    Pass("b", 0, Of({"PESCB=delay:600000"}), 2);
    m_sent.clear();
    m_line.Turn(false);
    EXPECT_FALSE(m_line.IsOn());
    m_line.Turn(true);
    Release(10);
    Pass("c", 20);
    EXPECT_THAT(m_sent, ElementsAre(Pair("c", 20)));
}

/// Four a second come 100 ms apart: after the second of holding they go 25 ms apart.
TEST_F(PushOrder, ABurstIsHeldForASecondAndSentAtTheFactor)
{
    Damage const burst = Of({"PESCB=burst:4"});
    for (int time = 0; time < 1700; time += 100) {
        Pass(std::to_string(time), time, burst);
    }
    ASSERT_EQ(m_sent.size(), 17U);
    for (int i = 0; i < 14; ++i) { // until 1333 ms, when 1000 ms + time / 4 has caught up with them
        EXPECT_THAT(m_sent.at(static_cast<std::size_t>(i)), Pair(std::to_string(i * 100), 1000 + i * 25));
    }
    for (int i = 14; i < 17; ++i) { // the next burst
        EXPECT_THAT(m_sent.at(static_cast<std::size_t>(i)),
                    Pair(std::to_string(i * 100), 2400 + (i - 14) * 25));
    }
}

TEST_F(PushOrder, ABurstAndADelayAddUp)
{
    Pass("a", 0, Of({"PESCB=burst:2", "PESCB=delay:50"}));
    Pass("b", 100);
    EXPECT_THAT(m_sent, ElementsAre(Pair("a", 1050), Pair("b", 1050)));
}

TEST_F(PushOrder, DropOverridesOtherFaults)
{
    Pass("a", 0, Of({"PESCB=duplicate", "PESCB=reorder", "PESCB=burst:2", "PESCB=drop"}));
    Release(0);
    EXPECT_THAT(m_sent, IsEmpty());
}

TEST_F(PushOrder, CorruptsBothPacketsOfADuplicate)
{
    Pass("abcd", 0, Of({"PESCB=duplicate", "PESCB=short:pesData"}));
    Pass("abcd", 1);
    EXPECT_THAT(m_sent, ElementsAre(Pair("ab", 0), Pair("ab", 0), Pair("abcd", 1)));
}

} // namespace
} // namespace zviptv::sim
