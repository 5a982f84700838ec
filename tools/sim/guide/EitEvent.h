// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace zviptv::sim {

/// An event's texts in one language, UTF-8.
struct EitText
{
    std::string language; ///< ISO 639-2 as sent; bytes that are not letters become '?'
    std::string title;
    std::string summary;
    std::string description; ///< text of the extended event descriptors, in their order
};

struct EitRating
{
    std::string country; ///< ISO 3166 as sent
    unsigned minimumAge = 0;
};

/// One event of an EIT.
struct EitEvent
{
    std::uint16_t serviceId = 0;
    std::uint16_t eventId = 0;
    std::optional<std::uint32_t> start;    ///< seconds since 1970, UTC; empty if undefined
    std::optional<std::uint32_t> duration; ///< seconds; empty if undefined
    std::uint8_t runningStatus = 0; ///< 1 not running, 2 starts soon, 3 pausing, 4 running; 0 undefined
    bool scrambled = false;
    std::vector<EitText> texts;
    std::vector<std::string> genres; ///< English names of the first level
    std::vector<EitRating> ratings;
};

} // namespace zviptv::sim
