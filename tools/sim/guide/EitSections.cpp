#include "guide/EitSections.h"

namespace zviptv::sim {

namespace {

constexpr std::size_t HeadSize = 3; // table id and length
constexpr std::size_t LeastSize = 8 + 4;
constexpr std::uint8_t Stuffing = 0xFF;

std::size_t SectionSize(ByteView head)
{
    return HeadSize + (head.U16(1) & 0x0FFFu);
}

/// CRC-32 of ISO/IEC 13818-1 annex A; 0 over a section that ends with its own CRC.
std::uint32_t Crc32(ByteView bytes)
{
    std::uint32_t crc = 0xFFFFFFFF;
    for (std::uint8_t const byte : bytes) {
        crc ^= std::uint32_t{byte} << 24;
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc << 1) ^ ((crc & 0x80000000) ? 0x04C11DB7u : 0u);
    }
    return crc;
}

} // namespace

bool IsSoundEitSection(ByteView section)
{
    bool const sized = section.Size() >= LeastSize && section.Size() <= MaxEitSection &&
                       section.Size() == SectionSize(section);
    return sized && (section[1] & 0x80) != 0 && Crc32(section) == 0;
}

/// Completes the open section; returns what lies behind it.
ByteView EitSections::GoOn(ByteView bytes, Sections& done)
{
    while (!m_open.empty() && !bytes.Empty()) {
        std::size_t const wanted = m_open.size() < HeadSize ? HeadSize : SectionSize(m_open);
        ByteView const piece = bytes.Part(0, wanted - m_open.size());
        m_open.insert(m_open.end(), piece.begin(), piece.end());
        bytes = bytes.Part(piece.Size());
        if (m_open.size() < HeadSize || m_open.size() < SectionSize(m_open))
            continue;
        if (IsSoundEitSection(m_open))
            done.push_back(std::move(m_open));
        m_open.clear();
    }
    return bytes;
}

/// Sections that begin here, one behind the other, until stuffing or the packet's end.
void EitSections::Begin(ByteView bytes, Sections& done)
{
    while (!bytes.Empty() && bytes[0] != Stuffing) {
        m_open.assign(1, bytes[0]);
        bytes = GoOn(bytes.Part(1), done);
    }
}

EitSections::Sections EitSections::Push(TsPacket const& packet)
{
    Sections done;
    if (packet.transportError) {
        m_open.clear();
        m_continuity.Forget();
        return done;
    }
    Continuity const order = m_continuity.Check(packet);
    if (!packet.hasPayload || order == Continuity::Duplicate)
        return done;
    if (order == Continuity::Gap || packet.scrambled)
        m_open.clear();
    if (packet.scrambled)
        return done;
    if (!packet.unitStart) {
        GoOn(packet.payload, done);
        return done;
    }
    std::size_t const pointer = packet.payload[0];
    GoOn(packet.payload.Part(1, pointer), done);
    m_open.clear();
    Begin(packet.payload.Part(1 + pointer), done);
    return done;
}

} // namespace zviptv::sim
