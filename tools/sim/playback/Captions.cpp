// SPDX-License-Identifier: MIT
#include "Captions.h"

#include "mpegts/DataUnits.h"
#include "mpegts/PesHeader.h"

namespace zviptv::sim {

namespace {

constexpr std::uint8_t SubtitleDataUnit = 0x03; // EN 300 472: EBU teletext subtitle data

/// The units with subtitles in a teletext data field, which begins with its data identifier.
std::vector<std::uint8_t> SubtitleUnits(ByteView field)
{
    std::vector<std::uint8_t> units;
    ForEachDataUnit(field.Part(1), [&](std::uint8_t id, ByteView /*content*/, ByteView whole) {
        if (id == SubtitleDataUnit) {
            units.insert(units.end(), whole.begin(), whole.end());
        }
    });
    return units;
}

} // namespace

EZVPESType TypeOf(StreamKind kind)
{
    switch (kind) {
    case StreamKind::Video:
        return ZV_PES_VIDEO;
    case StreamKind::Audio:
        return ZV_PES_AUDIO;
    case StreamKind::Subtitle:
        return ZV_PES_SUBTITLE;
    case StreamKind::Teletext:
        return ZV_PES_TELETEXT;
    case StreamKind::AribCaption:
    case StreamKind::AribSuperimpose:
        return ZV_PES_CAPTION;
    case StreamKind::Sections:
    case StreamKind::Other:
        break;
    }
    return ZV_PES_OTHER;
}

std::optional<ZVCaption> CaptionIn(PesPacket const& pes)
{
    EZVPESType const type = TypeOf(pes.kind);
    if (type != ZV_PES_TELETEXT && type != ZV_PES_CAPTION) {
        return std::nullopt;
    }
    std::optional<PesHeader> const header = ParsePesHeader(pes.bytes);
    if (!header) {
        return std::nullopt;
    }
    ZVCaption caption{type, {}};
    caption.data = type == ZV_PES_TELETEXT ? SubtitleUnits(header->payload) : header->payload.Copy();
    return caption.data.empty() ? std::nullopt : std::optional<ZVCaption>(std::move(caption));
}

} // namespace zviptv::sim
