#pragma once

#include "stream/ByteView.h"

#include <string>

namespace zviptv::sim {

/// Text of EN 300 468 annex A as UTF-8, in all its character tables that iconv has. Line breaks become
/// blanks, emphasis is dropped. Text that is invalid in its table is read as far as it is ASCII, the rest
/// becomes '?'.
std::string DecodeDvbText(ByteView text);

} // namespace zviptv::sim
