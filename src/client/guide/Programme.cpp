// SPDX-License-Identifier: MIT
#include <zviptv/client/Programme.h>

#include <array>
#include <ctime>
#include <tuple>

namespace zviptv {

namespace {

std::string TimeText(std::chrono::system_clock::time_point time)
{
    std::time_t const seconds = std::chrono::system_clock::to_time_t(time);
    std::tm parts{};
    std::array<char, 64> text{};
    if (gmtime_r(&seconds, &parts) == nullptr ||
        std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S UTC", &parts) == 0) {
        return std::to_string(seconds) + " s since 1970";
    }
    return text.data();
}

} // namespace

bool operator==(ProgrammeRating const& left, ProgrammeRating const& right)
{
    return std::tie(left.system, left.value, left.minimumAge) ==
           std::tie(right.system, right.value, right.minimumAge);
}

bool operator==(Translation const& left, Translation const& right)
{
    return std::tie(left.language, left.title, left.subtitle, left.description, left.genres) ==
           std::tie(right.language, right.title, right.subtitle, right.description, right.genres);
}

bool operator==(ProgrammeId const& left, ProgrammeId const& right)
{
    return std::tie(left.serviceId, left.eventId, left.start, left.duration) ==
           std::tie(right.serviceId, right.eventId, right.start, right.duration);
}

bool operator==(Programme const& left, Programme const& right)
{
    return left.Id() == right.Id() &&
           std::tie(left.channel, left.title, left.subtitle, left.description, left.language, left.episode,
                    left.icon, left.genres, left.rating, left.translations) ==
               std::tie(right.channel, right.title, right.subtitle, right.description, right.language,
                        right.episode, right.icon, right.genres, right.rating, right.translations);
}

std::string ToString(ProgrammeRating const& rating)
{
    // The value often has the name of the system in it: "FSK 12".
    bool const isNamed = rating.system.empty() || rating.value.find(rating.system) != std::string::npos;
    return isNamed ? rating.value : rating.system + " " + rating.value;
}

std::string ToString(ProgrammeId const& programme)
{
    return "service " + std::to_string(programme.serviceId) + ", event " + std::to_string(programme.eventId) +
           ", " + TimeText(programme.start);
}

std::string ToString(Programme const& programme)
{
    return TimeText(programme.start) + ", " +
           std::to_string(std::chrono::duration_cast<std::chrono::minutes>(programme.duration).count()) +
           " min: " + programme.title;
}

} // namespace zviptv
