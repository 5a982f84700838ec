// SPDX-License-Identifier: MIT
#include "guide/GuideBuilder.h"

#include <algorithm>
#include <tuple>

namespace zviptv::sim {

namespace {

/// Length in seconds of a programme without a stop and without a following programme.
constexpr std::uint32_t DefaultDuration = 30 * 60;

std::string NameOf(GuideService const& service, GuideEntry const& entry)
{
    return "service " + std::to_string(service.id) + ": programme " + std::to_string(entry.eventId);
}

void DropDuplicates(GuideService& service, GuideWarnings& warnings)
{
    auto const isDuplicate = [&](GuideEntry const& kept, GuideEntry const& entry) {
        bool const same = kept.start == entry.start;
        if (same) {
            warnings.Add(0, NameOf(service, entry) + " starts at the same time as programme " +
                                std::to_string(kept.eventId) + ", left out");
        }
        return same;
    };
    auto& entries = service.entries;
    entries.erase(std::unique(entries.begin(), entries.end(), isDuplicate), entries.end());
}

void ResolveOverlaps(GuideService& service, GuideWarnings& warnings)
{
    GuideEntry* before = nullptr;
    for (GuideEntry& entry : service.entries) {
        std::uint32_t const room = before != nullptr ? entry.start - before->start : 0;
        if (before != nullptr && before->duration > room) {
            warnings.Add(0, NameOf(service, *before) + " overlaps programme " +
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

/// Sorts the service's programmes by their start and makes sure that at most one is on at a time: of two that
/// start together, the one with the lower event id stays. A programme that overlaps the next one, or has no
/// stop, ends where the next one begins.
void OrderSchedule(GuideService& service, GuideWarnings& warnings)
{
    std::sort(service.entries.begin(), service.entries.end(),
              [](GuideEntry const& left, GuideEntry const& right) {
                  return std::tie(left.start, left.eventId) < std::tie(right.start, right.eventId);
              });
    DropDuplicates(service, warnings);
    ResolveOverlaps(service, warnings);
}

} // namespace

std::size_t GuideBuilder::ChannelNumber(std::string const& id)
{
    auto const [known, isNew] = m_numbers.emplace(id, m_channels.size());
    if (isNew) {
        m_channels.push_back({id, {}});
        m_services.emplace_back();
    }
    return known->second;
}

void GuideBuilder::AddChannel(GuideChannel channel)
{
    auto& names = m_channels[ChannelNumber(channel.id)].names;
    std::move(channel.names.begin(), channel.names.end(), std::back_inserter(names));
}

void GuideBuilder::AddProgramme(ProgrammeDraft draft)
{
    auto& entries = m_services[ChannelNumber(draft.channel)].entries;
    entries.push_back(Describe(std::move(draft)));
}

std::shared_ptr<Guide const> GuideBuilder::Build(ServiceNames const& serviceNames, GuideWarnings& warnings)
{
    auto const ids = AssignServiceNumbers(m_channels, serviceNames, warnings);
    for (std::size_t i = 0; i < ids.size(); ++i) {
        m_services[i].id = ids[i];
        m_services[i].name = m_channels[i].names.empty() ? std::string() : m_channels[i].names.front();
    }
    std::sort(m_services.begin(), m_services.end(),
              [](GuideService const& left, GuideService const& right) { return left.id < right.id; });
    for (GuideService& service : m_services) {
        OrderSchedule(service, warnings);
    }
    return std::make_shared<Guide const>(std::move(m_services));
}

} // namespace zviptv::sim
