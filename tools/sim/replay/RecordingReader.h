// SPDX-License-Identifier: MIT
#pragma once

#include "Recording.h"

#include <memory>
#include <string>

namespace zviptv::sim {

/// Reads a capture file for replay. A file that is damaged or cut is used up to there, with a warning.
/// @throws std::runtime_error with a line for the user if it has nothing to replay
std::unique_ptr<Recording> ReadRecording(std::string const& path);

} // namespace zviptv::sim
