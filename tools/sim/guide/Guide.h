// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace zviptv::sim {

/// A programme's texts in one language.
struct GuideVersion
{
    std::string language;
    std::string title;
    std::string subtitle;
    std::string description;
    std::vector<std::string> genres;
};

struct GuideRating
{
    std::string system;
    std::string value;
    std::optional<unsigned> minimumAge; ///< years; empty if the value contains no age
};

/// One programme. Times are seconds since 1970, UTC.
struct GuideEntry
{
    std::uint32_t eventId = 0;
    std::uint32_t start = 0;
    std::uint32_t duration = 0; ///< seconds; never 0 in a finished guide

    /// Texts in the language of the first title. Texts without a language belong to it, and missing texts are
    /// those of the first other language that has them.
    GuideVersion main;
    std::vector<GuideVersion> translations; ///< the other languages, in the order of their first text
    std::optional<GuideRating> rating;      ///< the first one with the highest age
    std::string icon;
    std::string episode;

    std::uint64_t Stop() const { return std::uint64_t{start} + duration; }
};

struct GuideService
{
    std::uint64_t id = 0;
    std::string name;
    std::vector<GuideEntry> entries; ///< by start; no two overlap
    std::uint32_t first = 0;         ///< position of the first entry in the guide

    std::uint32_t End() const { return first + static_cast<std::uint32_t>(entries.size()); }
};

/// Programmes that follow one another in the guide's order.
struct GuideRange
{
    std::uint32_t first = 0;
    std::uint32_t count = 0;
};

/// The data with which an application identifies a programme.
struct ProgrammeKey
{
    std::uint64_t serviceId = 0;
    std::uint16_t eventId = 0;   ///< the low 16 bits
    std::uint32_t startTime = 0; ///< 0: not known
};

/// A finished, unchangeable programme guide, which threads may share. Programmes are ordered by their
/// services' ids, then by their start, and are identified by their position.
class Guide
{
public:
    /// @param services by id, their entries in order; `first` is set here
    explicit Guide(std::vector<GuideService> services);
    Guide(Guide const&) = delete;
    Guide& operator=(Guide const&) = delete;

    GuideRange All() const { return {0, static_cast<std::uint32_t>(m_byEvent.size())}; }
    GuideEntry const& At(std::uint32_t position) const;
    GuideService const& ServiceAt(std::uint32_t position) const;
    std::vector<GuideService> const& Services() const { return m_services; }

    /// A service; null if the guide does not have it.
    GuideService const* FindService(std::uint64_t serviceId) const;

    /// The service's programmes that are on during [start, start + duration).
    GuideRange List(std::uint64_t serviceId, std::uint32_t start, std::uint32_t duration) const;

    /// The programme with start <= now < stop.
    std::optional<std::uint32_t> Present(std::uint64_t serviceId, std::int64_t now) const;

    /// The first programme with this event id; a guide from a file has at most one.
    std::optional<std::uint32_t> Find(std::uint32_t eventId) const;
    std::optional<std::uint32_t> Find(std::uint64_t serviceId, std::uint32_t eventId) const;
    std::optional<std::uint32_t> Find(ProgrammeKey const& key) const;

    /// The programme of the same service that is `steps` later, or earlier if negative.
    std::optional<std::uint32_t> Neighbour(std::uint32_t position, int steps) const;

private:
    std::optional<std::uint32_t> FindEvent(std::uint32_t eventId, std::uint32_t begin,
                                           std::uint32_t end) const;

    std::vector<GuideService> m_services;
    std::vector<std::pair<std::uint32_t, std::uint32_t>> m_byEvent; ///< event id and position, in order
};

} // namespace zviptv::sim
