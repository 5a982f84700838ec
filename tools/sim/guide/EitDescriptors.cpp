// SPDX-License-Identifier: MIT
#include "guide/EitDescriptors.h"

#include "stream/DvbText.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace zviptv::sim {

namespace {

constexpr std::uint8_t ShortEvent = 0x4D;
constexpr std::uint8_t ExtendedEvent = 0x4E;
constexpr std::uint8_t Content = 0x54;
constexpr std::uint8_t ParentalRating = 0x55;

/// First level of the content descriptor, from 1 on.
constexpr std::array<char const*, 11> Genres{"Movie/Drama",
                                             "News/Current affairs",
                                             "Show/Game show",
                                             "Sports",
                                             "Children's/Youth programmes",
                                             "Music/Ballet/Dance",
                                             "Arts/Culture",
                                             "Social/Political issues/Economics",
                                             "Education/Science/Factual topics",
                                             "Leisure hobbies",
                                             "Special characteristics"};

std::string ParseCode(ByteView data)
{
    std::string code;
    for (std::size_t i = 0; i < 3; ++i) {
        code += std::isalpha(data[i]) ? static_cast<char>(data[i]) : '?';
    }
    return code;
}

/// The bytes after the length byte at `at`.
ByteView Counted(ByteView data, std::size_t at)
{
    return data.Part(at + 1, data[at]);
}

EitText& TextOf(EitEvent& event, std::string const& language)
{
    auto const known = std::find_if(event.texts.begin(), event.texts.end(),
                                    [&language](EitText const& text) { return text.language == language; });
    return known != event.texts.end() ? *known : event.texts.emplace_back(EitText{language, {}, {}, {}});
}

void AddShortEvent(ByteView data, EitEvent& event)
{
    EitText& text = TextOf(event, ParseCode(data));
    ByteView const title = Counted(data, 3);
    text.title = DecodeDvbText(title);
    text.summary = DecodeDvbText(Counted(data, 4 + title.Size()));
}

void AddExtendedEvent(ByteView data, EitEvent& event)
{
    ByteView const items = Counted(data, 4);
    TextOf(event, ParseCode(data.Part(1))).description += DecodeDvbText(Counted(data, 5 + items.Size()));
}

void AddContent(ByteView data, EitEvent& event)
{
    for (; data.Size() >= 2; data = data.Part(2)) {
        std::size_t const level = data[0] >> 4;
        if (level == 0 || level > Genres.size()) {
            continue;
        }
        std::string const genre = Genres[level - 1];
        if (std::find(event.genres.begin(), event.genres.end(), genre) == event.genres.end()) {
            event.genres.push_back(genre);
        }
    }
}

/// Codes above 15 are defined by the broadcaster.
void AddRatings(ByteView data, EitEvent& event)
{
    for (; data.Size() >= 4; data = data.Part(4)) {
        if (data[3] >= 1 && data[3] <= 0x0F) {
            event.ratings.push_back({ParseCode(data), data[3] + 3u});
        }
    }
}

std::optional<unsigned> ParseBcd(std::uint8_t byte, unsigned limit)
{
    unsigned const tens = byte >> 4;
    unsigned const ones = byte & 0x0F;
    bool const valid = tens <= 9 && ones <= 9 && tens * 10 + ones <= limit;
    return valid ? std::optional<unsigned>(tens * 10 + ones) : std::nullopt;
}

std::optional<std::uint32_t> ParseBcdTime(ByteView bytes, unsigned maxHour)
{
    auto const hour = ParseBcd(bytes[0], maxHour);
    auto const minute = ParseBcd(bytes[1], 59);
    auto const second = ParseBcd(bytes[2], 59);
    if (!hour || !minute || !second) {
        return std::nullopt;
    }
    return *hour * 3600 + *minute * 60 + *second;
}

} // namespace

void AddEitDescriptors(ByteView descriptors, EitEvent& event)
{
    while (descriptors.Size() >= 2) {
        ByteView const data = Counted(descriptors, 1);
        switch (descriptors[0]) {
        case ShortEvent:
            AddShortEvent(data, event);
            break;
        case ExtendedEvent:
            AddExtendedEvent(data, event);
            break;
        case Content:
            AddContent(data, event);
            break;
        case ParentalRating:
            AddRatings(data, event);
            break;
        default:
            break;
        }
        descriptors = descriptors.Part(2 + data.Size());
    }
}

std::optional<std::uint32_t> ParseMjdTime(ByteView bytes)
{
    constexpr std::uint32_t EpochMjd = 40587;
    auto const time = ParseBcdTime(bytes.Part(2), 23);
    std::uint32_t const day = bytes.U16(0);
    if (!time || day < EpochMjd) {
        return std::nullopt;
    }
    return (day - EpochMjd) * 86400 + *time;
}

std::optional<std::uint32_t> ParseBcdDuration(ByteView bytes)
{
    return ParseBcdTime(bytes, 99);
}

} // namespace zviptv::sim
