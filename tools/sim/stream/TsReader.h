// SPDX-License-Identifier: MIT
#pragma once

#include "stream/ByteSource.h"
#include "stream/PacketSource.h"

namespace zviptv::sim {

/// Reads the packets of an input, through a small buffer.
///
/// Packets may be 188 bytes apart, 192 (four bytes of time stamp before each) or 204 (sixteen bytes of parity
/// after each). Bytes outside packets are skipped. Not thread-safe.
class TsReader : public PacketSource
{
public:
    using File = FileBytes::File;

    /// @throws StreamError "cannot open X: reason", "cannot read X: reason", or
    ///         "X is not a transport stream: no sync bytes 0x47 every 188 bytes"
    explicit TsReader(std::string const& path);

    /// Reads an open, seekable file; `name` is its name in error texts.
    TsReader(File file, std::string name);

    /// If the source has not ended, packets may begin later: then only reading throws.
    explicit TsReader(std::unique_ptr<ByteSource> bytes);

    bool Read(TsBytes& packet) override;
    void Rewind() override;
    bool HasEnded() const override { return m_bytes->HasEnded(); }
    bool IsLive() const override { return m_bytes->IsLive(); }

    /// Distance from packet to packet: 188, 192 or 204.
    std::size_t PacketDistance() const { return m_distance; }

    /// Bytes skipped so far outside packets, in all passes together.
    std::uint64_t SkippedBytes() const { return m_skipped; }

private:
    /// Packets that follow one another at a constant distance.
    struct Run
    {
        std::size_t syncs = 0;
        bool isCut = false; ///< there are no more bytes, but fewer than SyncsWanted sync bytes
        bool atEnd = false; ///< and no more bytes will follow
        bool exact = false; ///< and the file ends at the end of a packet
    };

    bool FillTo(std::size_t count);
    Run FollowSyncs(std::size_t offset, std::size_t distance);
    static bool IsStart(Run const& run, std::size_t offset, std::size_t distance);
    bool FindDistance();
    bool Resynchronise();

    std::unique_ptr<ByteSource> m_bytes;
    bool m_hasStarted = false; ///< the distance is known
    std::vector<std::uint8_t> m_buffer;
    std::size_t m_begin = 0;
    std::size_t m_end = 0;
    std::size_t m_distance = TsPacketSize;
    std::uint64_t m_skipped = 0;
};

} // namespace zviptv::sim
