// SPDX-License-Identifier: MIT
#include "stream/AudioFormat.h"

#include "mpegts/PesHeader.h"
#include "stream/AacFrame.h"
#include "stream/Ac3Frame.h"
#include "stream/MpegAudioFrame.h"

namespace zviptv::sim {

namespace {

using FrameParser = std::optional<AudioFrame> (*)(ByteView);

std::optional<AudioFrame> ParseAacFrame(ByteView bytes)
{
    auto const frame = ParseAdtsFrame(bytes);
    return frame ? frame : ParseLatmFrame(bytes);
}

FrameParser ParserOf(AudioCodec codec)
{
    switch (codec) {
    case AudioCodec::Mpeg:
        return ParseMpegAudioFrame;
    case AudioCodec::AacAdts:
        return ParseAdtsFrame;
    case AudioCodec::AacLatm:
        return ParseLatmFrame;
    case AudioCodec::Aac:
        return ParseAacFrame;
    case AudioCodec::Ac3:
    case AudioCodec::EnhancedAc3:
        return ParseAc3Frame;
    case AudioCodec::Dts:
        break;
    }
    return nullptr;
}

} // namespace

std::optional<AudioFormat> ParseAudioFormat(AudioCodec codec, ByteView pes)
{
    auto const header = ParsePesHeader(pes);
    FrameParser const parse = ParserOf(codec);
    if (!header || parse == nullptr) {
        return std::nullopt;
    }
    constexpr std::size_t Searched = 64 * 1024; // many frames
    ByteView rest = header->payload.Part(0, Searched);
    while (!rest.Empty()) {
        auto const frame = parse(rest);
        bool const isFollowed = frame && frame->size <= rest.Size() &&
                                (frame->size == rest.Size() || parse(rest.Part(frame->size)));
        if (isFollowed && frame->format) {
            return frame->format;
        }
        rest = rest.Part(isFollowed ? frame->size : 1);
    }
    return std::nullopt;
}

} // namespace zviptv::sim
