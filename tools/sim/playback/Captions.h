// SPDX-License-Identifier: MIT
#pragma once

#include "stream/Event.h"

#include <zviptv/IPTVTypes.h>

#include <optional>

namespace zviptv::sim {

/// The caption data in a PES packet: of teletext the data units that carry subtitles, of ARIB captions the
/// whole data field, from its data identifier on. Nothing when there is none.
std::optional<ZVCaption> CaptionIn(PesPacket const& pes);

/// What an elementary stream's packets are to applications.
EZVPESType TypeOf(StreamKind kind);

} // namespace zviptv::sim
