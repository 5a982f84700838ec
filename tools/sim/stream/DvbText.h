// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/client/ByteView.h>

#include <string>

namespace zviptv::sim {

/// Text of EN 300 468 annex A as UTF-8, in all its character tables that iconv has. Line breaks become
/// blanks, emphasis is dropped. Invalid characters become '?', and so do all characters except ASCII in an
/// unknown table.
std::string DecodeDvbText(ByteView text);

} // namespace zviptv::sim
