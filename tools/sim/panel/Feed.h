// SPDX-License-Identifier: MIT
#pragma once

#include <json/value.h>

#include <cstdint>
#include <deque>
#include <map>
#include <string>

namespace zviptv::sim {

/// What the pages are told: the television's properties, of which only the newest value counts, and messages,
/// of which the last ones are kept. Each page has read up to its own place. Not thread-safe.
class Feed
{
public:
    static constexpr std::size_t MaxMessages = 10000;
    static constexpr std::size_t MaxBytes = std::size_t{32} * 1024 * 1024;

    /// How far a page has read.
    struct Place
    {
        std::uint64_t version = 0;
        std::uint64_t message = 0;
    };

    /// A property has this value now.
    void Set(std::string const& property, Json::Value const& value);

    /// A message has passed: a JSON object.
    void Add(std::string const& message);

    /// What a page at this place does not know yet, as a JSON object, at most 500 messages of it; empty when
    /// it knows everything. `state` has properties, `messages` a list, and `missed` the number of messages
    /// that are not kept any more.
    std::string Next(Place& place) const;

private:
    struct Property
    {
        std::string value;
        std::uint64_t version = 0;
    };

    std::map<std::string, Property> m_properties;
    std::uint64_t m_version = 0;
    std::deque<std::string> m_messages;
    std::uint64_t m_first = 0; ///< number of the first message that is kept
    std::size_t m_bytes = 0;
};

/// On one line.
std::string ToText(Json::Value const& json);

} // namespace zviptv::sim
