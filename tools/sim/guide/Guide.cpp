// SPDX-License-Identifier: MIT
#include "guide/Guide.h"

#include <algorithm>

namespace zviptv::sim {

namespace {

/// Position of the service's first entry for which `isBefore` is false.
template <typename IsBefore>
std::uint32_t Partition(GuideService const& service, IsBefore isBefore)
{
    auto const begin = service.entries.begin();
    auto const found = std::partition_point(begin, service.entries.end(), isBefore);
    return service.first + static_cast<std::uint32_t>(found - begin);
}

} // namespace

Guide::Guide(std::vector<GuideService> services) : m_services(std::move(services))
{
    std::uint32_t position = 0;
    for (GuideService& service : m_services) {
        service.first = position;
        for (GuideEntry const& entry : service.entries) {
            m_byEvent.emplace_back(entry.eventId, position++);
        }
    }
    std::sort(m_byEvent.begin(), m_byEvent.end());
}

GuideService const& Guide::ServiceAt(std::uint32_t position) const
{
    return *std::partition_point(m_services.begin(), m_services.end(),
                                 [=](GuideService const& service) { return service.End() <= position; });
}

GuideEntry const& Guide::At(std::uint32_t position) const
{
    GuideService const& service = ServiceAt(position);
    return service.entries[position - service.first];
}

GuideService const* Guide::FindService(std::uint64_t serviceId) const
{
    auto const found =
        std::lower_bound(m_services.begin(), m_services.end(), serviceId,
                         [](GuideService const& service, std::uint64_t id) { return service.id < id; });
    return found != m_services.end() && found->id == serviceId ? &*found : nullptr;
}

GuideRange Guide::List(std::uint64_t serviceId, std::uint32_t start, std::uint32_t duration) const
{
    GuideService const* const service = FindService(serviceId);
    if (service == nullptr || duration == 0) {
        return {};
    }
    std::uint64_t const end = std::uint64_t{start} + duration;
    auto const first = Partition(*service, [=](GuideEntry const& entry) { return entry.Stop() <= start; });
    auto const last = Partition(*service, [=](GuideEntry const& entry) { return entry.start < end; });
    return {first, last - first};
}

std::optional<std::uint32_t> Guide::Present(std::uint64_t serviceId, std::int64_t now) const
{
    GuideService const* const service = FindService(serviceId);
    if (service == nullptr || now < 0) {
        return std::nullopt;
    }
    auto const time = static_cast<std::uint64_t>(now);
    auto const position = Partition(*service, [=](GuideEntry const& entry) { return entry.Stop() <= time; });
    bool const on = position < service->End() && At(position).start <= time;
    return on ? std::optional<std::uint32_t>(position) : std::nullopt;
}

/// The first programme of the event at a position in [begin, end).
std::optional<std::uint32_t> Guide::FindEvent(std::uint32_t eventId, std::uint32_t begin,
                                              std::uint32_t end) const
{
    auto const found = std::lower_bound(m_byEvent.begin(), m_byEvent.end(), std::pair(eventId, begin));
    bool const known = found != m_byEvent.end() && found->first == eventId && found->second < end;
    return known ? std::optional<std::uint32_t>(found->second) : std::nullopt;
}

std::optional<std::uint32_t> Guide::Find(std::uint32_t eventId) const
{
    return FindEvent(eventId, 0, All().count);
}

std::optional<std::uint32_t> Guide::Find(std::uint64_t serviceId, std::uint32_t eventId) const
{
    GuideService const* const service = FindService(serviceId);
    return service != nullptr ? FindEvent(eventId, service->first, service->End()) : std::nullopt;
}

std::optional<std::uint32_t> Guide::Find(ProgrammeKey const& key) const
{
    GuideService const* const service = FindService(key.serviceId);
    if (service == nullptr) {
        return std::nullopt;
    }
    auto const& entries = service->entries;
    auto const found = std::find_if(entries.begin(), entries.end(), [&key](GuideEntry const& entry) {
        return (entry.eventId & 0xFFFF) == key.eventId &&
               (key.startTime == 0 || key.startTime == entry.start);
    });
    return found == entries.end()
               ? std::nullopt
               : std::optional(service->first + static_cast<std::uint32_t>(found - entries.begin()));
}

std::optional<std::uint32_t> Guide::Neighbour(std::uint32_t position, int steps) const
{
    GuideService const& service = ServiceAt(position);
    std::int64_t const other = std::int64_t{position} + steps;
    bool const inside = other >= service.first && other < service.End();
    return inside ? std::optional<std::uint32_t>(static_cast<std::uint32_t>(other)) : std::nullopt;
}

} // namespace zviptv::sim
