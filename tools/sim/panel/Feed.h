// SPDX-License-Identifier: MIT
#pragma once

#include <json/value.h>

#include <cstdint>
#include <deque>
#include <map>
#include <string>

namespace zviptv::sim {

/// The data for the pages: the newest value of each property of the television, and the last messages. Each
/// page has a position up to which it has read. Not thread-safe.
class Feed
{
public:
    static constexpr std::size_t MaxMessages = 10000;
    static constexpr std::size_t MaxBytes = std::size_t{32} * 1024 * 1024;

    /// The position of a page.
    struct Place
    {
        std::uint64_t version = 0;
        std::uint64_t message = 0;
    };

    /// Sets the value of a property.
    void Set(std::string const& property, Json::Value const& value);

    /// Adds a message, a JSON object.
    void Add(std::string const& message);

    /// The news for a page at this position, as a JSON object with at most 500 messages; empty if there are
    /// none. `state` contains properties, `messages` is a list, and `missed` is the number of messages that
    /// have been discarded.
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
    std::uint64_t m_first = 0; ///< number of the oldest message
    std::size_t m_bytes = 0;
};

/// The JSON text, on one line.
std::string ToText(Json::Value const& json);

} // namespace zviptv::sim
