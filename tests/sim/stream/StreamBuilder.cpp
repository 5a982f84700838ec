// SPDX-License-Identifier: MIT
#include "StreamBuilder.h"

#include <algorithm>

namespace zviptv::test {

namespace {

void Put16(Bytes& bytes, unsigned value)
{
    bytes.push_back(Low(value >> 8));
    bytes.push_back(Low(value));
}

/// Bit by bit, as the standard draws it.
std::uint32_t Crc(Bytes const& bytes)
{
    std::uint32_t crc = 0xFFFFFFFF;
    for (std::uint8_t byte : bytes) {
        for (int bit = 7; bit >= 0; --bit) {
            bool const in = (byte >> bit) & 1;
            bool const out = (crc >> 31) & 1;
            crc <<= 1;
            if (in != out) {
                crc ^= 0x04C11DB7;
            }
        }
    }
    return crc;
}

Bytes AdaptationField(PacketParts const& parts)
{
    std::size_t const room = 184 - parts.payload.size();
    bool const needed = parts.pcr || parts.discontinuity || room > 0;
    if (!needed) {
        return {};
    }
    Bytes field{Low(room - 1)};
    if (room == 1) {
        return field;
    }
    field.push_back(Low((parts.discontinuity ? 0x80u : 0u) | (parts.pcr ? 0x10u : 0u)));
    if (parts.pcr) {
        std::uint64_t const base = *parts.pcr / 300;
        std::uint64_t const extension = *parts.pcr % 300;
        field.push_back(Low(base >> 25));
        field.push_back(Low(base >> 17));
        field.push_back(Low(base >> 9));
        field.push_back(Low(base >> 1));
        field.push_back(Low(((base & 1) << 7) | 0x7E | (extension >> 8)));
        field.push_back(Low(extension));
    }
    field.resize(room, 0xFF);
    return field;
}

void PutStamp(Bytes& bytes, unsigned mark, std::uint64_t stamp)
{
    bytes.push_back(Low((mark << 4) | ((stamp >> 29) & 0x0E) | 1));
    bytes.push_back(Low(stamp >> 22));
    bytes.push_back(Low(((stamp >> 14) & 0xFE) | 1));
    bytes.push_back(Low(stamp >> 7));
    bytes.push_back(Low((stamp << 1) | 1));
}

} // namespace

Bytes operator+(Bytes left, Bytes const& right)
{
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

Bytes Noise(std::size_t count, unsigned seed)
{
    Bytes bytes;
    std::uint32_t state = seed * 2654435761u + 12345u;
    while (bytes.size() < count) {
        state = state * 1664525u + 1013904223u;
        bytes.push_back(Low(state >> 24));
    }
    return bytes;
}

Bytes MakePacket(PacketParts const& parts)
{
    Bytes const field = AdaptationField(parts);
    Bytes packet{0x47};
    packet.push_back(Low((parts.error ? 0x80u : 0u) | (parts.start ? 0x40u : 0u) | (parts.pid >> 8)));
    packet.push_back(Low(parts.pid));
    packet.push_back(Low((parts.scrambled ? 0x80u : 0u) | (field.empty() ? 0u : 0x20u) |
                         (parts.payload.empty() ? 0u : 0x10u) | (parts.counter & 0x0Fu)));
    return packet + field + parts.payload;
}

Bytes MakeSection(std::uint8_t tableId, std::uint16_t extension, std::uint8_t version, Bytes const& body,
                  std::uint8_t number, std::uint8_t last, bool current)
{
    Bytes section{tableId};
    Put16(section, 0xB000u | static_cast<unsigned>(body.size() + 9));
    Put16(section, extension);
    section.push_back(Low(0xC0u | (unsigned{version} << 1) | (current ? 1u : 0u)));
    section.push_back(number);
    section.push_back(last);
    section = section + body;
    std::uint32_t const crc = Crc(section);
    Put16(section, crc >> 16);
    Put16(section, crc & 0xFFFF);
    return section;
}

Bytes MakePat(std::vector<std::pair<std::uint16_t, std::uint16_t>> const& programmes, std::uint8_t version)
{
    Bytes body;
    for (auto const& [number, pid] : programmes) {
        Put16(body, number);
        Put16(body, 0xE000u | pid);
    }
    return MakeSection(0x00, 0x0001, version, body);
}

Bytes MakePmt(std::uint16_t programme, std::uint16_t pcrPid, std::vector<PmtStream> const& streams,
              std::uint8_t version, Bytes const& descriptors)
{
    Bytes body;
    Put16(body, 0xE000u | pcrPid);
    Put16(body, 0xF000u | static_cast<unsigned>(descriptors.size()));
    body = body + descriptors;
    for (PmtStream const& stream : streams) {
        body.push_back(stream.type);
        Put16(body, 0xE000u | stream.pid);
        Put16(body, 0xF000u | static_cast<unsigned>(stream.descriptors.size()));
        body = body + stream.descriptors;
    }
    return MakeSection(0x02, programme, version, body);
}

Bytes MakeSdt(std::uint16_t service, std::string const& name, std::uint8_t version)
{
    Bytes const text(name.begin(), name.end());
    Bytes const descriptor = Bytes{0x48, Low(text.size() + 5), 0x01, 2, 'Z', 'V', Low(text.size())} + text;
    Bytes body{0xFF, 0x01, 0xFF};
    Put16(body, service);
    body.push_back(0xFC);
    Put16(body, 0x8000u | static_cast<unsigned>(descriptor.size()));
    return MakeSection(0x42, 1, version, body + descriptor);
}

Bytes MakePes(std::optional<std::uint64_t> pts, Bytes const& payload, bool open,
              std::optional<std::uint64_t> dts, std::uint8_t streamId)
{
    Bytes options;
    if (pts) {
        PutStamp(options, dts ? 3 : 2, *pts);
    }
    if (dts) {
        PutStamp(options, 1, *dts);
    }
    Bytes pes{0x00, 0x00, 0x01, streamId};
    Put16(pes, open ? 0 : static_cast<unsigned>(3 + options.size() + payload.size()));
    pes.push_back(0x80);
    pes.push_back(dts ? 0xC0 : pts ? 0x80 : 0x00);
    pes.push_back(Low(options.size()));
    return pes + options + payload;
}

StreamBuilder& StreamBuilder::Packet(PacketParts parts)
{
    std::uint8_t& counter = m_counters[parts.pid];
    if (!parts.payload.empty()) {
        parts.counter = counter++;
    }
    m_stream = std::move(m_stream) + MakePacket(parts);
    return *this;
}

StreamBuilder& StreamBuilder::Unit(std::uint16_t pid, Bytes const& unit)
{
    for (std::size_t at = 0; at < unit.size(); at += 184) {
        PacketParts parts;
        parts.pid = pid;
        parts.start = at == 0;
        auto const begin = unit.begin() + static_cast<std::ptrdiff_t>(at);
        parts.payload.assign(
            begin, begin + static_cast<std::ptrdiff_t>(std::min<std::size_t>(184, unit.size() - at)));
        Packet(parts);
    }
    return *this;
}

StreamBuilder& StreamBuilder::Section(std::uint16_t pid, Bytes const& section)
{
    Bytes unit = Bytes{0x00} + section; // pointer field
    unit.resize((unit.size() + 183) / 184 * 184, 0xFF);
    return Unit(pid, unit);
}

StreamBuilder& StreamBuilder::Pes(std::uint16_t pid, Bytes const& pes)
{
    return Unit(pid, pes);
}

StreamBuilder& StreamBuilder::Pcr(std::uint16_t pid, std::uint64_t pcr, bool discontinuity)
{
    PacketParts parts;
    parts.pid = pid;
    parts.pcr = pcr;
    parts.discontinuity = discontinuity;
    return Packet(parts);
}

StreamBuilder& StreamBuilder::Null(std::size_t count)
{
    for (; count > 0; --count) {
        PacketParts parts;
        parts.pid = 0x1FFF;
        parts.payload = Bytes(184, 0x00);
        Packet(parts);
    }
    return *this;
}

} // namespace zviptv::test
