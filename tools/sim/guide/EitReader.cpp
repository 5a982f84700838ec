// SPDX-License-Identifier: MIT
#include "guide/EitReader.h"

#include "guide/EitDescriptors.h"

namespace zviptv::sim {

namespace {

constexpr std::uint8_t PresentFollowingActual = 0x4E;
constexpr std::uint8_t FirstScheduleActual = 0x50;
constexpr std::uint8_t LastScheduleActual = 0x5F;
constexpr std::size_t HeadSize = 14; // size up to the first event
constexpr std::size_t CrcSize = 4;
constexpr std::size_t EventHeadSize = 12; // size up to the descriptors

bool IsOfActualStream(std::uint8_t tableId)
{
    return tableId == PresentFollowingActual ||
           (tableId >= FirstScheduleActual && tableId <= LastScheduleActual);
}

EitEvent ParseEvent(ByteView bytes, std::uint16_t serviceId)
{
    EitEvent event;
    event.serviceId = serviceId;
    event.eventId = bytes.U16(0);
    event.start = ParseMjdTime(bytes.Part(2, 5));
    event.duration = ParseBcdDuration(bytes.Part(7, 3));
    event.runningStatus = bytes[10] >> 5;
    event.scrambled = (bytes[10] & 0x10) != 0;
    AddEitDescriptors(bytes.Part(EventHeadSize), event);
    return event;
}

} // namespace

std::vector<EitEvent> ParseEitEvents(ByteView section)
{
    std::vector<EitEvent> events;
    if (section.Size() < HeadSize + CrcSize) {
        return events;
    }
    ByteView rest = section.Part(HeadSize, section.Size() - HeadSize - CrcSize);
    while (rest.Size() >= EventHeadSize) {
        std::size_t const size = EventHeadSize + (rest.U16(10) & 0x0FFFu);
        if (size > rest.Size()) {
            break;
        }
        events.push_back(ParseEvent(rest.Part(0, size), section.U16(3)));
        rest = rest.Part(size);
    }
    return events;
}

bool EitTable::Add(ByteView section)
{
    bool const current = (section[5] & 0x01) != 0;
    if (!IsOfActualStream(section[0]) || !current || section.Size() < HeadSize + CrcSize) {
        return false;
    }
    std::uint8_t const version = (section[5] >> 1) & 0x1F;
    std::uint32_t const crc = section.U32(section.Size() - CrcSize);
    SubtableId const id(section.U16(3), section[0]);

    ForgetOther(id, version);
    auto const subtable = m_subtables.find(id);
    Section const* const old = subtable == m_subtables.end() ? nullptr : subtable->second.Find(section[6]);
    if (old ? old->crc == crc : m_sections == MaxSections) {
        return false;
    }
    m_sections += old ? 0 : 1;
    m_subtables[id].version = version;
    m_subtables[id].sections[section[6]] = {crc, ParseEitEvents(section)};
    return true;
}

/// Drops the sections of another version.
void EitTable::ForgetOther(SubtableId id, std::uint8_t version)
{
    auto const known = m_subtables.find(id);
    if (known == m_subtables.end() || known->second.version == version) {
        return;
    }
    m_sections -= known->second.sections.size();
    m_subtables.erase(known);
}

EitTable::Section const* EitTable::Subtable::Find(std::uint8_t number) const
{
    auto const found = sections.find(number);
    return found != sections.end() ? &found->second : nullptr;
}

EitEvent const* EitTable::PresentOrFollowing(std::uint16_t serviceId, std::uint8_t number) const
{
    auto const subtable = m_subtables.find({serviceId, PresentFollowingActual});
    Section const* const section = subtable != m_subtables.end() ? subtable->second.Find(number) : nullptr;
    return section && !section->events.empty() ? &section->events.front() : nullptr;
}

std::vector<EitEvent> EitTable::Events() const
{
    std::map<std::pair<std::uint16_t, std::uint16_t>, EitEvent> events;
    for (auto const& [id, subtable] : m_subtables) { // table 0x4E comes first
        for (auto const& [number, section] : subtable.sections) {
            for (EitEvent const& event : section.events) {
                events.emplace(std::pair(event.serviceId, event.eventId), event);
            }
        }
    }
    std::vector<EitEvent> result;
    for (auto& [id, event] : events) {
        result.push_back(std::move(event));
    }
    return result;
}

bool EitReader::Push(TsPacket const& packet)
{
    if (packet.pid != Pid) {
        return false;
    }
    bool changed = false;
    for (auto const& section : m_sections.Push(packet)) {
        changed = m_table.Add(section) || changed;
    }
    return changed;
}

} // namespace zviptv::sim
