// SPDX-License-Identifier: MIT
#pragma once

#include <cstdio>
#include <functional>
#include <string>

namespace zviptv::trace {

/// Where a capture comes from, and what happens while it is read.
struct CaptureInput
{
    std::string path;                      ///< "-" for standard input
    bool follows = false;                  ///< at the end of the file, wait for more
    std::function<void()> beforeRead = {}; ///< called whenever reading may take long; may be empty
    /// Asked when a signal has interrupted reading, and while more is awaited: true ends the file there. May
    /// be empty.
    std::function<bool()> isStopped = {};
};

/// Opens the file for reading. Null with errno set if that fails. `input` has to outlive the stream.
std::FILE* OpenCapture(CaptureInput const& input);

} // namespace zviptv::trace
