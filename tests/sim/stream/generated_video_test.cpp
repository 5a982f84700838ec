// SPDX-License-Identifier: MIT
#include "Files.h"
#include "MadeFile.h"
#include "stream/Demux.h"
#include "stream/VideoFormat.h"

#include <cstdlib>
#include <gtest/gtest.h>

using namespace zviptv::sim;
using namespace zviptv::test;

namespace {

/// The parameters of a picture for an encoder.
struct Picture
{
    char const* encoder;
    char const* size;
    char const* rate;
    char const* pixelAspect;
};

void PrintTo(Picture const& picture, std::ostream* out)
{
    *out << picture.encoder << " " << picture.size << " " << picture.rate << " " << picture.pixelAspect;
}

std::string ToText(Ratio const& ratio, char between)
{
    return std::to_string(ratio.numerator) + between + std::to_string(ratio.denominator);
}

/// In ffprobe's words.
std::string Describe(VideoFormat const& format)
{
    return "width=" + std::to_string(format.width) + "\nheight=" + std::to_string(format.height) +
           "\ndisplay_aspect_ratio=" + ToText(format.displayAspect, ':') +
           "\nr_frame_rate=" + ToText(format.frameRate, '/') + "\n";
}

std::optional<VideoFormat> FormatOf(std::string const& path)
{
    Demux demux(path);
    VideoTrack const track = demux.Current()->video.at(0);
    while (auto const event = demux.Next()) {
        if (event->type == EventType::Pes && event->pes.pid == track.pid) {
            return ParseVideoFormat(track.codec, event->pes.bytes);
        }
    }
    return std::nullopt;
}

} // namespace

class GeneratedVideo : public testing::TestWithParam<Picture>
{
};

TEST_P(GeneratedVideo, HasTheFormatThatFfprobeReads)
{
    if (std::system("command -v ffmpeg ffprobe >/dev/null") != 0) {
        GTEST_SKIP() << "ffmpeg and ffprobe make and read the stream; install the package ffmpeg";
    }
    Picture const& picture = GetParam();
    std::vector<std::string> encode{
        "ffmpeg",       "-v",
        "error",        "-nostdin",
        "-f",           "lavfi",
        "-i",           std::string("testsrc2=size=") + picture.size + ":rate=" + picture.rate,
        "-vf",          std::string("setsar=") + picture.pixelAspect,
        "-frames:v",    "5",
        "-pix_fmt",     "yuv420p",
        "-x265-params", "log-level=none",
        "-c:v",         picture.encoder};
    if (std::string(picture.encoder).rfind("libx", 0) == 0) {
        encode.insert(encode.end(), {"-preset", "ultrafast"});
    }
    encode.insert(encode.end(), {"-f", "mpegts"});
    std::string const path = MadeFile(encode, "picture.ts");
    std::string const read = ReadFile(
        MadeFile({"ffprobe", "-v", "error", "-select_streams", "v", "-show_entries",
                  "stream=width,height,r_frame_rate,display_aspect_ratio", "-of", "default=nw=1", path, "-o"},
                 "picture.txt"));
    auto const format = FormatOf(path);
    ASSERT_TRUE(format);
    EXPECT_EQ(Describe(*format), read.substr(0, read.size() / 2))
        << "ffprobe prints streams twice, by programme";
}

INSTANTIATE_TEST_SUITE_P(
    Codecs, GeneratedVideo,
    testing::Values(
        Picture{"libx264", "1280x720", "50", "1"}, Picture{"libx264", "720x576", "25", "64/45"},
        Picture{"libx264", "634x358", "24000/1001", "1"}, Picture{"libx265", "1920x1080", "25", "1"},
        Picture{"libx265", "720x480", "30000/1001", "32/27"}, Picture{"libx265", "634x358", "60", "1"},
        Picture{"mpeg2video", "720x576", "25", "64/45"}, Picture{"mpeg2video", "1280x720", "60000/1001", "1"},
        Picture{"mpeg2video", "352x480", "30000/1001", "20/11"}, Picture{"mpeg1video", "352x288", "25", "1"},
        Picture{"mpeg1video", "352x240", "30000/1001", "1"}, Picture{"mpeg1video", "640x480", "24", "1"}));
