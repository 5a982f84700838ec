// SPDX-License-Identifier: MIT
#include "StreamCoding.h"

#include <zviptv/IPTVTypes.h>

namespace zviptv::ctl {

namespace {

using Coding = std::optional<StreamCoding>;

/// The coding by the byte after a start code; `next` is the following byte. A picture without a sequence
/// header before it ends the search, because the numbers of its slices look like other codings.
bool IsDecisive(unsigned code, unsigned next, Coding& coding)
{
    if (code == 0x00) {
        return true;
    }
    if (code == 0xB3) { // sequence header
        coding = {0x02, {}};
    } else if (code == 0x40 && next == 0x01) { // video parameter set
        coding = {0x24, {}};
    } else if (code == 0x67 || code == 0x47 || code == 0x27) { // sequence parameter set
        coding = {0x1B, {}};
    }
    return coding.has_value();
}

/// MPEG-2, H.264 or HEVC.
Coding VideoCoding(ByteView payload)
{
    Coding coding;
    for (std::size_t i = 0; i + 4 < payload.Size(); ++i) {
        bool const isStartCode = payload[i] == 0 && payload[i + 1] == 0 && payload[i + 2] == 1;
        if (isStartCode && IsDecisive(payload[i + 3], payload[i + 4], coding)) {
            break;
        }
    }
    return coding;
}

/// AC-3 up to bit stream id 10, Enhanced AC-3 from 11.
Coding DolbyCoding(ByteView payload)
{
    for (std::size_t i = 0; i + 5 < payload.Size(); ++i) {
        if (payload[i] == 0x0B && payload[i + 1] == 0x77) {
            bool const isEnhanced = payload[i + 5] >> 3U > 10;
            return isEnhanced ? StreamCoding{0x06, {0x7A, 1, 0}} : StreamCoding{0x06, {0x6A, 1, 0}};
        }
    }
    return std::nullopt;
}

/// MPEG audio, or AAC in ADTS or LATM framing.
Coding MpegAudioCoding(ByteView payload)
{
    for (std::size_t i = 0; i + 3 < payload.Size(); ++i) {
        unsigned const first = payload[i];
        unsigned const second = payload[i + 1];
        if (first == 0x56 && (second & 0xE0U) == 0xE0U) {
            return StreamCoding{0x11, {}};
        }
        if (first != 0xFF || (second & 0xE0U) != 0xE0U || (second >> 3U & 3U) == 1) {
            continue;
        }
        if ((second & 0xF6U) == 0xF0U) {
            return StreamCoding{0x0F, {}};
        }
        bool const isFrame =
            (second >> 1U & 3U) != 0 && payload[i + 2] >> 4U != 15 && (payload[i + 2] >> 2U & 3U) != 3;
        if (isFrame) {
            bool const isMpeg1 = (second >> 3U & 3U) == 3;
            return isMpeg1 ? StreamCoding{0x03, {}} : StreamCoding{0x04, {}};
        }
    }
    return std::nullopt;
}

/// The first segment of the subtitle contains the page.
StreamCoding SubtitleCoding(ByteView payload)
{
    bool const isSegment = payload[0] == 0x20 && payload[2] == 0x0F;
    std::uint8_t const high = isSegment ? payload[4] : 0;
    std::uint8_t const low = isSegment ? payload[5] : 1;
    return {0x06, {0x59, 8, 'u', 'n', 'd', 0x10, high, low, high, low}};
}

} // namespace

std::optional<StreamCoding> CodingOf(std::int32_t pesType, PesHeader const& header)
{
    ByteView const payload = header.payload;
    switch (pesType) {
    case ZV_PES_VIDEO:
        return VideoCoding(payload);
    case ZV_PES_AUDIO:
        return header.streamId == 0xBD || header.streamId == 0xFD ? DolbyCoding(payload)
                                                                  : MpegAudioCoding(payload);
    case ZV_PES_SUBTITLE:
        return SubtitleCoding(payload);
    case ZV_PES_TELETEXT: // subtitles on page 888
        return StreamCoding{0x06, {0x56, 5, 'u', 'n', 'd', 0x10, 0x88}};
    case ZV_PES_CAPTION: // component tag and data component of captions
        return StreamCoding{0x06, {0x52, 1, 0x30, 0xFD, 3, 0x00, 0x08, 0x3D}};
    default:
        return StreamCoding{0x06, {}};
    }
}

} // namespace zviptv::ctl
