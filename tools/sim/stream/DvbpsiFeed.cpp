#include "stream/DvbpsiFeed.h"

#include "stream/DvbpsiHeaders.h"
#include "stream/TsPacket.h"

#include <new>

namespace zviptv::sim {

void DvbpsiCloser::operator()(dvbpsi_t* handle) const noexcept
{
    if (dvbpsi_decoder_present(handle))
        detach(handle);
    dvbpsi_delete(handle);
}

DvbpsiHandle NewDvbpsiHandle(void (*detach)(dvbpsi_t*))
{
    DvbpsiHandle handle(dvbpsi_new(nullptr, DVBPSI_MSG_NONE), {detach});
    if (!handle)
        throw std::bad_alloc();
    return handle;
}

/// True for a repetition. Forgets the table so far when this section does not belong to it.
bool DvbpsiFeed::IsKnown(ByteView section)
{
    std::uint32_t const identity = (section.U32(3) & 0xFFFFFF00u) | section[7];
    std::uint32_t const crc = section.U32(section.Size() - 4);
    auto const seen = m_seen.find(section[6]);
    if (m_handle && identity == m_identity && seen != m_seen.end() && seen->second == crc)
        return true;
    if (!m_handle || identity != m_identity || seen != m_seen.end()) {
        m_handle = m_open();
        m_seen.clear();
        m_identity = identity;
    }
    m_seen[section[6]] = crc;
    return false;
}

/// Wraps the section into packets again, the form that libdvbpsi takes.
void DvbpsiFeed::Send(ByteView section)
{
    for (bool first = true; !section.Empty(); first = false) {
        TsBytes packet;
        packet.fill(0xFF);
        std::size_t const head = first ? 5 : 4; // with a pointer field in the first
        ByteView const piece = section.Part(0, packet.size() - head);
        packet[0] = TsSyncByte;
        packet[1] = first ? 0x40 : 0x00;
        packet[2] = 0x00;
        packet[3] = static_cast<std::uint8_t>(0x10 | m_counter);
        packet[4] = 0x00;
        std::copy(piece.begin(), piece.end(), packet.begin() + head);
        m_counter = (m_counter + 1) & 0x0F;
        dvbpsi_packet_push(m_handle.get(), packet.data());
        section = section.Part(piece.Size());
    }
}

void DvbpsiFeed::Push(ByteView section)
{
    if (!IsKnown(section))
        Send(section);
}

} // namespace zviptv::sim
