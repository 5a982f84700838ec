#include "guide/GuideBuilder.h"

#include "guide/GuideSchedule.h"

#include <algorithm>
#include <limits>
#include <numeric>
#include <stdexcept>

namespace zviptv::sim {

namespace {

constexpr std::size_t MaxLanguageSize = 35;
constexpr std::size_t MaxTextItems = std::numeric_limits<std::uint32_t>::max();

} // namespace

GuideBuilder::GuideBuilder()
{
    m_data.languages.push_back(0);
    m_languageNumbers.emplace("", 0);
}

std::uint32_t GuideBuilder::ChannelNumber(std::string const& id)
{
    auto const [known, isNew] = m_channelNumbers.emplace(id, m_channels.size());
    if (isNew)
        m_channels.push_back({id, {}});
    return known->second;
}

void GuideBuilder::AddChannel(GuideChannel channel)
{
    auto& names = m_channels[ChannelNumber(channel.id)].names;
    std::move(channel.names.begin(), channel.names.end(), std::back_inserter(names));
}

/// Absurdly long ones, and those beyond what the number can count, are "none".
std::uint16_t GuideBuilder::LanguageNumber(std::string const& language)
{
    auto const known = m_languageNumbers.find(language);
    if (known != m_languageNumbers.end())
        return known->second;
    std::size_t const number = m_data.languages.size();
    if (language.size() > MaxLanguageSize || number > std::numeric_limits<std::uint16_t>::max())
        return 0;
    m_data.languages.push_back(m_data.pool.Add(language));
    return m_languageNumbers[language] = static_cast<std::uint16_t>(number);
}

void GuideBuilder::AddTexts(ProgrammeDraft const& draft)
{
    std::size_t const count = std::min(draft.texts.size(), MaxTexts);
    if (m_data.texts.size() + count > MaxTextItems)
        throw std::length_error("the guide holds too many texts");
    std::for_each_n(draft.texts.begin(), count, [this](ProgrammeDraft::Text const& text) {
        m_data.texts.push_back({m_interner.Add(text.text), LanguageNumber(text.language), text.field});
    });
}

void GuideBuilder::AddProgramme(ProgrammeDraft const& draft)
{
    GuideEntry entry;
    entry.eventId = draft.eventId;
    entry.service = ChannelNumber(draft.channel);
    entry.start = draft.start;
    entry.duration = draft.stop > draft.start ? draft.stop - draft.start : 0;
    entry.firstText = static_cast<std::uint32_t>(m_data.texts.size());
    AddTexts(draft);
    entry.textCount = static_cast<std::uint32_t>(m_data.texts.size() - entry.firstText);
    m_data.entries.push_back(entry);
}

/// The services, by id; returns the service of every channel.
std::vector<std::uint32_t> GuideBuilder::MakeServices(ServiceNames const& serviceNames,
                                                      GuideWarnings& warnings)
{
    auto const ids = AssignServiceNumbers(m_channels, serviceNames, warnings);
    std::vector<std::uint32_t> order(ids.size());
    std::iota(order.begin(), order.end(), 0u);
    std::sort(order.begin(), order.end(), [&ids](auto left, auto right) { return ids[left] < ids[right]; });

    std::vector<std::uint32_t> serviceOf(ids.size());
    for (std::uint32_t const channel : order) {
        serviceOf[channel] = static_cast<std::uint32_t>(m_data.services.size());
        auto const& names = m_channels[channel].names;
        m_data.services.push_back({ids[channel], names.empty() ? 0 : m_interner.Add(names.front()), 0, 0});
    }
    return serviceOf;
}

void GuideBuilder::IndexServices()
{
    for (std::size_t at = m_data.entries.size(); at-- > 0;) {
        GuideService& service = m_data.services[m_data.entries[at].service];
        service.first = static_cast<std::uint32_t>(at);
        ++service.count;
    }
}

void GuideBuilder::IndexEvents()
{
    m_data.byEvent.resize(m_data.entries.size());
    std::iota(m_data.byEvent.begin(), m_data.byEvent.end(), 0u);
    std::sort(m_data.byEvent.begin(), m_data.byEvent.end(), [this](std::uint32_t left, std::uint32_t right) {
        return std::pair(m_data.entries[left].eventId, left) <
               std::pair(m_data.entries[right].eventId, right);
    });
}

std::shared_ptr<Guide const> GuideBuilder::Build(ServiceNames const& serviceNames, GuideWarnings& warnings)
{
    auto const serviceOf = MakeServices(serviceNames, warnings);
    for (GuideEntry& entry : m_data.entries)
        entry.service = serviceOf[entry.service];
    OrderSchedule(m_data, warnings);
    IndexServices();
    IndexEvents();
    return std::make_shared<Guide const>(std::move(m_data));
}

} // namespace zviptv::sim
