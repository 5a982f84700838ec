// SPDX-License-Identifier: MIT
#pragma once

#include "FileHandle.h"

#include <chrono>
#include <string>

namespace zviptv {

/// A pipe between this process and a child.
class Pipe
{
public:
    /// @throws std::system_error
    Pipe();

    // A program that is started inherits neither end.
    int ReadEnd() const { return m_read.Get(); }
    int WriteEnd() const { return m_write.Get(); }

    /// Closes the end for writing. Call it when the child has its copy; otherwise the end of the child is not
    /// noticed.
    void CloseWriteEnd() { m_write.Reset(); }

    /// The first line that arrives; empty if the pipe ends or the time is over before.
    std::string ReadLine(std::chrono::milliseconds timeout);

private:
    FileHandle m_read;
    FileHandle m_write;
};

} // namespace zviptv
