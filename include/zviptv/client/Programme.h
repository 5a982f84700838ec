// SPDX-License-Identifier: MIT
/// @file
/// Programmes of the guide.

#pragma once

#include <zviptv/Export.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace zviptv {

/// From what age a programme is suitable.
struct ProgrammeRating
{
    std::string system;            ///< rating system: "FSK", "MPAA", or a country such as "DEU"
    std::string value;             ///< the rating as the source writes it
    std::optional<int> minimumAge; ///< years; nothing if the value names no age
};

/// The texts of a programme in another language.
struct Translation
{
    std::string language;            ///< as the source writes it: "en", "de-AT", "fra"; empty if not known
    std::string title;               ///< name of the programme
    std::string subtitle;            ///< of the episode, for example
    std::string description;         ///< what it is about
    std::vector<std::string> genres; ///< in words, as the source writes them
};

/// Identifies a programme of the guide.
struct ProgrammeId
{
    std::uint64_t serviceId = 0; ///< number of the service in the guide
    std::uint32_t eventId = 0;   ///< the guide compares only the low 16 bits
    /// Start of the programme in UTC, from 1970 to 2106. The epoch itself, which is the default, stands for
    /// any start.
    std::chrono::system_clock::time_point start;
    std::chrono::seconds duration{0}; ///< the guide does not compare it
};

/// A programme of the guide. Texts may be empty. They are UTF-8: other bytes of the service, and zero bytes,
/// are U+FFFD (the same in ratings and genres).
struct Programme
{
    std::uint64_t serviceId = 0;                 ///< number of the service in the guide
    std::uint32_t eventId = 0;                   ///< from 1
    std::chrono::system_clock::time_point start; ///< UTC
    std::chrono::seconds duration{0};            ///< from the start
    std::string channel;                         ///< name of the service in the guide
    std::string title;                           ///< name of the programme
    std::string subtitle;                        ///< of the episode, for example
    std::string description;                     ///< what it is about
    std::string language;            ///< of the texts above, as the source writes it; empty if not known
    std::string episode;             ///< number of the episode, as the source writes it
    std::string icon;                ///< address of a picture
    std::vector<std::string> genres; ///< in words, as the source writes them
    std::optional<ProgrammeRating> rating; ///< nothing if the source gives none
    std::vector<Translation> translations; ///< the texts in other languages

    /// The end: a programme is on at `start`, and is not on any more at `End()`.
    std::chrono::system_clock::time_point End() const { return start + duration; }
    /// Identifies this programme in the guide.
    ProgrammeId Id() const { return {serviceId, eventId, start, duration}; }
};

/// Whether all values are equal.
ZVIPTV_API bool operator==(ProgrammeRating const& left, ProgrammeRating const& right);
/// Whether all values are equal.
ZVIPTV_API bool operator==(Translation const& left, Translation const& right);
/// Whether all values are equal.
ZVIPTV_API bool operator==(ProgrammeId const& left, ProgrammeId const& right);
/// Whether all values are equal.
ZVIPTV_API bool operator==(Programme const& left, Programme const& right);
/// Whether a value differs.
inline bool operator!=(ProgrammeRating const& left, ProgrammeRating const& right)
{
    return !(left == right);
}
/// Whether a value differs.
inline bool operator!=(Translation const& left, Translation const& right)
{
    return !(left == right);
}
/// Whether a value differs.
inline bool operator!=(ProgrammeId const& left, ProgrammeId const& right)
{
    return !(left == right);
}
/// Whether a value differs.
inline bool operator!=(Programme const& left, Programme const& right)
{
    return !(left == right);
}

/// "FSK 12"
ZVIPTV_API std::string ToString(ProgrammeRating const& rating);
/// "service 1, event 4, 2026-03-28 21:50:00 UTC"
ZVIPTV_API std::string ToString(ProgrammeId const& programme);
/// "2026-03-28 21:50:00 UTC, 180 min: Cellar Door"
ZVIPTV_API std::string ToString(Programme const& programme);

} // namespace zviptv
