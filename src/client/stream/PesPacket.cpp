// SPDX-License-Identifier: MIT
#include <zviptv/client/PesPacket.h>

#include "mpegts/PesHeader.h"

#include <utility>

namespace zviptv {

PesPacket::PesPacket(PesKind kind, std::uint16_t pid, std::shared_ptr<void const> owner, ByteView data)
    : m_owner(std::move(owner)), m_data(data), m_kind(kind), m_pid(pid)
{
    auto const header = ParsePesHeader(data);
    if (header && header->isWhole) {
        m_hasHeader = true;
        m_streamId = header->streamId;
        m_length = header->length;
        m_pts = header->pts;
        m_dts = header->dts;
        m_payload = header->payload;
    }
}

} // namespace zviptv
