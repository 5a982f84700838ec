// SPDX-License-Identifier: MIT
/// @file
/// PES packets and caption data as the service pushes them.

#pragma once

#include <zviptv/Export.h>
#include <zviptv/client/ByteView.h>
#include <zviptv/client/Types.h>

#include <cstdint>
#include <memory>
#include <optional>

namespace zviptv {

/// One PES packet with the fields of its header.
///
/// A packet shares the bytes of the message that brought it: copying it copies no bytes, and the bytes live
/// as long as any copy. Keep a copy of the packet, not of a view, to use the bytes after a callback. Moving a
/// packet copies it: the packet that was moved from stays as it was.
///
/// Threads: a packet never changes, and may be read by several threads at once.
class ZVIPTV_API PesPacket
{
public:
    /// A packet of the given kind and PID. `data` is the whole packet, from its start code on. `owner` keeps
    /// these bytes alive; it may be null for bytes that live as long as the program.
    PesPacket(PesKind kind, std::uint16_t pid, std::shared_ptr<void const> owner, ByteView data);
    /// Shares the bytes.
    PesPacket(PesPacket const& other) = default;
    /// The same.
    PesPacket& operator=(PesPacket const& other) = default;
    ~PesPacket() = default;

    /// What the stream carries, as the service says.
    PesKind Kind() const { return m_kind; }

    /// PID of the stream, 0 to 0x1FFF.
    std::uint16_t Pid() const { return m_pid; }

    /// The whole packet with its header.
    ByteView Data() const { return m_data; }

    /// Whether the packet has a complete header of MPEG-2. Without one, StreamId() and Length() return 0,
    /// Pts() and Dts() return nothing, and the payload is empty.
    bool HasHeader() const { return m_hasHeader; }

    /// stream_id, such as 0xBD for private data and 0xE0 for the first video.
    std::uint8_t StreamId() const { return m_streamId; }

    /// PES_packet_length in bytes; 0 for a packet of open length.
    std::uint16_t Length() const { return m_length; }

    /// Presentation time stamp, 1/90000 s, 33 bits.
    std::optional<std::uint64_t> Pts() const { return m_pts; }

    /// Decoding time stamp, 1/90000 s, 33 bits; only where it differs from the PTS.
    std::optional<std::uint64_t> Dts() const { return m_dts; }

    /// The bytes after the header.
    ByteView Payload() const { return m_payload; }

private:
    std::shared_ptr<void const> m_owner;
    ByteView m_data;
    ByteView m_payload;
    std::optional<std::uint64_t> m_pts;
    std::optional<std::uint64_t> m_dts;
    PesKind m_kind;
    std::uint16_t m_pid;
    std::uint16_t m_length = 0;
    std::uint8_t m_streamId = 0;
    bool m_hasHeader = false;
};

/// One piece of caption data, which has neither PID nor time stamp. It shares its bytes as PesPacket does.
class CaptionData
{
public:
    /// Data of the given kind. `owner` keeps the bytes of `data` alive, as for PesPacket.
    CaptionData(PesKind kind, std::shared_ptr<void const> owner, ByteView data)
        : m_owner(std::move(owner)), m_data(data), m_kind(kind)
    {
    }
    /// Shares the bytes.
    CaptionData(CaptionData const& other) = default;
    /// The same.
    CaptionData& operator=(CaptionData const& other) = default;
    ~CaptionData() = default;

    /// PesKind::Teletext or PesKind::Caption, as the service says.
    PesKind Kind() const { return m_kind; }

    /// The data units of teletext subtitles (EN 300 472), each with its id and length byte, or the payload of
    /// a PES packet of ARIB captions (STD-B24), from its data identifier.
    ByteView Data() const { return m_data; }

private:
    std::shared_ptr<void const> m_owner;
    ByteView m_data;
    PesKind m_kind;
};

} // namespace zviptv
