#pragma once

#include "guide/GuideData.h"

#include <cstdint>
#include <optional>

namespace zviptv::sim {

/// Programmes that lie behind one another in the guide's order.
struct GuideRange
{
    std::uint32_t first = 0;
    std::uint32_t count = 0;
};

/// What an application knows of a programme that it means.
struct ProgrammeKey
{
    std::uint64_t serviceId = 0;
    std::uint16_t eventId = 0;   ///< the low 16 bits
    std::uint32_t startTime = 0; ///< 0: not known
};

/// A finished programme guide; nothing in it changes, so threads may share it. Programmes are in the order of
/// their services' ids, then of their start, and are named by their position in it.
class Guide
{
public:
    /// `data` as GuideBuilder makes it.
    explicit Guide(GuideData data);
    Guide(Guide const&) = delete;
    Guide& operator=(Guide const&) = delete;

    GuideRange All() const { return {0, static_cast<std::uint32_t>(m_data.entries.size())}; }
    GuideEntry const& At(std::uint32_t position) const { return m_data.entries[position]; }
    GuideService const& ServiceOf(GuideEntry const& entry) const { return m_data.services[entry.service]; }
    std::vector<GuideService> const& Services() const { return m_data.services; }

    /// Null when the guide has no such service.
    GuideService const* FindService(std::uint64_t serviceId) const;

    /// The service's programmes that are on at some time in [start, start + duration).
    GuideRange List(std::uint64_t serviceId, std::uint32_t start, std::uint32_t duration) const;

    /// The programme with start <= now < stop.
    std::optional<std::uint32_t> Present(std::uint64_t serviceId, std::int64_t now) const;

    /// The first with this event id; there is one at most in a guide read from a file.
    std::optional<std::uint32_t> Find(std::uint32_t eventId) const;
    std::optional<std::uint32_t> Find(std::uint64_t serviceId, std::uint32_t eventId) const;
    std::optional<std::uint32_t> Find(ProgrammeKey const& key) const;

    /// The programme `steps` later of the same service; earlier when negative.
    std::optional<std::uint32_t> Neighbour(std::uint32_t position, int steps) const;

    std::string_view Text(TextRef ref) const { return m_data.pool.Get(ref); }
    GuideText const& TextAt(std::uint32_t number) const { return m_data.texts[number]; }
    std::string_view Language(GuideText const& text) const { return Text(m_data.languages[text.language]); }

    /// Memory that the guide holds, in bytes.
    std::size_t KeptBytes() const;

private:
    /// First position of the service's for which `isBefore` is false.
    template <typename IsBefore>
    std::uint32_t Partition(GuideService const& service, IsBefore isBefore) const;

    GuideData m_data;
};

} // namespace zviptv::sim
