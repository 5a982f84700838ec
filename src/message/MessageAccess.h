// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/MessageBuffer.h>

#include <utility>

namespace zviptv {

/// Lets the library read entries in place and move their values out; applications get only copies.
struct MessageAccess
{
    static std::vector<MessageEntry> const& Entries(CMessageBuffer const& message)
    {
        return message.m_entries;
    }

    /// Reserves memory for the given total number of entries.
    static void Reserve(CMessageBuffer& message, std::size_t count) { message.m_entries.reserve(count); }

    /// Moves the value out of the message that GetValue() would copy. A second call for it returns an empty
    /// text.
    static std::string TakeValue(CMessageBuffer& message, char const* key)
    {
        for (MessageEntry& entry : message.m_entries) {
            if (entry.key == key) {
                entry.size = 0;
                return std::exchange(entry.value, std::string());
            }
        }
        return std::string();
    }
};

} // namespace zviptv
