// SPDX-License-Identifier: MIT
#pragma once

#include "stream/Event.h"

#include <zviptv/IPTVTypes.h>

#include <optional>

namespace zviptv::sim {

/// The caption data in a PES packet: for teletext, the data units with subtitles; for ARIB captions, the
/// whole data field from its data identifier. nullopt if there is none.
std::optional<ZVCaption> CaptionIn(PesPacket const& pes);

/// The kind of an elementary stream's packets for applications.
EZVPESType TypeOf(StreamKind kind);

} // namespace zviptv::sim
