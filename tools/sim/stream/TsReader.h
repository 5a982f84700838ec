// SPDX-License-Identifier: MIT
#pragma once

#include "stream/TsPacket.h"

#include <cstdio>
#include <memory>
#include <string>

namespace zviptv::sim {

/// Reads the packets of a file, through a small buffer.
///
/// Packets may be 188 bytes apart, 192 (four bytes of time stamp before each) or 204 (sixteen bytes of
/// parity behind each). Bytes between packets that are not in step are skipped. Not thread-safe.
class TsReader : public PacketSource
{
public:
    struct FileCloser
    {
        void operator()(std::FILE* file) const noexcept { std::fclose(file); }
    };
    using File = std::unique_ptr<std::FILE, FileCloser>;

    /// @throws StreamError "cannot open X: reason", "cannot read X: reason", or
    ///         "X holds no transport stream: no sync byte 0x47 at a 188-byte distance"
    explicit TsReader(std::string const& path);

    /// Reads an open file that can seek; `name` stands for it in error texts.
    TsReader(File file, std::string name);

    bool Read(TsBytes& packet) override;
    void Rewind() override;

    /// Distance from packet to packet: 188, 192 or 204.
    std::size_t PacketDistance() const { return m_distance; }

    /// Bytes skipped so far because they were out of step, in all passes together.
    std::uint64_t SkippedBytes() const { return m_skipped; }

private:
    /// Packets that follow one another in step.
    struct Run
    {
        std::size_t syncs = 0;
        bool atEnd = false; ///< the file ended before SyncsWanted were seen
        bool exact = false; ///< and it ended where a packet ends
    };

    bool Have(std::size_t count);
    Run FollowSyncs(std::size_t offset, std::size_t distance);
    bool IsStart(std::size_t offset, std::size_t distance);
    bool FindDistance();
    bool Resynchronise();

    File m_file;
    std::string m_name;
    std::vector<std::uint8_t> m_buffer;
    std::size_t m_begin = 0;
    std::size_t m_end = 0;
    std::size_t m_distance = TsPacketSize;
    std::uint64_t m_skipped = 0;
};

} // namespace zviptv::sim
