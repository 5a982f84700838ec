// SPDX-License-Identifier: MIT
#include "guide/Rating.h"

#include "guide/XmltvText.h"

#include <algorithm>
#include <array>

namespace zviptv::sim {

namespace {

constexpr unsigned MaxAge = 21;

struct Word
{
    std::string_view value;
    unsigned age;
};

/// Values whose age is not the number that they contain.
constexpr std::array<Word, 9> Words{{
    {"G", 0},
    {"U", 0},
    {"Uc", 0},
    {"TV-G", 0},
    {"TV-Y", 0},
    {"AL", 0},
    {"R", 17},
    {"TV-MA", 17},
    {"NC-17", 18},
}};

std::optional<unsigned> FirstNumber(std::string_view value)
{
    auto const first = std::find_if(value.begin(), value.end(), IsDigit);
    auto const last = std::find_if_not(first, value.end(), IsDigit);
    if (first == last || last - first > 2) {
        return std::nullopt;
    }
    unsigned number = 0;
    for (auto digit = first; digit != last; ++digit) {
        number = number * 10 + static_cast<unsigned>(*digit - '0');
    }
    return number <= MaxAge ? std::optional<unsigned>(number) : std::nullopt;
}

} // namespace

std::optional<unsigned> MinimumAge(std::string_view value)
{
    auto const word =
        std::find_if(Words.begin(), Words.end(), [value](Word const& known) { return known.value == value; });
    return word != Words.end() ? std::optional<unsigned>(word->age) : FirstNumber(value);
}

} // namespace zviptv::sim
