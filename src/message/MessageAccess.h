#pragma once

#include <zviptv/MessageBuffer.h>

namespace zviptv {

/// Lets the wire encoders read entries in place; applications get copies only.
struct MessageAccess
{
    static std::vector<MessageEntry> const& Entries(CMessageBuffer const& message)
    {
        return message.m_entries;
    }
};

} // namespace zviptv
