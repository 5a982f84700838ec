// SPDX-License-Identifier: MIT
#pragma once

#include "input/ArrivingBytes.h"
#include "input/LoopSource.h"
#include "process/FileHandle.h"

namespace zviptv::sim {

/// A FIFO, or standard input that is not a regular file. It begins with its first writer, and ends when its
/// last writer has closed it.
class PipeBytes : public ArrivingBytes
{
public:
    /// @throws StreamError "cannot open X: reason"
    static std::unique_ptr<PipeBytes> OpenFifo(std::string const& path, bool outlivesWriters);

    PipeBytes(FileHandle pipe, std::string name) : m_pipe(std::move(pipe)), m_name(std::move(name)) {}

    std::size_t Read(std::uint8_t* bytes, std::size_t size) override;
    bool HasEnded() const override { return m_hasEnded; }
    std::string const& Name() const override { return m_name; }
    void AddTo(InputCounters& counters) const override { counters.bytes = m_bytes; }

private:
    FileHandle m_pipe;
    std::string m_name;
    LoopSource m_watch; ///< runs while there is nothing to read
    bool m_hasEnded = false;
    std::uint64_t m_bytes = 0;
};

} // namespace zviptv::sim
