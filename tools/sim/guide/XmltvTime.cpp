// SPDX-License-Identifier: MIT
#include "guide/XmltvTime.h"

#include "guide/XmltvText.h"

#include <algorithm>
#include <array>
#include <string>

namespace zviptv::sim {

namespace {

struct Zone
{
    std::string_view name;
    int minutes; ///< east of UTC
};

constexpr std::array<Zone, 34> Zones{{
    {"UTC", 0},    {"GMT", 0},    {"UT", 0},     {"Z", 0},      {"WET", 0},    {"WEST", 60},  {"BST", 60},
    {"CET", 60},   {"MEZ", 60},   {"CEST", 120}, {"MESZ", 120}, {"EET", 120},  {"EEST", 180}, {"MSK", 180},
    {"JST", 540},  {"KST", 540},  {"AWST", 480}, {"AEST", 600}, {"AEDT", 660}, {"NZST", 720}, {"NZDT", 780},
    {"NST", -210}, {"NDT", -150}, {"AST", -240}, {"ADT", -180}, {"EST", -300}, {"EDT", -240}, {"CST", -360},
    {"CDT", -300}, {"MST", -420}, {"MDT", -360}, {"PST", -480}, {"PDT", -420}, {"HST", -600},
}};

std::string_view Trim(std::string_view text)
{
    while (!text.empty() && IsBlank(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && IsBlank(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

std::string_view LeadingDigits(std::string_view text)
{
    auto const end = std::find_if_not(text.begin(), text.end(), IsDigit);
    return text.substr(0, static_cast<std::size_t>(end - text.begin()));
}

/// Removes `count` digits from the front and returns their value; `fallback` if there are none left.
int Take(std::string_view& digits, std::size_t count, int fallback)
{
    if (digits.empty()) {
        return fallback;
    }
    int value = 0;
    for (char const digit : digits.substr(0, count)) {
        value = value * 10 + (digit - '0');
    }
    digits.remove_prefix(std::min(count, digits.size()));
    return value;
}

constexpr bool IsLeapYear(int year)
{
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

constexpr int DaysInMonth(int year, int month)
{
    constexpr std::array<int, 12> Days{31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && IsLeapYear(year) ? 29 : Days[static_cast<std::size_t>(month - 1)];
}

/// Days since 1970-01-01 in the Gregorian calendar. Years begin in March here, so that a leap day is the last
/// day.
constexpr std::int64_t DaysSinceEpoch(int year, int month, int day)
{
    std::int64_t const y = month <= 2 ? year - 1 : year;
    std::int64_t const yearDay = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + day - 1;
    std::int64_t const leapDays = y / 4 - y / 100 + y / 400;
    return y * 365 + leapDays + yearDay - 719468;
}
static_assert(DaysSinceEpoch(1970, 1, 1) == 0 && DaysSinceEpoch(2000, 3, 1) == 11017);

std::optional<std::int64_t> ParseClock(std::string_view digits)
{
    if (digits.size() < 4 || digits.size() > 14 || digits.size() % 2 != 0) {
        return std::nullopt;
    }
    int const year = Take(digits, 4, 0);
    int const month = Take(digits, 2, 1);
    int const day = Take(digits, 2, 1);
    int const hour = Take(digits, 2, 0);
    int const minute = Take(digits, 2, 0);
    int const second = Take(digits, 2, 0);
    if (year < 1 || month < 1 || month > 12 || day < 1 || day > DaysInMonth(year, month)) {
        return std::nullopt;
    }
    if (hour > 23 || minute > 59 || second > 59) {
        return std::nullopt;
    }
    return DaysSinceEpoch(year, month, day) * 86400 + hour * 3600 + minute * 60 + second;
}

/// The offset "+hhmm", "+hh:mm" or "+hh" in minutes.
std::optional<int> ParseOffset(std::string_view text)
{
    int const sign = text.front() == '-' ? -1 : 1;
    std::string digits(text.substr(1));
    if (digits.size() == 5 && digits[2] == ':') {
        digits.erase(2, 1);
    }
    std::string_view left = digits;
    if ((digits.size() != 2 && digits.size() != 4) || LeadingDigits(left) != left) {
        return std::nullopt;
    }
    int const hour = Take(left, 2, 0);
    int const minute = Take(left, 2, 0);
    return hour <= 14 && minute <= 59 ? std::optional<int>(sign * (hour * 60 + minute)) : std::nullopt;
}

char ToUpper(char c)
{
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

/// Minutes east of UTC.
std::optional<int> ParseZone(std::string_view text)
{
    if (text.empty()) {
        return 0;
    }
    if (text.front() == '+' || text.front() == '-') {
        return ParseOffset(text);
    }
    auto const zone = std::find_if(Zones.begin(), Zones.end(), [text](Zone const& candidate) {
        return std::equal(text.begin(), text.end(), candidate.name.begin(), candidate.name.end(),
                          [](char left, char right) { return ToUpper(left) == right; });
    });
    return zone != Zones.end() ? std::optional<int>(zone->minutes) : std::nullopt;
}

} // namespace

std::optional<std::int64_t> ParseXmltvTime(std::string_view text)
{
    text = Trim(text);
    std::string_view const digits = LeadingDigits(text);
    auto const clock = ParseClock(digits);
    auto const zone = ParseZone(Trim(text.substr(digits.size())));
    if (!clock || !zone) {
        return std::nullopt;
    }
    return *clock - *zone * 60;
}

} // namespace zviptv::sim
