// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/MessageBuffer.h>

#include <utility>

namespace zviptv {

/// Lets the library read entries in place and take their values; applications get copies only.
struct MessageAccess
{
    static std::vector<MessageEntry> const& Entries(CMessageBuffer const& message)
    {
        return message.m_entries;
    }

    /// Room for so many entries in all.
    static void Reserve(CMessageBuffer& message, std::size_t count) { message.m_entries.reserve(count); }

    /// What GetValue() would copy. It is taken out of the message: the next to ask for it gets nothing.
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
