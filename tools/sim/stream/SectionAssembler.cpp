// SPDX-License-Identifier: MIT
#include "stream/SectionAssembler.h"

#include "mpegts/Crc32.h"

namespace zviptv::sim {

namespace {

constexpr std::size_t ShortHeadSize = 3; // table id and length
constexpr std::uint8_t Stuffing = 0xFF;

std::size_t SectionSize(ByteView head)
{
    return ShortHeadSize + (head.U16(1) & 0x0FFFu);
}

} // namespace

bool IsValidSection(ByteView section, SectionRules const& rules)
{
    bool const sized = section.Size() >= SectionHeadSize + SectionCrcSize &&
                       section.Size() <= rules.largest && section.Size() == SectionSize(section);
    bool const versioned = sized && (section[1] & 0x80) != 0;
    bool const numbered = versioned && (section[6] <= section[7] || !rules.numbersAreTight);
    return numbered && Crc32(section) == 0;
}

void SectionAssembler::Drop()
{
    m_open = false;
    m_bytes.clear();
}

void SectionAssembler::Reset()
{
    Drop();
    m_continuity.Forget();
}

std::size_t SectionAssembler::Wanted() const
{
    return m_bytes.size() < ShortHeadSize ? ShortHeadSize : SectionSize(m_bytes);
}

/// Continues the unfinished section; bytes after its end are dropped.
void SectionAssembler::Append(ByteView bytes, Sections& done)
{
    while (m_open && !bytes.Empty()) {
        ByteView const piece = bytes.Part(0, Wanted() - m_bytes.size());
        m_bytes.insert(m_bytes.end(), piece.begin(), piece.end());
        bytes = bytes.Part(piece.Size());
        if (m_bytes.size() < ShortHeadSize || m_bytes.size() < Wanted()) {
            continue;
        }
        if (IsValidSection(m_bytes, m_rules)) {
            done.push_back(m_bytes);
        } else {
            ++m_damaged;
        }
        Drop();
    }
}

/// Reads the sections that begin here, one after another, until stuffing or the end of the packet.
void SectionAssembler::Start(ByteView bytes, Sections& done)
{
    while (!bytes.Empty() && bytes[0] != Stuffing) {
        Drop();
        m_open = true;
        std::size_t const size = bytes.Size() < ShortHeadSize ? bytes.Size() : SectionSize(bytes);
        Append(bytes.Part(0, size), done);
        bytes = bytes.Part(size);
    }
}

SectionAssembler::Sections SectionAssembler::Push(TsPacket const& packet)
{
    Sections done;
    if (packet.transportError) {
        Reset();
        return done;
    }
    Continuity const order = m_continuity.Check(packet);
    if (!packet.hasPayload || order == Continuity::Duplicate) {
        return done;
    }
    if (order == Continuity::Gap || packet.scrambled) {
        Drop();
    }
    if (packet.scrambled) {
        return done;
    }
    if (!packet.unitStart) {
        Append(packet.payload, done);
        return done;
    }
    std::size_t const pointer = packet.payload[0];
    Append(packet.payload.Part(1, pointer), done);
    Drop();
    Start(packet.payload.Part(1 + pointer), done);
    return done;
}

} // namespace zviptv::sim
