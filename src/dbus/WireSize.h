// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/ProxyDBusHelper.h>

#include <cstdint>

namespace zviptv {

/// Calculates the size of a message body on the wire.
class WireSize
{
public:
    /// Adds padding up to a multiple of `alignment`, then `size` bytes.
    void Add(std::uint64_t alignment, std::uint64_t size)
    {
        m_bytes = (m_bytes + alignment - 1) / alignment * alignment + size;
    }

    /// Adds a string: its length, its bytes and a zero.
    void AddString(std::uint64_t length) { Add(4, 4 + length + 1); }

    bool IsTooLarge() const { return m_bytes > static_cast<std::uint64_t>(CProxyDBusHelper::MAX_BODY_SIZE); }

private:
    std::uint64_t m_bytes = 0;
};

constexpr char TooLarge[] = "The message is larger than the bus carries (32 MiB)";

} // namespace zviptv
