// SPDX-License-Identifier: MIT
#pragma once

#include "stream/AudioFormat.h"

namespace zviptv::sim {

/// The frame that begins with the first byte; nothing when none does.
std::optional<AudioFrame> ParseAdtsFrame(ByteView bytes);
std::optional<AudioFrame> ParseLatmFrame(ByteView bytes);

} // namespace zviptv::sim
