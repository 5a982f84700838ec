// SPDX-License-Identifier: MIT
#include <zviptv/client/Programme.h>

#include "glib/Owned.h"

#include <tuple>

namespace zviptv {

namespace {

std::string TimeText(std::chrono::system_clock::time_point time)
{
    // The std::time_t of i386 and armhf ends in 2038.
    std::int64_t const seconds = std::chrono::floor<std::chrono::seconds>(time.time_since_epoch()).count();
    Owned<GDateTime> const date(g_date_time_new_from_unix_utc(seconds));
    if (date == nullptr) {
        return std::to_string(seconds) + " s since 1970";
    }
    Owned<char> const text(g_date_time_format(date.get(), "%Y-%m-%d %H:%M:%S UTC"));
    return text.get();
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
