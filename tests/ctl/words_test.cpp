// SPDX-License-Identifier: MIT
#include "output/Words.h"

#include <gmock/gmock.h>

using namespace zviptv::ctl;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

TEST(WordsTest, SmallHelpers)
{
    EXPECT_EQ(ToLower("AZ09_"), "az09_");
    EXPECT_EQ(Join({"a", "b"}), "a, b");
    EXPECT_EQ(Join({}), "");
    EXPECT_EQ(Counted(1, "packet"), "1 packet");
    EXPECT_EQ(Counted(0, "packet"), "0 packets");
}

TEST(WordsTest, SortsSimilarWordsByDistance)
{
    EXPECT_THAT(NearWords("pse", {"caption", "pes", "rating"}), ElementsAre("pes"));
    EXPECT_THAT(NearWords("Mute", {"UnMute", "MuteAudio", "Muted"}),
                ElementsAre("MuteAudio", "Muted", "UnMute"));
    EXPECT_THAT(NearWords("mute", {"UnMute", "Mute", "Muted"}), ElementsAre("Mute"));
    EXPECT_THAT(NearWords("GetProgrm", {"GetProgramList", "GetProgram", "GetProgram"}),
                ElementsAre("GetProgram"));
    EXPECT_THAT(NearWords("Format", {"SetAudioFormat", "GetTTX"}), ElementsAre("SetAudioFormat"));
}

TEST(WordsTest, GivesAtMostThreeSuggestions)
{
    EXPECT_EQ(NearWords("aaaa", {"aaab", "aaac", "aaad", "aaae"}).size(), 3U);
}

TEST(WordsTest, SuggestsNothingWithoutASimilarWord)
{
    EXPECT_THAT(NearWords("qqqq", {"pes", "caption"}), IsEmpty());
    EXPECT_THAT(NearWords("", {"a"}), IsEmpty());
    EXPECT_THAT(NearWords("pes", {}), IsEmpty());
}

} // namespace
