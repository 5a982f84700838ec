// SPDX-License-Identifier: MIT
#include "stream/TsWriter.h"

#include "stream/TsPacket.h"

namespace zviptv::sim {

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint16_t PatPid = 0;
constexpr std::uint16_t PmtPid = 0x1FFE;
constexpr std::uint8_t PatTable = 0;
constexpr std::uint8_t PmtTable = 2;
constexpr std::uint16_t ProgrammeNumber = 1;
constexpr std::size_t HeadSize = 4;
constexpr std::size_t CrcSize = 4;

void AddU16(Bytes& out, unsigned value)
{
    out.push_back(static_cast<std::uint8_t>(value >> 8));
    out.push_back(static_cast<std::uint8_t>(value));
}

std::uint32_t Crc(ByteView bytes)
{
    constexpr std::uint32_t polynomial = 0x04C11DB7;
    constexpr std::uint32_t top = 0x80000000;
    std::uint32_t crc = 0xFFFFFFFF;
    for (std::uint8_t const byte : bytes) {
        crc ^= std::uint32_t{byte} << 24;
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc & top) != 0 ? (crc << 1) ^ polynomial : crc << 1;
        }
    }
    return crc;
}

/// With the bits that are reserved set.
unsigned Pid(std::uint16_t pid)
{
    return 0xE000U | pid;
}

unsigned Length(std::size_t size)
{
    return 0xF000U | static_cast<unsigned>(size);
}

} // namespace

void TsWriter::AddTables(Bytes& out, std::vector<Stream> const& streams)
{
    Bytes pat;
    AddU16(pat, ProgrammeNumber);
    AddU16(pat, Pid(PmtPid));
    AddSection(out, PatPid, PatTable, pat);
    Bytes pmt;
    AddU16(pmt, Pid(streams.empty() ? NullPid : streams.front().pid));
    AddU16(pmt, Length(0));
    for (Stream const& stream : streams) {
        pmt.push_back(stream.streamType);
        AddU16(pmt, Pid(stream.pid));
        AddU16(pmt, Length(stream.descriptors.size()));
        pmt.insert(pmt.end(), stream.descriptors.begin(), stream.descriptors.end());
    }
    AddSection(out, PmtPid, PmtTable, pmt);
}

/// Version 0, the only section of its table. Both tables have the number 1: of the stream, and of the
/// programme.
void TsWriter::AddSection(Bytes& out, std::uint16_t pid, std::uint8_t table, Bytes const& body)
{
    constexpr std::size_t afterLength = 5;
    constexpr unsigned sectionSyntax = 0xB000;
    constexpr std::uint8_t current = 0xC1;
    Bytes unit{0, table}; // the section begins at once
    AddU16(unit, sectionSyntax | static_cast<unsigned>(afterLength + body.size() + CrcSize));
    AddU16(unit, ProgrammeNumber);
    unit.insert(unit.end(), {current, 0, 0});
    unit.insert(unit.end(), body.begin(), body.end());
    std::uint32_t const crc = Crc(ByteView(unit).Part(1));
    AddU16(unit, crc >> 16);
    AddU16(unit, crc & 0xFFFF);
    AddUnit(out, pid, unit);
}

void TsWriter::AddPes(Bytes& out, std::uint16_t pid, ByteView pes)
{
    AddUnit(out, pid, pes);
}

/// An adaptation field fills the last packet up.
void TsWriter::AddUnit(Bytes& out, std::uint16_t pid, ByteView unit)
{
    constexpr std::size_t room = TsPacketSize - HeadSize;
    constexpr unsigned unitStart = 0x4000;
    constexpr unsigned payloadOnly = 0x10;
    constexpr unsigned withField = 0x30;
    for (std::size_t at = 0; at < unit.Size();) {
        ByteView const part = unit.Part(at, room);
        std::size_t const filler = room - part.Size();
        std::uint8_t& counter = m_counters[pid];
        out.push_back(TsSyncByte);
        AddU16(out, (at == 0 ? unitStart : 0) | pid);
        out.push_back(static_cast<std::uint8_t>((filler > 0 ? withField : payloadOnly) | counter));
        counter = (counter + 1) & 0xF;
        if (filler > 0) {
            out.push_back(static_cast<std::uint8_t>(filler - 1));
        }
        if (filler > 1) {
            out.push_back(0);
            out.insert(out.end(), filler - 2, 0xFF);
        }
        out.insert(out.end(), part.begin(), part.end());
        at += part.Size();
    }
}

} // namespace zviptv::sim
