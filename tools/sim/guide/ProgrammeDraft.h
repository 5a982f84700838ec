// SPDX-License-Identifier: MIT
#pragma once

#include "guide/Guide.h"

namespace zviptv::sim {

/// What a text of a programme is.
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

/// A programme as it comes from its source.
struct ProgrammeDraft
{
    struct Text
    {
        GuideField field = GuideField::Title;
        std::string language; ///< of more than 35 bytes: not known
        std::string text;
    };

    std::uint32_t eventId = 0;
    std::string channel; ///< id of the channel
    std::uint32_t start = 0;
    std::uint32_t stop = 0; ///< 0: not known
    std::vector<Text> texts;
};

/// The programme with its texts sorted; its duration is 0 when no valid stop is known.
GuideEntry Describe(ProgrammeDraft draft);

} // namespace zviptv::sim
