// SPDX-License-Identifier: MIT
#include "RecordingFixture.h"
#include "StreamFixture.h"

#include "output/SubRip.h"

namespace zviptv::test {
namespace {

using testing::HasSubstr;

Caption Shown(std::uint64_t pts, std::string const& text, unsigned page = 888)
{
    Caption caption;
    caption.page = page;
    caption.pts = pts;
    if (!text.empty()) {
        caption.lines.push_back({{{text, {}, {}, false, false, false, false}}});
    }
    return caption;
}

/// The output of the program for captions that the simulator plays.
class CaptionTextTest : public RecordingTest
{
protected:
    static CtlResult Play(Words const& arguments, std::string const& stream = SAMPLE_PATH,
                          std::string const& speed = "4")
    {
        Words command = {ZVIPTV_SIM_PATH, "--quiet",    "--ts", stream, "--speed",
                         speed,           "--wait-for", "1",    "--",   ZVIPTVCTL_PATH};
        command.insert(command.end(), arguments.begin(), arguments.end());
        return RunProgram(command);
    }
};

} // namespace

TEST_F(CaptionTextTest, CaptionsHaveTimePageLanguageAndText)
{
    CtlResult const result = Play({"caption", "--text", "--count", "6"});
    EXPECT_EQ(result.code, 0) << result.errors;
    EXPECT_EQ(result.output, "00:00:02.480 teletext 888 eng: One\n"
                             "00:00:02.480 teletext 889 deu: Eins\n"
                             "00:00:02.480 caption jpn: いち\n"
                             "00:00:03.480 teletext 888 eng erased\n"
                             "00:00:03.480 teletext 889 deu erased\n"
                             "00:00:03.480 caption jpn erased\n");
}

TEST_F(CaptionTextTest, JsonHasOneObjectForEachCaption)
{
    CtlResult const result = Play({"--json", "caption", "--text", "--count", "4"});
    EXPECT_EQ(result.code, 0) << result.errors;
    EXPECT_EQ(result.output,
              R"({"kind":"teletext","languageCode":"eng","lines":["One"],"page":888,"pid":260,"pts":223200})"
              "\n"
              R"({"kind":"teletext","languageCode":"deu","lines":["Eins"],"page":889,"pid":260,"pts":223200})"
              "\n"
              R"({"kind":"caption","languageCode":"jpn","lines":["いち"],"page":null,"pid":261,"pts":223200})"
              "\n"
              R"({"kind":"teletext","languageCode":"eng","lines":[],"page":888,"pid":260,"pts":313200})"
              "\n");
}

TEST_F(CaptionTextTest, ShowsOnlyTheChosenPage)
{
    CtlResult const result = Play({"caption", "--text", "--page", "889", "--count", "3"});
    EXPECT_EQ(result.code, 0) << result.errors;
    EXPECT_EQ(result.output, "00:00:02.480 teletext 889 deu: Eins\n"
                             "00:00:03.480 teletext 889 deu erased\n"
                             "00:00:04.480 teletext 889 deu: Zwei\n");
}

TEST_F(CaptionTextTest, SubtitlesAreReadByPlayers)
{
    CtlResult const result = Play({"caption", "--srt", Path("one.srt"), "--page", "889", "--count", "10"});
    EXPECT_EQ(result.code, 0) << result.errors;
    EXPECT_THAT(result.output, HasSubstr("00:00:10.480 teletext 889 deu: Fünf\n"));
    EXPECT_EQ(ReadFile(Path("one.srt")), "1\n00:00:01,000 --> 00:00:02,000\nEins\n\n"
                                         "2\n00:00:03,000 --> 00:00:04,000\nZwei\n\n"
                                         "3\n00:00:05,000 --> 00:00:06,000\nDrei\n\n"
                                         "4\n00:00:07,000 --> 00:00:08,000\nVier\n\n"
                                         "5\n00:00:09,000 --> 00:00:10,000\nFünf\n\n");
    EXPECT_EQ(Probe("one.srt", "stream=codec_name:packet=pts_time,duration_time"),
              "1.000000\n1.000000\n3.000000\n1.000000\n5.000000\n1.000000\n7.000000\n1.000000\n"
              "9.000000\n1.000000\nsubrip\n");
}

TEST_F(CaptionTextTest, SubtitlesMayBeWrittenToStandardOutput)
{
    CtlResult const result = Play({"caption", "--srt", "-", "--page", "888", "--count", "2"});
    EXPECT_EQ(result.code, 0) << result.errors;
    EXPECT_EQ(result.output, "1\n00:00:01,000 --> 00:00:02,000\nOne\n\n");
}

TEST_F(CaptionTextTest, SubtitlesOfABroadcastHaveItsTimes)
{
    std::string const capture = std::string(ZVIPTV_MEDIA_DIR) + "/dvb-4-audio-teletext.ts";
    if (!std::filesystem::exists(capture)) {
        GTEST_SKIP() << "no capture " << capture << " (CMake variable ZVIPTV_MEDIA_DIR)";
    }
    CtlResult const result = Play({"caption", "--srt", Path("two.srt"), "--count", "4"}, capture, "20");
    EXPECT_EQ(result.code, 0) << result.errors;
    EXPECT_EQ(result.output,
              "11:54:13.682 teletext 889 fra: Un train met dix secondes / pour dépasser un point donné.\n"
              "11:54:18.682 teletext 889 fra erased\n"
              "11:54:18.842 teletext 889 fra: Comme la dame a vu le crime / par les derniers wagons,\n"
              "11:54:21.802 teletext 889 fra erased\n");
    EXPECT_EQ(ReadFile(Path("two.srt")), "1\n00:00:02,480 --> 00:00:07,480\nUn train met dix secondes\n"
                                         "pour dépasser un point donné.\n\n"
                                         "2\n00:00:07,640 --> 00:00:10,600\nComme la dame a vu le crime\n"
                                         "par les derniers wagons,\n\n");
}

TEST_F(StreamTest, UsageOfCaptionTextIsChecked)
{
    auto const error = [](Words const& arguments) {
        CtlResult const result = RunCtl(arguments);
        EXPECT_EQ(result.code, 2);
        return result.errors;
    };
    EXPECT_EQ(error({"caption", "--page", "888"}),
              "zviptvctl: --page chooses pages to show as text: add --text or --srt FILE\n");
    EXPECT_EQ(error({"caption", "--text", "--page", "99"}),
              "zviptvctl: caption --page: 99 is not a page from 100 to 899\n");
    EXPECT_THAT(error({"caption", "--text", "--page", "900"}), HasSubstr("899"));
    EXPECT_EQ(error({"caption", "--text", "--out", "file"}),
              "zviptvctl: --out writes data, --text and --srt show text: give one of them\n");
}

TEST(SubRip, CaptionsOfDifferentPagesOverlap)
{
    ctl::SubRip file;
    file.See(90000);
    EXPECT_EQ(file.Add(Shown(90000, "one", 888)), "");
    EXPECT_EQ(file.Add(Shown(135000, "two", 889)), "");
    EXPECT_EQ(file.Add(Shown(180000, "three", 888)), "1\n00:00:00,000 --> 00:00:01,000\none\n\n");
    EXPECT_EQ(file.Add(Shown(225000, "", 889)), "2\n00:00:00,500 --> 00:00:01,500\ntwo\n\n");
    file.See(90000 * 6);
    EXPECT_EQ(file.Finish(), "3\n00:00:01,000 --> 00:00:05,000\nthree\n\n");
    EXPECT_EQ(file.Finish(), "");
}

TEST(SubRip, LastCaptionIsShownForASecondAtLeast)
{
    ctl::SubRip file;
    file.Add(Shown(900000, "text"));
    EXPECT_EQ(file.Finish(), "1\n00:00:00,000 --> 00:00:01,000\ntext\n\n");
}

TEST(SubRip, TimeStampsWrapAfter33Bits)
{
    ctl::SubRip file;
    file.See((std::uint64_t{1} << 33U) - 90000);
    file.Add(Shown(0, "text"));
    EXPECT_EQ(file.Add(Shown(3600 * 90000ULL, "")), "1\n00:00:01,000 --> 01:00:01,000\ntext\n\n");
}

TEST(SubRip, TimeThatRunsBackwardsGivesNoEntry)
{
    ctl::SubRip file;
    file.See(900000);
    file.Add(Shown(1800000, "late"));
    EXPECT_EQ(file.Add(Shown(0, "early")), "") << "before the first time stamp";
    EXPECT_EQ(file.Add(Shown(990000, "")), "1\n00:00:00,000 --> 00:00:01,000\nearly\n\n");
}

} // namespace zviptv::test
