// SPDX-License-Identifier: MIT
#pragma once

#include "input/ArrivingBytes.h"
#include "input/LoopSource.h"

namespace zviptv::sim {

/// A file that is being written: it is checked repeatedly for more data, and never ends. It is played at its
/// own pace, and therefore not live. Used on the thread whose default main context calls back.
class GrowingFile : public ArrivingBytes
{
public:
    static constexpr std::chrono::milliseconds Period{100}; ///< between two checks

    /// @throws StreamError like FileBytes
    explicit GrowingFile(std::string const& path) : m_file(path) {}

    std::size_t Read(std::uint8_t* bytes, std::size_t size) override;
    bool HasEnded() const override { return false; }
    bool IsLive() const override { return false; }
    void Rewind() override { m_file.Rewind(); }
    std::string const& Name() const override { return m_file.Name(); }

private:
    FileBytes m_file;
    LoopSource m_timer; ///< runs while there is nothing to read
};

} // namespace zviptv::sim
