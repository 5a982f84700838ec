#include "stream/StreamKinds.h"

namespace zviptv::sim {

char const* NameOf(StreamKind kind)
{
    switch (kind) {
    case StreamKind::Video:
        return "video";
    case StreamKind::Audio:
        return "audio";
    case StreamKind::Teletext:
        return "teletext";
    case StreamKind::Subtitle:
        return "DVB subtitles";
    case StreamKind::AribCaption:
        return "ARIB captions";
    case StreamKind::AribSuperimpose:
        return "ARIB superimposed text";
    case StreamKind::Sections:
        return "sections";
    case StreamKind::Other:
        break;
    }
    return "other";
}

char const* NameOf(VideoCodec codec)
{
    switch (codec) {
    case VideoCodec::Mpeg1:
        return "MPEG-1";
    case VideoCodec::Mpeg2:
        return "MPEG-2";
    case VideoCodec::Mpeg4:
        return "MPEG-4";
    case VideoCodec::H264:
        return "H.264";
    case VideoCodec::Hevc:
        return "HEVC";
    }
    return "video";
}

char const* NameOf(AudioCodec codec)
{
    switch (codec) {
    case AudioCodec::Mpeg:
        return "MPEG audio";
    case AudioCodec::AacAdts:
        return "AAC (ADTS)";
    case AudioCodec::AacLatm:
        return "AAC (LATM)";
    case AudioCodec::Aac:
        return "AAC";
    case AudioCodec::Ac3:
        return "AC-3";
    case AudioCodec::EnhancedAc3:
        return "E-AC-3";
    case AudioCodec::Dts:
        return "DTS";
    }
    return "audio";
}

} // namespace zviptv::sim
