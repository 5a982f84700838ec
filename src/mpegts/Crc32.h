// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/client/ByteView.h>

namespace zviptv {

/// CRC-32 of ISO/IEC 13818-1 annex A; 0 over a section that ends with its own CRC.
std::uint32_t Crc32(ByteView bytes);

} // namespace zviptv
