#pragma once

#include "guide/TextPool.h"

#include <deque>
#include <vector>

namespace zviptv::sim {

/// What a text of a programme is.
enum class GuideField : std::uint8_t
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

/// One text of a programme.
struct GuideText
{
    TextRef text = 0;
    std::uint16_t language = 0; ///< number in GuideData::languages
    GuideField field = GuideField::Title;
};

/// One programme. Times are seconds since 1970, UTC.
struct GuideEntry
{
    std::uint32_t eventId = 0;
    std::uint32_t service = 0; ///< number in GuideData::services
    std::uint32_t start = 0;
    std::uint32_t duration = 0; ///< seconds; never 0 in a finished guide
    std::uint32_t firstText = 0;
    std::uint32_t textCount = 0;

    std::uint64_t Stop() const { return std::uint64_t{start} + duration; }
};

struct GuideService
{
    std::uint64_t id = 0;
    TextRef name = 0;
    std::uint32_t first = 0; ///< its programmes, as positions in GuideData::entries
    std::uint32_t count = 0;
};

/// What a guide keeps. Deques, because they grow without copying.
struct GuideData
{
    TextPool pool;
    std::deque<GuideText> texts;
    std::deque<GuideEntry> entries;     ///< by service, then start; no two of a service overlap
    std::vector<GuideService> services; ///< by id
    std::vector<TextRef> languages;     ///< 0 is "none"
    std::vector<std::uint32_t> byEvent; ///< positions of entries, by event id
};

} // namespace zviptv::sim
