#include "guide/GuideBuilder.h"

#include "guide/GuideSchedule.h"

#include <algorithm>

namespace zviptv::sim {

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
