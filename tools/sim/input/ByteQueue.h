// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/client/ByteView.h>

#include <cstring>

namespace zviptv::sim {

/// Bytes that wait to be read.
class ByteQueue
{
public:
    void Add(ByteView bytes) { m_bytes.insert(m_bytes.end(), bytes.begin(), bytes.end()); }

    /// Removes at most `size` bytes; returns their number.
    std::size_t Take(std::uint8_t* bytes, std::size_t size)
    {
        std::size_t const taken = std::min(size, Size());
        if (taken > 0) {
            std::memcpy(bytes, m_bytes.data() + m_begin, taken);
            m_begin += taken;
        }
        if (m_begin == m_bytes.size()) {
            m_bytes.clear();
            m_begin = 0;
        }
        return taken;
    }

    std::size_t Size() const { return m_bytes.size() - m_begin; }

private:
    std::vector<std::uint8_t> m_bytes;
    std::size_t m_begin = 0;
};

} // namespace zviptv::sim
