// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace zviptv::test {

using Bytes = std::vector<std::uint8_t>;

/// The lowest byte.
constexpr std::uint8_t Low(std::uint64_t value)
{
    return static_cast<std::uint8_t>(value & 0xFF);
}

/// The contents of one transport packet. An adaptation field pads a payload of less than 184 bytes.
struct PacketParts
{
    std::uint16_t pid = 0x100;
    std::uint8_t counter = 0;
    bool start = false;
    Bytes payload;
    bool error = false;
    bool scrambled = false;
    bool discontinuity = false;
    std::optional<std::uint64_t> pcr; ///< 27 MHz
};

/// The 188 bytes of the packet; without payload it is an adaptation field alone.
Bytes MakePacket(PacketParts const& parts);

/// A section with its length and CRC.
Bytes MakeSection(std::uint8_t tableId, std::uint16_t extension, std::uint8_t version, Bytes const& body,
                  std::uint8_t number = 0, std::uint8_t last = 0, bool current = true);

/// `programmes`: number and PMT PID.
Bytes MakePat(std::vector<std::pair<std::uint16_t, std::uint16_t>> const& programmes,
              std::uint8_t version = 0);

struct PmtStream
{
    std::uint8_t type = 0;
    std::uint16_t pid = 0;
    Bytes descriptors;
};

Bytes MakePmt(std::uint16_t programme, std::uint16_t pcrPid, std::vector<PmtStream> const& streams,
              std::uint8_t version = 0, Bytes const& descriptors = {});

/// A service with a name as a broadcaster codes it, of the provider "ZV".
Bytes MakeSdt(std::uint16_t service, std::string const& name, std::uint8_t version = 0);

/// A PES packet of stream id 0xBD (or another) with a PTS (and a DTS); its length is told unless `open`.
Bytes MakePes(std::optional<std::uint64_t> pts, Bytes const& payload, bool open = false,
              std::optional<std::uint64_t> dts = {}, std::uint8_t streamId = 0xBD);

/// Count bytes that differ from place to place.
Bytes Noise(std::size_t count, unsigned seed = 1);

Bytes operator+(Bytes left, Bytes const& right);

/// Writes a whole stream, counting the packets of every PID.
class StreamBuilder
{
public:
    StreamBuilder& Packet(PacketParts parts);
    StreamBuilder& Section(std::uint16_t pid, Bytes const& section);
    StreamBuilder& Pes(std::uint16_t pid, Bytes const& pes);
    StreamBuilder& Pcr(std::uint16_t pid, std::uint64_t pcr, bool discontinuity = false);
    StreamBuilder& Null(std::size_t count = 1);

    Bytes const& Stream() const { return m_stream; }
    std::size_t Packets() const { return m_stream.size() / 188; }

private:
    StreamBuilder& Unit(std::uint16_t pid, Bytes const& unit);

    std::map<std::uint16_t, std::uint8_t> m_counters;
    Bytes m_stream;
};

} // namespace zviptv::test
