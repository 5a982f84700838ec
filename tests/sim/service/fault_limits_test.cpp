// SPDX-License-Identifier: MIT
#include "endpoints/Faults.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <stdexcept>
#include <string>

namespace zviptv::sim {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// Faults on a clock that the test advances.
class FaultLimits : public testing::Test
{
protected:
    static constexpr std::uint64_t Seed = 7;

    Damage DamageTo(std::string const& function, std::string const& busName = ":1.7",
                    std::string const& id = "")
    {
        return m_faults.To({FaultRule::Target::Answer, function, busName, id});
    }

    bool IsDropped(std::string const& function) { return DamageTo(function).IsDrop(); }

    void Wait(std::chrono::milliseconds time) { m_now += time; }

    std::vector<std::string> Texts() const
    {
        std::vector<std::string> texts;
        for (Faults::State const& fault : m_faults.List()) {
            texts.push_back(fault.progress.text);
        }
        return texts;
    }

    Faults::Time m_now{std::chrono::hours(1)};
    int m_announced = 0; ///< how often the seed was
    Faults m_faults{[this] { return m_now; }, Seed, [this] { ++m_announced; }};
};

TEST_F(FaultLimits, ACountEndsAFault)
{
    EXPECT_EQ(m_faults.Add("MuteAudio=drop,count=2"), "MuteAudio=drop,count=2");
    EXPECT_FALSE(IsDropped("MuteVideo"));
    EXPECT_TRUE(IsDropped("MuteAudio"));
    EXPECT_EQ(m_faults.List().at(0).left, 1U);
    EXPECT_TRUE(IsDropped("MuteAudio"));
    EXPECT_THAT(m_faults.List(), IsEmpty());
    EXPECT_FALSE(IsDropped("MuteAudio"));
}

TEST_F(FaultLimits, ATimeWindowLimitsAFault)
{
    m_faults.Add("MuteAudio=drop,from=2,for=0.5");
    EXPECT_EQ(m_faults.List().at(0).begin, m_now + std::chrono::seconds(2));
    EXPECT_EQ(m_faults.List().at(0).end, m_now + std::chrono::milliseconds(2500));
    Wait(std::chrono::milliseconds(1999));
    EXPECT_FALSE(IsDropped("MuteAudio"));
    Wait(std::chrono::milliseconds(1));
    EXPECT_TRUE(IsDropped("MuteAudio"));
    Wait(std::chrono::milliseconds(499));
    EXPECT_TRUE(IsDropped("MuteAudio"));
    Wait(std::chrono::milliseconds(1));
    EXPECT_THAT(m_faults.List(), IsEmpty());
    EXPECT_FALSE(IsDropped("MuteAudio"));
}

TEST_F(FaultLimits, AnApplicationMatchesByBusNameOrId)
{
    m_faults.Add("MuteAudio=drop,application=:1.7");
    m_faults.Add("MuteVideo=drop,application=org.example.player");
    EXPECT_TRUE(DamageTo("MuteAudio", ":1.7").IsDrop());
    EXPECT_FALSE(DamageTo("MuteAudio", ":1.70", "org.example.player").IsDrop());
    EXPECT_TRUE(DamageTo("MuteVideo", ":1.8", "org.example.player").IsDrop());
    EXPECT_FALSE(DamageTo("MuteVideo", ":1.8").IsDrop());
}

/// Which of this many messages a fault meets, as letters.
std::string Pattern(Faults& faults, std::string const& function, std::size_t count = 64)
{
    std::string pattern;
    for (std::size_t i = 0; i < count; ++i) {
        bool const isMet = faults.To({FaultRule::Target::Answer, function, ":1.7", ""}).IsDrop();
        pattern += isMet ? 'x' : '.';
    }
    return pattern;
}

TEST_F(FaultLimits, TheSameSeedRepeatsAProbability)
{
    auto const clock = [this] { return m_now; };
    Faults again(clock, Seed);
    Faults other(clock, Seed + 1);
    again.Add("*=delay:1,probability=0.5"); // decides by itself
    for (Faults* const faults : {&m_faults, &again, &other}) {
        faults->Add("MuteAudio=drop,probability=0.5");
    }
    Pattern(again, "MuteVideo");
    std::string const first = Pattern(m_faults, "MuteAudio");
    EXPECT_EQ(Pattern(again, "MuteAudio"), first);
    EXPECT_NE(Pattern(other, "MuteAudio"), first);
    EXPECT_NE(Pattern(m_faults, "MuteAudio"), first) << "it goes on";
}

/// Fixed for all machines and compilers.
TEST_F(FaultLimits, AProbabilityFollowsTheSeedOnEveryMachine)
{
    m_faults.Add("MuteAudio=drop,probability=0.25");
    EXPECT_EQ(Pattern(m_faults, "MuteAudio", 32), "x............x...x....xxx...xx.x");
}

TEST_F(FaultLimits, AProbabilityIsApproximatelyMet)
{
    m_faults.Add("MuteAudio=drop,probability=0.1");
    std::string const pattern = Pattern(m_faults, "MuteAudio", 10000);
    auto const met = std::count(pattern.begin(), pattern.end(), 'x');
    EXPECT_NEAR(static_cast<double>(met), 1000, 150); // five times the deviation, and fixed by the seed
    m_faults.Add("MuteVideo=drop,probability=0");
    EXPECT_EQ(Pattern(m_faults, "MuteVideo"), std::string(64, '.'));
}

TEST_F(FaultLimits, TheSeedIsAnnouncedOnceAndOnlyIfItIsUsed)
{
    m_faults.Add("MuteAudio=drop,count=2");
    EXPECT_EQ(m_announced, 0);
    m_faults.Add("MuteAudio=drop,probability=0.5");
    m_faults.Add("MuteVideo=drop,probability=0.5");
    EXPECT_EQ(m_announced, 1);
}

TEST_F(FaultLimits, AFaultThatIsReplacedIsNotCounted)
{
    m_faults.Add("*=drop,count=1");
    m_faults.Add("MuteAudio=error,count=1");
    EXPECT_TRUE(DamageTo("MuteAudio").IsError());
    EXPECT_THAT(Texts(), ElementsAre("*=drop,count=1"));
    EXPECT_TRUE(IsDropped("MuteAudio"));
    EXPECT_THAT(Texts(), IsEmpty());
}

TEST_F(FaultLimits, AllRequestsExcludePushesAndAnnouncements)
{
    m_faults.Add("*=drop");
    m_faults.Add("PESCB=duplicate");
    EXPECT_FALSE(m_faults.To({FaultRule::Target::Push, "PESCB", ":1.7", ""}).IsDrop());
    EXPECT_TRUE(m_faults.To({FaultRule::Target::Push, "PESCB", ":1.7", ""}).IsDuplicate());
    EXPECT_TRUE(m_faults.To({FaultRule::Target::Announcement, "Announcement", ":1.7", ""}).IsNone());
    EXPECT_FALSE(DamageTo("PESCB").IsDuplicate()) << "an unknown request of that name";
    EXPECT_TRUE(DamageTo("*").IsDrop()) << "another one";
}

TEST_F(FaultLimits, AMessageThatReleasesAHeldOneIsNotHeldOrCounted)
{
    m_faults.Add("PESCB=reorder,count=2");
    EXPECT_TRUE(m_faults.To({FaultRule::Target::Push, "PESCB", ":1.7", "", false}).IsReorder());
    EXPECT_FALSE(m_faults.To({FaultRule::Target::Push, "PESCB", ":1.7", "", true}).IsReorder());
    EXPECT_EQ(m_faults.List().at(0).left, 1U);
}

TEST_F(FaultLimits, AreRemovedByTextOrByName)
{
    m_faults.Add("MuteAudio=delay:5,count=3");
    m_faults.Add("MuteAudio=delay:5");
    m_faults.Add("MuteAudio=delay:6");
    EXPECT_FALSE(m_faults.Remove("MuteAudio=delay:5,count=4"));
    EXPECT_TRUE(m_faults.Remove("MuteAudio=delay:5,count=03"));
    EXPECT_THAT(Texts(), ElementsAre("MuteAudio=delay:5", "MuteAudio=delay:6"));
    m_faults.Add("MuteAudio=delay:5,for=3");
    EXPECT_TRUE(m_faults.Remove("MuteAudio=delay:5"));
    EXPECT_THAT(Texts(), ElementsAre("MuteAudio=delay:6"));
    m_faults.Clear();
    EXPECT_THAT(Texts(), IsEmpty());
    EXPECT_FALSE(m_faults.Remove("MuteAudio=delay:6"));
}

TEST_F(FaultLimits, InvalidTextChangesNothing)
{
    m_faults.Add("MuteAudio=drop");
    for (char const* const text : {"MuteAudio=drop,count=0", "MuteAudio=", "Mute=drop,count=1"}) {
        EXPECT_THROW(m_faults.Add(text), std::invalid_argument);
        EXPECT_THROW(m_faults.Remove(text), std::invalid_argument);
        EXPECT_THROW(m_faults.Resume({text, m_now}), std::invalid_argument);
    }
    EXPECT_THAT(Texts(), ElementsAre("MuteAudio=drop"));
}

TEST_F(FaultLimits, ContinueInAnotherObject)
{
    m_faults.Add("MuteAudio=drop,count=20,probability=0.5");
    m_faults.Add("MuteVideo=drop,from=1,for=1");
    Pattern(m_faults, "MuteAudio", 10);
    Wait(std::chrono::milliseconds(1500));
    Faults next([this] { return m_now; }, Seed);
    for (Faults::State const& fault : m_faults.List()) {
        next.Resume(fault.progress);
    }
    EXPECT_EQ(next.List().at(0).left, m_faults.List().at(0).left);
    EXPECT_EQ(next.List().at(1).end, m_faults.List().at(1).end);
    EXPECT_EQ(Pattern(next, "MuteAudio"), Pattern(m_faults, "MuteAudio"));
}

} // namespace
} // namespace zviptv::sim
