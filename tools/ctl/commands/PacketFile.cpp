// SPDX-License-Identifier: MIT
#include "PacketFile.h"

#include "output/Print.h"
#include "output/Words.h"

namespace zviptv::ctl {

bool PacketFile::Write(Packet const& packet)
{
    std::vector<std::uint8_t> const& data = packet.data;
    if (m_form == Form::Packets) {
        return m_file.Write(data.data(), data.size());
    }
    auto const header = ParsePesHeader(data);
    if (!header || !header->isWhole) {
        ++m_headless;
        return true;
    }
    if (m_form == Form::ElementaryStream) {
        return m_file.Write(header->payload.Data(), header->payload.Size());
    }
    auto const packets = m_stream.Pack(packet.pid.value_or(0), packet.type, *header, data);
    return m_file.Write(packets.data(), packets.size());
}

std::vector<std::string> PacketFile::Close()
{
    m_file.Close();
    std::vector<std::string> complaints;
    if (m_headless > 0) {
        complaints.push_back(Counted(m_headless, "packet") + " left out: no PES header");
    }
    for (std::uint16_t const pid : m_stream.LeftOut()) {
        complaints.push_back("PID " + ToHex(pid, 4) +
                             " left out of the transport stream: no packet shows its coding");
    }
    return complaints;
}

} // namespace zviptv::ctl
