// SPDX-License-Identifier: MIT
#include "stream/PesAssembler.h"

namespace zviptv::sim {

namespace {

constexpr std::size_t PrefixSize = 3;
constexpr std::size_t PesHeadSize = 6;

/// Size of the whole packet by its header; 0 for an unspecified length.
std::size_t AnnouncedSize(ByteView head)
{
    std::size_t const length = head.U16(4);
    return length == 0 ? 0 : PesHeadSize + length;
}

bool BeginsLikePes(ByteView bytes)
{
    return bytes.U16(0) == 0 && (bytes.Size() < PrefixSize || bytes[2] == 1);
}

} // namespace

void PesAssembler::Drop()
{
    m_open = false;
    m_bytes = Pes();
}

void PesAssembler::Abandon(std::uint64_t& counter)
{
    if (m_open) {
        ++counter;
    }
    Drop();
}

void PesAssembler::Restart()
{
    Drop();
    m_continuity.Forget();
}

PesAssembler::Pes PesAssembler::HandOut()
{
    ++m_counters.delivered;
    Pes whole = std::move(m_bytes);
    Drop();
    return whole;
}

void PesAssembler::Append(ByteView payload, std::vector<Pes>& done)
{
    m_bytes.insert(m_bytes.end(), payload.begin(), payload.end());
    if (!BeginsLikePes(m_bytes)) {
        return Abandon(m_counters.headless);
    }
    if (m_bytes.size() < PesHeadSize) {
        return;
    }
    std::size_t const announced = AnnouncedSize(m_bytes);
    if ((announced ? announced : m_bytes.size()) > m_limit) {
        return Abandon(m_counters.oversized);
    }
    if (announced == 0 || m_bytes.size() < announced) {
        return;
    }
    m_bytes.resize(announced);
    done.push_back(HandOut());
}

std::optional<PesAssembler::Pes> PesAssembler::Flush()
{
    if (!m_open) {
        return std::nullopt;
    }
    if (m_bytes.size() >= PesHeadSize && AnnouncedSize(m_bytes) == 0) {
        return HandOut();
    }
    Abandon(m_counters.truncated);
    return std::nullopt;
}

std::vector<PesAssembler::Pes> PesAssembler::Push(TsPacket const& packet)
{
    std::vector<Pes> done;
    if (packet.transportError) {
        Abandon(m_counters.damaged);
        return done;
    }
    Continuity const order = m_continuity.Check(packet);
    if (!packet.hasPayload) {
        return done;
    }
    if (order == Continuity::Duplicate) {
        ++m_counters.duplicatePackets;
        return done;
    }
    if (order == Continuity::Gap) {
        Abandon(m_counters.damaged);
    }
    if (packet.scrambled) {
        ++m_counters.scrambledPackets;
        Abandon(m_counters.damaged);
        return done;
    }
    if (packet.unitStart) {
        if (auto last = Flush()) {
            done.push_back(std::move(*last));
        }
        m_open = true;
    }
    if (m_open) {
        Append(packet.payload, done);
    }
    return done;
}

} // namespace zviptv::sim
