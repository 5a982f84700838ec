// SPDX-License-Identifier: MIT
#pragma once

#include "stream/AudioFormat.h"

namespace zviptv::sim {

/// The frame that begins with the first byte; nullopt if there is none.
std::optional<AudioFrame> ParseMpegAudioFrame(ByteView bytes);

} // namespace zviptv::sim
