// SPDX-License-Identifier: MIT
#pragma once

#include "stream/AudioFormat.h"

namespace zviptv::sim {

/// The frame of AC-3 or E-AC-3 that begins with the first byte; nothing when none does.
std::optional<AudioFrame> ParseAc3Frame(ByteView bytes);

} // namespace zviptv::sim
