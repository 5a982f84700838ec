// SPDX-License-Identifier: MIT
#include "RecordingFixture.h"

namespace zviptv::test {
namespace {

using testing::HasSubstr;

Words Video(Words const& codec)
{
    Words options = {"-f", "lavfi", "-i", "testsrc=size=320x240:rate=25", "-pix_fmt", "yuv420p"};
    options.insert(options.end(), codec.begin(), codec.end());
    return options;
}

Words Audio(Words const& codec)
{
    Words options = {"-f", "lavfi", "-i", "sine=frequency=440:sample_rate=48000"};
    options.insert(options.end(), codec.begin(), codec.end());
    return options;
}

class RecordingOfACodec : public RecordingTest, public testing::WithParamInterface<GeneratedStream>
{
};

/// All frames of the stream, as elementary stream and as transport stream.
TEST_P(RecordingOfACodec, IsReadByPlayers)
{
    Make(GetParam().options);
    CtlResult const elementary = Record({"--pid", "0x100", "--es", "--out", Path("recorded.es")});
    EXPECT_EQ(elementary.code, 0) << elementary.errors;
    EXPECT_THAT(ReadFile(Path("recorded.es")).substr(0, 4),
                testing::Not(HasSubstr(std::string("\0\0\1\xE0", 4))));
    EXPECT_EQ(Probe("recorded.es", "stream=codec_name,nb_read_frames"),
              std::string(GetParam().name) + "\n" + GetParam().frames + "\n");

    CtlResult const transport = Record({"--ts", Path("recorded.ts")});
    EXPECT_EQ(transport.code, 0) << transport.errors;
    EXPECT_THAT(transport.errors, testing::Not(HasSubstr("left out")));
    std::string const facts = "stream=id,codec_name,nb_read_frames:packet=pts,dts,size";
    std::string const recorded = Probe("recorded.ts", facts);
    EXPECT_EQ(recorded, Probe("made.ts", facts));
    EXPECT_THAT(recorded, HasSubstr(std::string(GetParam().name) + "\n0x100\n" + GetParam().frames + "\n"));
}

INSTANTIATE_TEST_SUITE_P(
    Codecs, RecordingOfACodec,
    testing::Values(GeneratedStream{"h264", Video({"-c:v", "libx264", "-preset", "ultrafast"}), "50"},
                    GeneratedStream{
                        "hevc",
                        Video({"-c:v", "libx265", "-preset", "ultrafast", "-x265-params", "log-level=none"}),
                        "50"},
                    GeneratedStream{"mpeg2video", Video({"-c:v", "mpeg2video", "-bf", "2"}), "50"},
                    GeneratedStream{"mp2", Audio({"-c:a", "mp2"}), "84"},
                    GeneratedStream{"aac", Audio({"-c:a", "aac"}), "95"},
                    GeneratedStream{"aac_latm", Audio({"-c:a", "aac", "-mpegts_flags", "latm"}), "95"},
                    GeneratedStream{"ac3", Audio({"-c:a", "ac3"}), "63"},
                    GeneratedStream{"eac3", Audio({"-c:a", "eac3"}), "63"}),
    [](auto const& given) { return std::string(given.param.name); });

Words VideoWithTwoSounds()
{
    return {"-f",   "lavfi", "-i",        "testsrc=size=320x240:rate=25",
            "-f",   "lavfi", "-i",        "sine",
            "-f",   "lavfi", "-i",        "sine=frequency=880",
            "-map", "0",     "-map",      "1",
            "-map", "2",     "-c:v",      "mpeg2video",
            "-c:a", "mp2",   "-streamid", "0:256"};
}

TEST_F(RecordingTest, ATransportStreamContainsOnlyTheChosenPids)
{
    Make(VideoWithTwoSounds());
    CtlResult const all = Record({"--ts", Path("all.ts")});
    EXPECT_EQ(all.code, 0) << all.errors;
    std::string const facts = "stream=codec_name";
    EXPECT_EQ(Probe("all.ts", facts), Probe("made.ts", facts));

    CtlResult const two = RunProgram({ZVIPTV_SIM_PATH, "--quiet", "--ts", Path("made.ts"), "--wait-for", "1",
                                      "--", ZVIPTVCTL_PATH, "pes", "--pid", "0x100", "--pid", "0x102",
                                      "--count", "30", "--ts", Path("two.ts")});
    EXPECT_EQ(two.code, 0) << two.errors;
    EXPECT_THAT(two.output, testing::Not(HasSubstr("pid=0x0101")));
    EXPECT_THAT(Probe("two.ts", "stream=id"), HasSubstr("0x100\n0x102\n"));
    EXPECT_THAT(Probe("two.ts", "stream=id"), testing::Not(HasSubstr("0x101")));
}

/// With "-" they are the output, and the lines are not.
TEST_F(RecordingTest, BothMayBeWrittenToStandardOutput)
{
    Make(Audio({"-c:a", "mp2"}));
    EXPECT_EQ(Record({"--ts", "-"}).output.front(), 0x47);
    std::string const stream = Record({"--pid", "0x100", "--es", "--out", "-"}).output;
    EXPECT_EQ(stream.substr(0, 2), "\xFF\xFD");
}

} // namespace
} // namespace zviptv::test
