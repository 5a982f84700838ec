// SPDX-License-Identifier: MIT
#pragma once

#include "Recording.h"

#include <memory>
#include <string>

namespace zviptv::sim {

/// Reads a capture file for replay. A damaged or truncated file is used up to the damage, with a warning.
/// @throws std::runtime_error with a line for the user if it contains nothing to replay
std::unique_ptr<Recording> ReadRecording(std::string const& path);

} // namespace zviptv::sim
