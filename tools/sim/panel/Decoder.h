// SPDX-License-Identifier: MIT
#pragma once

#include "input/LoopSource.h"
#include "process/FileHandle.h"
#include "process/Process.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace zviptv::sim {

/// An ffmpeg process that reads a transport stream from a pipe. It is killed when this object or the
/// simulator ends, even if the simulator is killed. For the thread whose default main context calls back.
class Decoder
{
public:
    /// @param arguments after the input, up to the output, which is standard output
    /// @param onBytes receives the output of ffmpeg
    /// @param onEnd is called last, when ffmpeg has ended; it must not destroy the decoder
    /// @throws std::system_error if ffmpeg cannot be run
    Decoder(std::vector<std::string> const& arguments, FileHandle input,
            std::function<void(std::string const& bytes)> onBytes, std::function<void()> onEnd);

private:
    void Read();

    std::function<void(std::string const&)> m_onBytes;
    std::function<void()> m_onEnd;
    FileHandle m_output;
    std::optional<Process> m_process;
    LoopSource m_reading;
};

/// A pipe with the largest allowed buffer. The first end is for reading. @throws std::system_error
std::pair<FileHandle, FileHandle> MakeLargePipe();

} // namespace zviptv::sim
