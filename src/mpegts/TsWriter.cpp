// SPDX-License-Identifier: MIT
#include "mpegts/TsWriter.h"

#include "mpegts/Crc32.h"
#include "mpegts/TsPacket.h"

namespace zviptv {

namespace {

using Bytes = TsWriter::Bytes;

constexpr std::uint16_t PatPid = 0;
constexpr std::uint8_t PatTable = 0;
constexpr std::uint8_t PmtTable = 2;
constexpr std::uint16_t ProgrammeNumber = 1;
constexpr std::size_t CrcSize = 4;
constexpr std::size_t Room = TsPacketSize - TsHeadSize;

// Adaptation field control, in the header's last byte.
constexpr unsigned PayloadOnly = 0x10;
constexpr unsigned FieldOnly = 0x20;
constexpr unsigned FieldAndPayload = 0x30;

std::uint8_t Low(std::uint64_t number)
{
    return static_cast<std::uint8_t>(number);
}

void AddU16(Bytes& out, unsigned value)
{
    out.insert(out.end(), {Low(value >> 8), Low(value)});
}

/// Sets the reserved bits.
unsigned Pid(std::uint16_t pid)
{
    return 0xE000U | pid;
}

unsigned Length(std::size_t size)
{
    return 0xF000U | static_cast<unsigned>(size);
}

void AddHead(Bytes& out, std::uint16_t pid, bool isStart, unsigned control, unsigned counter)
{
    constexpr unsigned unitStart = 0x4000;
    out.push_back(TsSyncByte);
    AddU16(out, (isStart ? unitStart : 0) | pid);
    out.push_back(Low(control | counter));
}

} // namespace

void TsWriter::AddTables(Bytes& out, std::vector<Stream> const& streams, std::uint16_t pcrPid,
                         std::uint8_t version)
{
    Bytes pat;
    AddU16(pat, ProgrammeNumber);
    AddU16(pat, Pid(PmtPid));
    AddSection(out, PatPid, PatTable, 0, pat);
    Bytes pmt;
    AddU16(pmt, Pid(pcrPid));
    AddU16(pmt, Length(0));
    for (Stream const& stream : streams) {
        pmt.push_back(stream.streamType);
        AddU16(pmt, Pid(stream.pid));
        AddU16(pmt, Length(stream.descriptors.size()));
        pmt.insert(pmt.end(), stream.descriptors.begin(), stream.descriptors.end());
    }
    AddSection(out, PmtPid, PmtTable, version, pmt);
}

/// The only section of a table. Both tables have the number 1, as the number of the stream and of the
/// programme.
void TsWriter::AddSection(Bytes& out, std::uint16_t pid, std::uint8_t table, std::uint8_t version,
                          Bytes const& body)
{
    constexpr std::size_t afterLength = 5;
    constexpr unsigned sectionSyntax = 0xB000;
    constexpr unsigned current = 0xC1;
    Bytes unit{0, table}; // pointer_field: the section begins at once
    AddU16(unit, sectionSyntax | static_cast<unsigned>(afterLength + body.size() + CrcSize));
    AddU16(unit, ProgrammeNumber);
    unit.insert(unit.end(), {Low(current | unsigned{version} << 1), 0, 0});
    unit.insert(unit.end(), body.begin(), body.end());
    std::uint32_t const crc = Crc32(ByteView(unit).Part(1));
    AddU16(unit, crc >> 16);
    AddU16(unit, crc & 0xFFFF);
    AddPes(out, pid, unit);
}

void TsWriter::AddPes(Bytes& out, std::uint16_t pid, ByteView pes)
{
    for (std::size_t done = 0; done < pes.Size();) {
        done += AddPart(out, pid, pes, done);
    }
}

/// An adaptation field fills up the last packet.
std::size_t TsWriter::AddPart(Bytes& out, std::uint16_t pid, ByteView pes, std::size_t begin)
{
    ByteView const part = pes.Part(begin, Room);
    std::size_t const filler = Room - part.Size();
    std::uint8_t& counter = m_counters[pid];
    AddHead(out, pid, begin == 0, filler > 0 ? FieldAndPayload : PayloadOnly, counter);
    counter = (counter + 1) & 0xF;
    if (filler > 0) {
        out.push_back(Low(filler - 1));
    }
    if (filler > 1) {
        out.push_back(0);
        out.insert(out.end(), filler - 2, 0xFF);
    }
    out.insert(out.end(), part.begin(), part.end());
    return part.Size();
}

void TsWriter::AddClock(Bytes& out, std::uint16_t pid, std::uint64_t clock, bool isDiscontinuous)
{
    constexpr std::uint8_t pcrFlag = 0x10;
    constexpr std::uint8_t discontinuity = 0x80;
    AddHead(out, pid, false, FieldOnly, 0);
    out.insert(out.end(), {Low(Room - 1), Low(isDiscontinuous ? pcrFlag | discontinuity : pcrFlag)});
    out.insert(out.end(), {Low(clock >> 25), Low(clock >> 17), Low(clock >> 9), Low(clock >> 1)});
    out.insert(out.end(), {Low((clock & 1) << 7 | 0x7E), 0}); // 27 MHz are not counted
    out.insert(out.end(), Room - 8, 0xFF);
}

} // namespace zviptv
