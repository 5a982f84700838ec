#include "output/Words.h"

#include <gmock/gmock.h>

using namespace zviptv::ctl;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

TEST(WordsTest, SmallHelpers)
{
    EXPECT_EQ("az09_", ToLower("AZ09_"));
    EXPECT_EQ("a, b", Join({"a", "b"}));
    EXPECT_EQ("", Join({}));
    EXPECT_EQ("1 packet", Counted(1, "packet"));
    EXPECT_EQ("0 packets", Counted(0, "packet"));
}

TEST(WordsTest, NearWordsComeNearestFirst)
{
    EXPECT_THAT(NearWords("pse", {"caption", "pes", "rating"}), ElementsAre("pes"));
    EXPECT_THAT(NearWords("Mute", {"UnMute", "MuteAudio", "Muted"}),
                ElementsAre("MuteAudio", "Muted", "UnMute"));
    EXPECT_THAT(NearWords("mute", {"UnMute", "Mute", "Muted"}), ElementsAre("Mute"));
    EXPECT_THAT(NearWords("GetProgrm", {"GetProgramList", "GetProgram", "GetProgram"}),
                ElementsAre("GetProgram"));
    EXPECT_THAT(NearWords("Format", {"SetAudioFormat", "GetTTX"}), ElementsAre("SetAudioFormat"));
}

TEST(WordsTest, ThreeSuggestionsAtMost)
{
    EXPECT_EQ(3U, NearWords("aaaa", {"aaab", "aaac", "aaad", "aaae"}).size());
}

TEST(WordsTest, NothingNearIsNothing)
{
    EXPECT_THAT(NearWords("qqqq", {"pes", "caption"}), IsEmpty());
    EXPECT_THAT(NearWords("", {"a"}), IsEmpty());
    EXPECT_THAT(NearWords("pes", {}), IsEmpty());
}

} // namespace
