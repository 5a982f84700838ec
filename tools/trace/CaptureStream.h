// SPDX-License-Identifier: MIT
#pragma once

#include <cstdio>
#include <functional>
#include <string>

namespace zviptv::trace {

/// The source of a capture, and callbacks during the reading.
struct CaptureInput
{
    std::string path;                      ///< "-" for standard input
    bool follows = false;                  ///< whether to wait for more at the end of the file
    std::function<void()> beforeRead = {}; ///< called whenever reading may take long; may be empty
    /// Called after a signal has interrupted reading, and while waiting for more: true ends the file there.
    /// May be empty.
    std::function<bool()> isStopped = {};
};

/// Opens the file for reading. Null with errno set if that fails. `input` must outlive the stream.
std::FILE* OpenCapture(CaptureInput const& input);

} // namespace zviptv::trace
