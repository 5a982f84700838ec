// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/client/ByteView.h>

#include <optional>

namespace zviptv::sim {

/// What follows the first start code 00 00 01 whose next byte `isWanted` accepts, up to the next start code.
std::optional<ByteView> FindUnit(ByteView bytes, bool (*isWanted)(std::uint8_t));

/// The head of a NAL unit without the emulation prevention bytes; enough for any parameter set.
std::vector<std::uint8_t> Unescape(ByteView nalUnit);

} // namespace zviptv::sim
