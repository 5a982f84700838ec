// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/client/ByteView.h>

#include <optional>

namespace zviptv::sim {

/// The bytes after the first start code 00 00 01 whose next byte `isWanted` accepts, up to the next start
/// code.
std::optional<ByteView> FindUnit(ByteView bytes, bool (*isWanted)(std::uint8_t));

/// The beginning of a NAL unit without the emulation prevention bytes; long enough for any parameter set.
std::vector<std::uint8_t> Unescape(ByteView nalUnit);

} // namespace zviptv::sim
