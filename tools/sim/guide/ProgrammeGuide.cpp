// SPDX-License-Identifier: MIT
#include "guide/ProgrammeGuide.h"

#include "guide/GuideJson.h"

namespace zviptv::sim {

GuideWarnings ProgrammeGuide::Load(std::string const& path, ServiceNames const& serviceNames)
{
    LoadedGuide loaded = LoadGuide(path, serviceNames);
    m_guide = std::move(loaded.guide);
    return std::move(loaded.warnings);
}

std::string ProgrammeGuide::Json(std::optional<std::uint32_t> position) const
{
    return position ? ProgrammeJson(*m_guide, *position) : std::string();
}

GuideList ProgrammeGuide::Select(std::uint64_t serviceId, std::uint32_t start, std::uint32_t duration) const
{
    return m_guide ? GuideList{m_guide, m_guide->List(serviceId, start, duration)} : GuideList();
}

std::string ProgrammeGuide::Programme(GuideList const& list, std::uint32_t index) const
{
    Guide const* const guide = list.guide ? list.guide.get() : m_guide.get();
    if (!guide) {
        return {};
    }
    GuideRange const range = list.guide ? list.range : guide->All();
    return index < range.count ? ProgrammeJson(*guide, range.first + index) : std::string();
}

std::string ProgrammeGuide::Programme(std::string const& request, int step) const
{
    auto const key = ParseProgrammeKey(request);
    if (!m_guide || !key || step < -1 || step > 1) {
        return {};
    }
    auto const position = m_guide->Find(*key);
    return position ? Json(m_guide->Neighbour(*position, step)) : std::string();
}

std::string ProgrammeGuide::Present(std::uint64_t serviceId, std::int64_t now) const
{
    return m_guide ? Json(m_guide->Present(serviceId, now)) : std::string();
}

std::string ProgrammeGuide::Find(std::uint64_t serviceId, std::uint32_t eventId) const
{
    return m_guide ? Json(m_guide->Find(serviceId, eventId)) : std::string();
}

std::string ProgrammeGuide::Rating(std::uint32_t eventId) const
{
    auto const position = m_guide ? m_guide->Find(eventId) : std::nullopt;
    return position ? RatingJson(*m_guide, *position) : std::string();
}

std::string ProgrammeGuide::Genre(std::uint32_t eventId) const
{
    auto const position = m_guide ? m_guide->Find(eventId) : std::nullopt;
    return position ? GenresJson(*m_guide, *position) : std::string();
}

std::string ProgrammeGuide::List(std::uint64_t serviceId, std::uint32_t start, std::uint32_t duration,
                                 std::size_t largest) const
{
    bool const known = m_guide && m_guide->FindService(serviceId);
    return known ? ProgrammesJson(*m_guide, m_guide->List(serviceId, start, duration), largest)
                 : std::string();
}

} // namespace zviptv::sim
