// SPDX-License-Identifier: MIT
#pragma once

#include "TapStreams.h"
#include "input/LoopSource.h"
#include "mpegts/TsWriter.h"
#include "process/FileHandle.h"
#include "stream/Event.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace zviptv::sim {

/// Writes some streams of the programme that is played into a pipe, as a transport stream, without waiting
/// for the reader. Lives on the thread whose default main context calls back.
class TapFeed
{
public:
    /// With more bytes pending, the reader is given up.
    static constexpr std::size_t MaxPending = std::size_t{24} * 1024 * 1024;

    /// The first of `streams` sets the time. Takes over the descriptor.
    TapFeed(FileHandle pipe, std::vector<TsWriter::Stream> const& streams);
    TapFeed(TapFeed const&) = delete;
    TapFeed& operator=(TapFeed const&) = delete;

    /// Writes the packet if it is of these streams. False if the feed has to end: nobody reads, or the time
    /// jumps.
    bool Add(PesPacket const& pes);

    /// Nobody reads any more.
    bool IsBroken() const;

    /// Takes no more packets; closes the pipe once everything is written.
    void Finish();
    bool HasFinished() const { return m_isFinishing && m_pending.empty(); }

private:
    void Write();

    FileHandle m_pipe;
    std::vector<std::uint16_t> m_pids; ///< the first one sets the time
    TsWriter m_writer;
    std::vector<std::uint8_t> m_pending;
    LoopSource m_writing; ///< while something is pending
    JumpWatch m_time;
    bool m_isBroken = false;
    bool m_isFinishing = false;
};

} // namespace zviptv::sim
