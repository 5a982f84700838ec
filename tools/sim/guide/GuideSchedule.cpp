#include "guide/GuideSchedule.h"

#include <algorithm>
#include <tuple>

namespace zviptv::sim {

namespace {

std::string NameOf(GuideService const& service, GuideEntry const& entry)
{
    return "service " + std::to_string(service.id) + ": programme " + std::to_string(entry.eventId);
}

void DropDuplicates(GuideService& service, GuideWarnings& warnings)
{
    auto const isDuplicate = [&](GuideEntry const& kept, GuideEntry const& entry) {
        bool const same = kept.start == entry.start;
        if (same) {
            warnings.Add(0, NameOf(service, entry) + " starts with programme " +
                                std::to_string(kept.eventId) + ", left out");
        }
        return same;
    };
    auto& entries = service.entries;
    entries.erase(std::unique(entries.begin(), entries.end(), isDuplicate), entries.end());
}

void FitTogether(GuideService& service, GuideWarnings& warnings)
{
    GuideEntry* before = nullptr;
    for (GuideEntry& entry : service.entries) {
        std::uint32_t const room = before != nullptr ? entry.start - before->start : 0;
        if (before != nullptr && before->duration > room) {
            warnings.Add(0, NameOf(service, *before) + " runs into programme " +
                                std::to_string(entry.eventId) + ", cut");
        }
        if (before != nullptr && (before->duration == 0 || before->duration > room)) {
            before->duration = room;
        }
        before = &entry;
    }
    if (before != nullptr && before->duration == 0) {
        before->duration = DefaultDuration;
    }
}

} // namespace

void OrderSchedule(GuideService& service, GuideWarnings& warnings)
{
    std::sort(service.entries.begin(), service.entries.end(),
              [](GuideEntry const& left, GuideEntry const& right) {
                  return std::tie(left.start, left.eventId) < std::tie(right.start, right.eventId);
              });
    DropDuplicates(service, warnings);
    FitTogether(service, warnings);
}

} // namespace zviptv::sim
