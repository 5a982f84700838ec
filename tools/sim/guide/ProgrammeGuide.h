// SPDX-License-Identifier: MIT
#pragma once

#include "guide/GuideFile.h"
#include "guide/ProgrammeKey.h"

namespace zviptv::sim {

/// The last list that an application requested. It does not change when another guide is loaded, and keeps
/// its guide. By default, no list has been requested.
struct GuideList
{
    std::shared_ptr<Guide const> guide;
    GuideRange range;
};

/// The simulator's guide: answers the requests of IIPGUtil, with texts as JSON. A text is empty if there is
/// no such programme, or no guide. Not thread-safe.
class ProgrammeGuide
{
public:
    /// Loads the guide of this XMLTV file. @throws GuideError, and then keeps the previous guide
    GuideWarnings Load(std::string const& path, ServiceNames const& serviceNames = {});

    /// Sets a guide that was made elsewhere, for example from the stream.
    void Use(std::shared_ptr<Guide const> guide) { m_guide = std::move(guide); }

    /// The guide; null before the first one.
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

    /// GetProgramList. An array, empty if a service of the guide has no programme in the period; it contains
    /// as many programmes as fit into `largest` bytes.
    std::string List(std::uint64_t serviceId, std::uint32_t start, std::uint32_t duration,
                     std::size_t largest = SIZE_MAX) const;

private:
    std::string Json(std::optional<std::uint32_t> position) const;

    std::shared_ptr<Guide const> m_guide;
};

} // namespace zviptv::sim
