// SPDX-License-Identifier: MIT
#pragma once

#include "stream/AudioFormat.h"

namespace zviptv::sim {

/// The AC-3 or E-AC-3 frame that begins with the first byte; nullopt if there is none.
std::optional<AudioFrame> ParseAc3Frame(ByteView bytes);

} // namespace zviptv::sim
