#include "guide/Guide.h"

#include <algorithm>

namespace zviptv::sim {

Guide::Guide(GuideData data) : m_data(std::move(data)) {}

GuideService const* Guide::FindService(std::uint64_t serviceId) const
{
    auto const found =
        std::lower_bound(m_data.services.begin(), m_data.services.end(), serviceId,
                         [](GuideService const& service, std::uint64_t id) { return service.id < id; });
    return found != m_data.services.end() && found->id == serviceId ? &*found : nullptr;
}

template <typename IsBefore>
std::uint32_t Guide::Partition(GuideService const& service, IsBefore isBefore) const
{
    auto const first = m_data.entries.begin() + static_cast<std::ptrdiff_t>(service.first);
    auto const last = first + static_cast<std::ptrdiff_t>(service.count);
    auto const found = std::partition_point(first, last, isBefore);
    return static_cast<std::uint32_t>(found - m_data.entries.begin());
}

GuideRange Guide::List(std::uint64_t serviceId, std::uint32_t start, std::uint32_t duration) const
{
    GuideService const* const service = FindService(serviceId);
    if (!service || duration == 0)
        return {};
    std::uint64_t const end = std::uint64_t{start} + duration;
    auto const first = Partition(*service, [=](GuideEntry const& entry) { return entry.Stop() <= start; });
    auto const last = Partition(*service, [=](GuideEntry const& entry) { return entry.start < end; });
    return {first, last - first};
}

std::optional<std::uint32_t> Guide::Present(std::uint64_t serviceId, std::int64_t now) const
{
    GuideService const* const service = FindService(serviceId);
    if (!service || now < 0)
        return std::nullopt;
    auto const time = static_cast<std::uint64_t>(now);
    auto const position = Partition(*service, [=](GuideEntry const& entry) { return entry.Stop() <= time; });
    bool const on = position < service->first + service->count && At(position).start <= time;
    return on ? std::optional<std::uint32_t>(position) : std::nullopt;
}

std::optional<std::uint32_t> Guide::Find(std::uint32_t eventId) const
{
    auto const found = std::lower_bound(
        m_data.byEvent.begin(), m_data.byEvent.end(), eventId,
        [this](std::uint32_t position, std::uint32_t id) { return At(position).eventId < id; });
    bool const known = found != m_data.byEvent.end() && At(*found).eventId == eventId;
    return known ? std::optional<std::uint32_t>(*found) : std::nullopt;
}

std::optional<std::uint32_t> Guide::Find(std::uint64_t serviceId, std::uint32_t eventId) const
{
    GuideService const* const service = FindService(serviceId);
    if (!service)
        return std::nullopt;
    auto const found =
        std::lower_bound(m_data.byEvent.begin(), m_data.byEvent.end(), std::pair(eventId, service->first),
                         [this](std::uint32_t position, auto const& id) {
                             return std::pair(At(position).eventId, position) < id;
                         });
    bool const known = found != m_data.byEvent.end() && At(*found).eventId == eventId &&
                       *found < service->first + service->count;
    return known ? std::optional<std::uint32_t>(*found) : std::nullopt;
}

std::optional<std::uint32_t> Guide::Find(ProgrammeKey const& key) const
{
    GuideService const* const service = FindService(key.serviceId);
    if (!service)
        return std::nullopt;
    auto const matches = [&key](GuideEntry const& entry) {
        return (entry.eventId & 0xFFFF) == key.eventId &&
               (key.startTime == 0 || key.startTime == entry.start);
    };
    if (key.startTime != 0) {
        auto const position =
            Partition(*service, [&key](GuideEntry const& entry) { return entry.start < key.startTime; });
        bool const found = position < service->first + service->count && matches(At(position));
        return found ? std::optional<std::uint32_t>(position) : std::nullopt;
    }
    for (std::uint32_t position = service->first; position < service->first + service->count; ++position)
        if (matches(At(position)))
            return position;
    return std::nullopt;
}

std::optional<std::uint32_t> Guide::Neighbour(std::uint32_t position, int steps) const
{
    GuideService const& service = ServiceOf(At(position));
    std::int64_t const other = std::int64_t{position} + steps;
    bool const inside = other >= service.first && other < std::int64_t{service.first} + service.count;
    return inside ? std::optional<std::uint32_t>(static_cast<std::uint32_t>(other)) : std::nullopt;
}

std::size_t Guide::KeptBytes() const
{
    return m_data.pool.KeptBytes() + m_data.texts.size() * sizeof(GuideText) +
           m_data.entries.size() * sizeof(GuideEntry) + m_data.services.size() * sizeof(GuideService) +
           m_data.languages.size() * sizeof(TextRef) + m_data.byEvent.size() * sizeof(std::uint32_t);
}

} // namespace zviptv::sim
