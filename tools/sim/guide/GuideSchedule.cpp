#include "guide/GuideSchedule.h"

#include <algorithm>
#include <tuple>

namespace zviptv::sim {

namespace {

std::string Name(GuideData const& data, GuideEntry const& entry)
{
    return "service " + std::to_string(data.services[entry.service].id) + ": programme " +
           std::to_string(entry.eventId);
}

void DropDuplicates(GuideData& data, GuideWarnings& warnings)
{
    auto const isDuplicate = [&](GuideEntry const& kept, GuideEntry const& entry) {
        bool const same = kept.service == entry.service && kept.start == entry.start;
        if (same)
            warnings.Add(0, Name(data, entry) + " starts with programme " + std::to_string(kept.eventId) +
                                ", left out");
        return same;
    };
    data.entries.erase(std::unique(data.entries.begin(), data.entries.end(), isDuplicate),
                       data.entries.end());
}

void FitInto(GuideData const& data, GuideEntry& entry, GuideEntry const& next, GuideWarnings& warnings)
{
    std::uint32_t const room = next.start - entry.start;
    if (entry.duration > room)
        warnings.Add(0, Name(data, entry) + " runs into programme " + std::to_string(next.eventId) + ", cut");
    if (entry.duration == 0 || entry.duration > room)
        entry.duration = room;
}

void FitTogether(GuideData& data, GuideWarnings& warnings)
{
    for (std::size_t i = 0; i < data.entries.size(); ++i) {
        GuideEntry& entry = data.entries[i];
        bool const last = i + 1 == data.entries.size() || data.entries[i + 1].service != entry.service;
        if (!last)
            FitInto(data, entry, data.entries[i + 1], warnings);
        else if (entry.duration == 0)
            entry.duration = DefaultDuration;
    }
}

} // namespace

void OrderSchedule(GuideData& data, GuideWarnings& warnings)
{
    std::sort(data.entries.begin(), data.entries.end(), [](GuideEntry const& left, GuideEntry const& right) {
        return std::tie(left.service, left.start, left.eventId) <
               std::tie(right.service, right.start, right.eventId);
    });
    DropDuplicates(data, warnings);
    FitTogether(data, warnings);
}

} // namespace zviptv::sim
