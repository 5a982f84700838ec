// SPDX-License-Identifier: MIT
#pragma once

#include "guide/Guide.h"

namespace zviptv::sim {

/// The kinds of texts of a programme.
enum class GuideField
{
    Title,
    Subtitle,
    Description,
    Genre,
    RatingSystem, ///< followed by its RatingValue
    RatingValue,
    Icon,
    Episode
};

/// A programme as read from its source.
struct ProgrammeDraft
{
    struct Text
    {
        GuideField field = GuideField::Title;
        std::string language; ///< unknown if it has more than 35 bytes
        std::string text;
    };

    std::uint32_t eventId = 0;
    std::string channel; ///< id of the channel
    std::uint32_t start = 0;
    std::uint32_t stop = 0; ///< 0 if not known
    std::vector<Text> texts;
};

/// The programme with sorted texts; its duration is 0 if no valid stop is known.
GuideEntry Describe(ProgrammeDraft draft);

} // namespace zviptv::sim
