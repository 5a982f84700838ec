// SPDX-License-Identifier: MIT
#include "MadeFile.h"
#include "Remote.h"

namespace zviptv::test {
namespace {

/// A stream of two programmes that ffmpeg makes of the sample (audio eng and deu) and of the stream with
/// other tracks (audio fra, spa and ita).
class Programmes : public ControlTest
{
protected:
    void Begin()
    {
        std::string const path =
            MadeFile({"ffmpeg", "-nostdin", "-v", "error", "-i", ZVIPTV_SAMPLE_FILE, "-i",
                      ZVIPTV_OTHER_TRACKS, "-map", "0", "-map", "1", "-c", "copy", "-program",
                      "program_num=1:title=One:st=0:st=1:st=2:st=3:st=4:st=5", "-program",
                      "program_num=2:title=Two:st=6:st=7:st=8:st=9"},
                     "two.ts");
        StartControlled(
            {"--loop", "--guide", ZVIPTV_SAMPLE_GUIDE, "--time", "1774735200", "--rating-limit", "17"}, path);
        for (char const* const type : {"PLAYERCONTROL", "BROADCASTDATA", "IPGUTIL", "IPTVDATASUBSCRIBER"}) {
            m_application.Announce(type);
        }
    }

    std::string Ask(std::string const& type, std::initializer_list<TextEntry> entries, std::string const& key)
    {
        return m_application.Ask(type, entries).Value(key);
    }

    std::string AskPlayer(char const* function, char const* key)
    {
        return Ask("PLAYERCONTROL", {{"functionname", function}}, key);
    }

    std::string Data(char const* function, char const* key)
    {
        return Ask("BROADCASTDATA", {{"functionname", function}}, key);
    }

    /// Language and PID, as they are in the record.
    std::string Audio(char const* index)
    {
        std::string const record =
            Ask("BROADCASTDATA", {{"functionname", "GetAudio"}, {"index", index}}, "audio");
        return record.substr(0, 3) + record.substr(8, 2);
    }

    std::string PresentProgramme()
    {
        return Ask("IPGUTIL", {{"functionname", "GetPresentProgram"}, {"inID", "1"}}, "data");
    }

    Application m_application;
};

/// The table of the page with the answers after another programme was selected, row by row. While the clock
/// is paused, no data of the new programme arrives.
TEST_F(Programmes, ChangeTheAnswersOfAConnectedApplication)
{
    Begin();
    EXPECT_EQ(m_remote->Get("Programmes"), "[(uint32 1, 'One'), (2, 'Two')]");
    EXPECT_EQ(m_remote->Get("Programme"), "uint32 1");
    ASSERT_TRUE(WaitUntil([this] { return AskPlayer("GetResolution", "result_internal") == "1"; }, Patience));
    ASSERT_TRUE(WaitUntil([this] { return AskPlayer("GetFirstPTS", "result_internal") == "1"; }, Patience));
    EXPECT_EQ(Data("SizeOfAudio", "size"), "2");
    EXPECT_EQ(Audio("1"), std::string("ued\2\1", 5)); // deu, PID 0x102
    EXPECT_EQ(Data("SizeOfHybridSBT", "size"), "3");
    Ask("PLAYERCONTROL", {{"functionname", "SetCurrentAudioByIndex"}, {"index", "1"}}, "result_internal");
    std::string const guide = PresentProgramme();
    EXPECT_THAT(guide, testing::HasSubstr("Cellar Door"));
    EXPECT_EQ(Data("GetRatingLockState", "lockState"), "0"); // from 17 years

    ASSERT_EQ(m_remote->Call("Pause"), Done);
    std::string const stc = AskPlayer("GetSTCCount", "stcCount");
    ASSERT_EQ(m_remote->Call("SelectProgramme", "(2,)"), Done);
    EXPECT_EQ(m_remote->Get("Programme"), "uint32 2");
    EXPECT_EQ(AskPlayer("GetSourceState", "sourcestate"), "2");
    EXPECT_EQ(Data("SizeOfAudio", "size"), "3");
    EXPECT_EQ(Audio("0"), std::string("arf\7\1", 5)); // fra, PID 0x107
    EXPECT_EQ(Audio("2"), std::string("ati\t\1", 5)); // ita, PID 0x109
    EXPECT_EQ(Data("SizeOfHybridSBT", "size"), "0");
    EXPECT_EQ(Data("GetCurrentAudioInfo", "index"), "0");
    EXPECT_EQ(AskPlayer("GetSTCCount", "stcCount"), stc);
    EXPECT_EQ(AskPlayer("GetFirstPTS", "result_internal"), "0");
    EXPECT_EQ(AskPlayer("GetResolution", "result_internal"), "0");
    EXPECT_EQ(PresentProgramme(), guide);
    EXPECT_EQ(Data("GetRatingLockState", "lockState"), "1"); // from 18 years

    ASSERT_EQ(m_remote->Call("Play"), Done);
    EXPECT_TRUE(WaitUntil([this] { return AskPlayer("GetFirstPTS", "result_internal") == "1"; }, Patience));
    EXPECT_TRUE(WaitUntil([this] { return AskPlayer("GetResolution", "result_internal") == "1"; }, Patience));
    EXPECT_EQ(m_remote->Get("Resolution"),
              "{'width': <uint32 160>, 'height': <uint32 90>, 'frameRateNumerator': <uint32 25>, "
              "'frameRateDenominator': <uint32 1>, 'interlaced': <false>}");
}

TEST_F(Programmes, ChangeThePacketsOfASubscriber)
{
    Begin();
    Ask("IPTVDATASUBSCRIBER", {{"functionname", "requestPESCB"}, {"on", "1"}}, "result_internal");
    ASSERT_TRUE(m_application.WaitForPackets("257", 1));
    EXPECT_EQ(m_application.Packets("263"), std::vector<std::string>());
    ASSERT_EQ(m_remote->Call("SelectProgramme", "(2,)"), Done);
    ASSERT_TRUE(m_application.WaitForPackets("263", 1)); // fra
    std::size_t const before = m_application.Packets("257").size();
    ASSERT_TRUE(m_application.WaitForPackets("263", 4));
    EXPECT_EQ(m_application.Packets("257").size(), before);
    ASSERT_EQ(m_remote->Call("SelectProgramme", "(1,)"), Done);
    EXPECT_TRUE(m_application.WaitForPackets("257", before + 1));
}

/// Each programme has its clock, so that the file's duration is measured again.
TEST_F(Programmes, HaveTheirDuration)
{
    Begin();
    ASSERT_TRUE(WaitUntil([this] { return m_remote->Number("Duration") > 0; }, Patience));
    double const first = m_remote->Number("Duration");
    ASSERT_EQ(m_remote->Call("SelectProgramme", "(2,)"), Done);
    EXPECT_TRUE(WaitUntil(
        [&] {
            double const second = m_remote->Number("Duration");
            return second > 0 && second != first;
        },
        Patience));
}

TEST_F(Programmes, AreListedWhenAnotherNumberIsRefused)
{
    Begin();
    EXPECT_EQ(m_remote->Call("SelectProgramme", "(3,)"),
              std::string(Invalid) + "the input has no programme 3: use 1, 2");
}

} // namespace
} // namespace zviptv::test
