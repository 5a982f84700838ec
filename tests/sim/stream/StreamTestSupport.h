// SPDX-License-Identifier: MIT
#pragma once

#include "StreamBuilder.h"

#include "stream/Demux.h"

#include <cstring>

namespace zviptv::test {

/// A stream in memory.
class MemorySource : public sim::PacketSource
{
public:
    explicit MemorySource(Bytes stream) : m_stream(std::move(stream)) {}

    bool Read(TsBytes& packet) override
    {
        if (m_at + packet.size() > m_stream.size()) {
            return false;
        }
        std::memcpy(packet.data(), m_stream.data() + m_at, packet.size());
        m_at += packet.size();
        return true;
    }

    void Rewind() override { m_at = 0; }

private:
    Bytes m_stream;
    std::size_t m_at = 0;
};

/// The bytes of one packet; it must outlive what is parsed from it.
inline TsBytes ToTsBytes(Bytes const& bytes)
{
    TsBytes packet{};
    std::copy_n(bytes.begin(), std::min(bytes.size(), packet.size()), packet.begin());
    return packet;
}

/// Hands packet after packet of a stream to `use`.
template <typename Use>
void ForEachPacket(Bytes const& stream, Use use)
{
    MemorySource source(stream);
    TsBytes bytes;
    while (source.Read(bytes)) {
        if (auto const packet = ParseTsPacket(bytes)) {
            use(*packet);
        }
    }
}

inline std::unique_ptr<sim::PacketSource> InMemory(Bytes stream)
{
    return std::make_unique<MemorySource>(std::move(stream));
}

/// All events up to the end of the stream, but those that only tell the time.
inline std::vector<sim::Event> Drain(sim::Demux& demux)
{
    std::vector<sim::Event> events;
    while (auto event = demux.Next()) {
        if (event->type != sim::EventType::Clock) {
            events.push_back(std::move(*event));
        }
    }
    return events;
}

/// The times of all events that contain only a time, up to the end of the stream.
inline std::vector<sim::ClockPoint> DrainClock(sim::Demux& demux)
{
    std::vector<sim::ClockPoint> points;
    while (auto event = demux.Next()) {
        if (event->type == sim::EventType::Clock) {
            points.push_back(event->at);
        }
    }
    return points;
}

/// Null for an event of another type.
inline sim::PesPacket const* AsPes(sim::Event const& event)
{
    return event.type == sim::EventType::Pes ? &event.pes : nullptr;
}

/// The PES packets of one PID, in order.
inline std::vector<Bytes> PesOf(std::vector<sim::Event> const& events, std::uint16_t pid)
{
    std::vector<Bytes> packets;
    for (sim::Event const& event : events) {
        if (auto const* pes = AsPes(event); pes && pes->pid == pid) {
            packets.push_back(pes->bytes);
        }
    }
    return packets;
}

} // namespace zviptv::test
