// SPDX-License-Identifier: MIT
#pragma once

#include "guide/GuideFile.h"
#include "guide/ProgrammeKey.h"

namespace zviptv::sim {

/// The list that an application asked for last. It stays what it was when another guide is loaded, and keeps
/// the guide that it is of. The default is "none asked for yet".
struct GuideList
{
    std::shared_ptr<Guide const> guide;
    GuideRange range;
};

/// The simulator's guide: answers the requests of IIPGUtil, as JSON text where they want text. Empty text:
/// there is no such programme, or no guide. Not thread-safe.
class ProgrammeGuide
{
public:
    /// Takes the guide of this XMLTV file. @throws GuideError, then the guide so far stays
    GuideWarnings Load(std::string const& path, ServiceNames const& serviceNames = {});

    /// Takes a guide that was made elsewhere, of the stream for example.
    void Use(std::shared_ptr<Guide const> guide) { m_guide = std::move(guide); }

    /// Null before the first.
    std::shared_ptr<Guide const> const& Current() const { return m_guide; }

    bool Exists() const { return m_guide != nullptr; }

    /// GetProgramListSize: `range.count` is the answer, the list is for Programme().
    GuideList Select(std::uint64_t serviceId, std::uint32_t start, std::uint32_t duration) const;

    /// GetProgram. Without a list the index counts through the whole guide: by service id, then by start.
    std::string Programme(GuideList const& list, std::uint32_t index) const;

    /// GetProgramIPG: `request` is the JSON of an IPGProgramId, `step` a Program_IPG (-1 previous, 0, 1
    /// next).
    std::string Programme(std::string const& request, int step) const;

    /// GetPresentProgram. `now` is seconds since 1970, UTC.
    std::string Present(std::uint64_t serviceId, std::int64_t now) const;

    /// FindProgram.
    std::string Find(std::uint64_t serviceId, std::uint32_t eventId) const;

    /// GetRating.
    std::string Rating(std::uint32_t eventId) const;

    /// GetGenre. An array, empty for a programme without genres.
    std::string Genre(std::uint32_t eventId) const;

    /// GetProgramList. An array, empty when a service of the guide has nothing at that time; as many of the
    /// programmes as `largest` bytes hold.
    std::string List(std::uint64_t serviceId, std::uint32_t start, std::uint32_t duration,
                     std::size_t largest = SIZE_MAX) const;

private:
    std::string Json(std::optional<std::uint32_t> position) const;

    std::shared_ptr<Guide const> m_guide;
};

} // namespace zviptv::sim
