// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/client/Caption.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <tuple>

namespace zviptv::ctl {

/// Writes captions as SubRip subtitles (.srt): each is shown until the next one of its stream and page.
class SubRip
{
public:
    /// A time stamp of any stream, 1/90000 s in 33 bits. The first one is the beginning of the file, the last
    /// one its end.
    void See(std::uint64_t pts);

    /// The entries that end with this caption. Its time stamp has to be known.
    std::string Add(Caption const& caption);

    /// The entries that are shown at the end: until the last time stamp, for a second at least.
    std::string Finish();

private:
    using Place = std::tuple<CaptionKind, std::optional<std::uint16_t>, unsigned, std::string>;

    struct Shown
    {
        std::int64_t start = 0;
        std::string text;
    };

    std::int64_t Time(std::uint64_t pts) const;
    std::string Entry(Shown const& shown, std::int64_t end);

    std::optional<std::uint64_t> m_first;
    std::int64_t m_last = 0; ///< 1/90000 s after the first
    std::map<Place, Shown> m_shown;
    unsigned m_entries = 0;
};

} // namespace zviptv::ctl
