// SPDX-License-Identifier: MIT
#include "MediaKinds.h"

#include <algorithm>
#include <cmath>

namespace zviptv::sim {

namespace {

using Words = std::vector<std::string>;

Words Joined(std::initializer_list<Words> parts)
{
    Words all;
    for (Words const& part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

/// ffmpeg examines little of the input: the streams are known, and a viewer waits.
Words Input()
{
    return {"-nostdin", "-fflags", "+discardcorrupt", "-probesize", "1000000", "-analyzeduration",
            "500000",   "-f",      "mpegts"};
}

/// The size of the scaled picture, "640:360".
std::string SizeOf(Json::Value const& content)
{
    constexpr double widest = 960;
    constexpr double usual = 360;
    double const height = content.get("height", usual).asDouble();
    double const aspectHeight = content.get("aspectHeight", 0).asDouble();
    double const aspect = aspectHeight > 0 ? content["aspectWidth"].asDouble() / aspectHeight
                                           : content.get("width", usual * 16 / 9).asDouble() / height;
    auto const even = [](double size) { return std::to_string(std::max(2L, 2 * std::lround(size / 2))); };
    double const width = std::min(widest, height * aspect);
    return even(width) + ":" + even(width / aspect);
}

Words PictureArguments(Json::Value const& content)
{
    std::string const size = SizeOf(content);
    std::string const video = "[0:v:0]scale=" + size + ",setsar=1";
    std::string const rate = "fps=25/2";
    std::string graph = video + "," + rate;
    Json::Value const& subtitle = content["subtitle"];
    if (!subtitle.isNull()) {
        // Of a still picture there may be one frame, which overlay leaves out without a second one.
        std::string const twice = ",tpad=stop_mode=clone:stop=1";
        graph = video + twice + "[video];[0:s:0]scale=" + size +
                "[text];[video][text]overlay=eof_action=pass," + rate;
    }
    bool const isTeletext = subtitle["kind"] == "teletext";
    return Joined({Input(),
                   {"-threads", "2", "-thread_type", "slice"},
                   isTeletext ? Words{"-txt_page", subtitle["page"].asString()} : Words{},
                   {"-i", "pipe:0", "-filter_complex", graph, "-an", "-fps_mode", "passthrough", "-c:v",
                    "mjpeg", "-q:v", "4", "-f", "mjpeg", "-flush_packets", "1", "pipe:1"}});
}

Words SoundArguments(Json::Value const& /*content*/)
{
    return Joined({Input(),
                   {"-i", "pipe:0", "-vn", "-map", "0:a:0", "-ac", "2", "-ar", "48000", "-c:a", "pcm_s16le",
                    "-f", "s16le", "-flush_packets", "1", "pipe:1"}});
}

/// Takes complete pairs of samples.
std::string TakeSamples(std::string& bytes)
{
    constexpr std::size_t pair = 4;
    std::size_t const size = bytes.size() / pair * pair;
    std::string const samples = bytes.substr(0, size);
    bytes.erase(0, size);
    return samples;
}

unsigned ByteAt(std::string const& bytes, std::size_t at)
{
    return static_cast<unsigned char>(bytes[at]);
}

} // namespace

/// Segments contain their length. The picture's data, which follow the last segment, have only an end
/// marker.
std::string TakeJpeg(std::string& bytes)
{
    constexpr unsigned startOfScan = 0xDA;
    std::size_t const begin = bytes.find("\xFF\xD8");
    if (begin == std::string::npos) {
        return {};
    }
    std::size_t at = begin + 2;
    while (at + 4 <= bytes.size()) {
        unsigned const marker = ByteAt(bytes, at + 1);
        at += 2 + (ByteAt(bytes, at + 2) << 8) + ByteAt(bytes, at + 3);
        if (marker != startOfScan) {
            continue;
        }
        std::size_t const end = at < bytes.size() ? bytes.find("\xFF\xD9", at) : std::string::npos;
        if (end == std::string::npos) {
            return {};
        }
        std::string picture = bytes.substr(begin, end + 2 - begin);
        bytes.erase(0, end + 2);
        return picture;
    }
    return {};
}

MediaStream::Kind PictureKind()
{
    return {"picture", PictureArguments, TakeJpeg, 1};
}

MediaStream::Kind SoundKind()
{
    constexpr unsigned depth = 25;
    return {"sound", SoundArguments, TakeSamples, depth};
}

} // namespace zviptv::sim
