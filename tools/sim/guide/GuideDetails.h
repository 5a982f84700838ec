#pragma once

#include "guide/Guide.h"

#include <string_view>
#include <vector>

namespace zviptv::sim {

/// A programme's texts in one language. Views into the guide.
struct GuideVersion
{
    std::string_view language;
    std::string_view title;
    std::string_view subtitle;
    std::string_view description;
    std::vector<std::string_view> genres;
};

struct GuideRating
{
    std::string_view system;
    std::string_view value;
    std::optional<unsigned> minimumAge; ///< years; nothing when the value names no age
};

/// What a guide knows of one programme. Views into the guide.
struct GuideDetails
{
    /// In the language of the first title. Texts without a language belong to it, and what it lacks comes
    /// from the first other language that has it.
    GuideVersion main;
    std::vector<GuideVersion> translations; ///< the other languages, in the order of their first text
    std::optional<GuideRating> rating;      ///< the one with the highest age, the first of those
    std::string_view icon;
    std::string_view episode;
};

GuideDetails Describe(Guide const& guide, std::uint32_t position);

} // namespace zviptv::sim
