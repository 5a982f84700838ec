// SPDX-License-Identifier: MIT
#include "Texts.h"

#include "scenario/Play.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zviptv::sim {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class PlayTest : public testing::Test
{
protected:
    void Begin(std::string const& text)
    {
        m_scenario = Parsed(text);
        m_play.emplace(m_scenario, [this](std::size_t step) {
            std::string words;
            for (std::string const& word : m_scenario.steps.at(step).verb) {
                words += (words.empty() ? "" : " ") + word;
            }
            m_performed.push_back(words);
        });
        m_play->Advance(0);
    }

    /// "Met: seen after 1 s: MuteAudio"
    std::string Of(std::size_t step) const
    {
        constexpr char const* states[] = {"Waiting", "Open", "Met", "Unmet", "Failed"};
        Outcome const& outcome = m_play->Of(step);
        return states[static_cast<int>(outcome.state)] + (outcome.seen.empty() ? "" : ": " + outcome.seen);
    }

    Scenario m_scenario;
    std::optional<Play> m_play;
    std::vector<std::string> m_performed;
};

TEST_F(PlayTest, RunsStepsByTimeAndThenInOrder)
{
    Begin("3 c\n1 a\n3 d\n2 b");
    EXPECT_EQ(m_play->Next(), 1);
    m_play->Advance(0.999);
    EXPECT_THAT(m_performed, IsEmpty());
    m_play->Advance(2.5);
    EXPECT_THAT(m_performed, ElementsAre("a", "b"));
    EXPECT_EQ(m_play->Next(), 3);
    EXPECT_FALSE(m_play->IsOver());
    m_play->Advance(3);
    EXPECT_THAT(m_performed, ElementsAre("a", "b", "c", "d"));
    EXPECT_EQ(m_play->Next(), std::nullopt);
    EXPECT_TRUE(m_play->IsOver());
    EXPECT_FALSE(m_play->HasFailed());
}

TEST_F(PlayTest, RunsAStepOnceAfterItsRequest)
{
    Begin("after MuteAudio onoff=1 a\nafter MuteAudio b");
    m_play->OnRequest({"MuteAudio", {{"onoff", "0"}}}, 1);
    EXPECT_THAT(m_performed, ElementsAre("b"));
    m_play->OnRequest({"MuteAudio", {{"onoff", "1"}}}, 2);
    m_play->OnRequest({"MuteAudio", {{"onoff", "1"}}}, 3);
    EXPECT_THAT(m_performed, ElementsAre("b", "a"));
    EXPECT_TRUE(m_play->IsOver());
}

TEST_F(PlayTest, RunsNoStepTwiceWhenTheTimeGoesBack)
{
    Begin("1 a\n5 b");
    m_play->Advance(2);
    m_play->Advance(0.5);
    m_play->Advance(5);
    EXPECT_THAT(m_performed, ElementsAre("a", "b"));
}

TEST_F(PlayTest, AnExpectationIsMetByARequestInItsTime)
{
    Begin("2 expect MuteAudio onoff=1 within 3");
    m_play->OnRequest({"MuteAudio", {{"onoff", "1"}}}, 1); // too early
    EXPECT_EQ(Of(0), "Waiting");
    m_play->Advance(2);
    EXPECT_EQ(Of(0), "Open");
    EXPECT_EQ(m_play->Next(), 5);
    m_play->OnRequest({"MuteAudio", {{"onoff", "1"}}}, 3.25);
    EXPECT_EQ(Of(0), "Met: seen after 1.25 s: MuteAudio onoff=1");
    EXPECT_TRUE(m_play->IsOver());
    EXPECT_FALSE(m_play->HasFailed());
}

TEST_F(PlayTest, SimilarOrLateRequestsDoNotMeetAnExpectation)
{
    Begin("expect MuteAudio onoff=1 within 3");
    m_play->OnRequest({"GetSTCCount", {}}, 0.5);
    m_play->OnRequest({"MuteAudio", {{"onoff", "0"}}}, 1);
    m_play->OnRequest({"MuteAudio", {{"onoff", "1"}}}, 3.5);
    EXPECT_EQ(Of(0), "Unmet: not seen within 3 s; instead MuteAudio onoff=0 after 1 s");
    EXPECT_TRUE(m_play->HasFailed());
}

TEST_F(PlayTest, AnExpectationReportsTheNumberOfOtherRequests)
{
    Begin("expect MuteAudio within 1\nexpect MuteVideo within 2\nexpect SetAppID within 3");
    m_play->Advance(1);
    m_play->OnRequest({"GetSTCCount", {}}, 1.5);
    m_play->Advance(2);
    m_play->OnRequest({"GetSTCCount", {}}, 2.5);
    m_play->Advance(3);
    EXPECT_EQ(Of(0), "Unmet: not seen within 1 s; no request came");
    EXPECT_EQ(Of(1), "Unmet: not seen within 2 s; 1 other request came");
    EXPECT_EQ(Of(2), "Unmet: not seen within 3 s; 2 other requests came");
}

TEST_F(PlayTest, ReportsAnUnwantedRequest)
{
    Begin("expect no MuteAudio for 2\nexpect no MuteVideo for 2");
    m_play->OnRequest({"MuteAudio", {{"onoff", "1"}}}, 0.5);
    m_play->Advance(2);
    EXPECT_EQ(Of(0), "Unmet: seen after 0.5 s: MuteAudio onoff=1");
    EXPECT_EQ(Of(1), "Met: not seen for 2 s");
}

TEST_F(PlayTest, ARequestDoesNotMeetTheExpectationThatItBegins)
{
    Begin("after MuteAudio expect MuteAudio within 2\nafter MuteVideo expect no MuteVideo for 2");
    m_play->OnRequest({"MuteAudio", {}}, 1);
    m_play->OnRequest({"MuteVideo", {}}, 1);
    EXPECT_EQ(Of(0), "Open");
    m_play->OnRequest({"MuteAudio", {}}, 2);
    m_play->Advance(3);
    EXPECT_EQ(Of(0), "Met: seen after 1 s: MuteAudio");
    EXPECT_EQ(Of(1), "Met: not seen for 2 s");
}

TEST_F(PlayTest, TheEndDecidesOpenExpectations)
{
    Begin("expect MuteAudio within 9\nexpect no MuteVideo for 9\n8 expect SetAppID within 1\n8 expect no "
          "SetAppID for 1\n"
          "after SetAppID a\n8 b");
    m_play->Advance(0);
    m_play->End(2.5, "the command ended");
    EXPECT_EQ(Of(0), "Unmet: not seen before the command ended, 2.5 s later; no request came");
    EXPECT_EQ(Of(1), "Met: not seen before the command ended, 2.5 s later");
    EXPECT_EQ(Of(2), "Unmet: never began: the command ended at second 2.5");
    EXPECT_EQ(Of(3), "Unmet: never began: the command ended at second 2.5");
    EXPECT_EQ(Of(4), "Waiting");
    EXPECT_EQ(Of(5), "Waiting");
    EXPECT_TRUE(m_play->HasFailed());
}

TEST_F(PlayTest, ARefusedVerbFails)
{
    Begin("1 a");
    m_play->Advance(1);
    EXPECT_FALSE(m_play->HasFailed());
    m_play->Fail(0, "there is no audio track 9: use 0 to 1");
    EXPECT_EQ(Of(0), "Failed: there is no audio track 9: use 0 to 1");
    EXPECT_TRUE(m_play->HasFailed());
}

} // namespace
} // namespace zviptv::sim
