// SPDX-License-Identifier: MIT
#pragma once

#include "StreamBuilder.h"

namespace zviptv::test {

/// All of a file.
Bytes ReadWholeFile(std::string const& path);

/// The PES packets of a PID in a stream of 188-byte packets, told another way than the product does: the
/// payloads of the PID are put in a row first, and that row is cut at the unit starts afterwards. It knows
/// nothing of counters, so it is right for undamaged streams only.
std::vector<Bytes> ReassembleNaively(Bytes const& stream, std::uint16_t pid);

/// Every PID that occurs in the stream.
std::vector<std::uint16_t> PidsOf(Bytes const& stream);

} // namespace zviptv::test
