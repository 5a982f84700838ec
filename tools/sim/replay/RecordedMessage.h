// SPDX-License-Identifier: MIT
#pragma once

#include "trace/ParsedMessage.h"

#include <zviptv/MessageBuffer.h>

namespace zviptv::sim {

/// The entries of a recorded message. Values of another type than ay, which nobody reads, are omitted.
/// @throws trace::Malformed
inline CMessageBuffer ToMessageBuffer(trace::ParsedMessage const& message)
{
    CMessageBuffer buffer;
    for (trace::ParsedEntry const& entry : trace::ReadEntries(message)) {
        if (entry.signature.empty()) {
            buffer.AddValue(std::string(entry.key).c_str(), static_cast<int>(entry.value.size()),
                            entry.value.data() == nullptr ? "" : entry.value.data());
        }
    }
    return buffer;
}

} // namespace zviptv::sim
