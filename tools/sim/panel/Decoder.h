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

/// An ffmpeg that reads a transport stream from a pipe. It is killed when this ends, and when the simulator
/// does, however that ends. Lives on the thread whose default main context calls back.
class Decoder
{
public:
    /// @param arguments after the input, up to the output, which is standard output
    /// @param onBytes gets what ffmpeg has written
    /// @param onEnd is called when it has ended, as the last; it must not destroy the decoder
    /// @throws std::system_error when ffmpeg cannot be run
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

/// A pipe that holds as much as it may. The first end is for reading. @throws std::system_error
std::pair<FileHandle, FileHandle> MakeLargePipe();

} // namespace zviptv::sim
