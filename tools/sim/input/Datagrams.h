// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/client/ByteView.h>

#include <vector>

namespace zviptv::sim {

/// Datagrams in the order of their arrival.
class Datagrams
{
public:
    struct Entry
    {
        std::size_t size = 0;
        std::int64_t arrival = 0; ///< microseconds of the real time clock
    };

    void Add(ByteView datagram, std::int64_t arrival)
    {
        m_bytes.insert(m_bytes.end(), datagram.begin(), datagram.end());
        m_entries.push_back({datagram.Size(), arrival});
    }

    /// Calls `use(ByteView, arrival)` for each datagram, in order.
    template <typename Use>
    void ForEach(Use use) const
    {
        std::size_t at = 0;
        for (Entry const& entry : m_entries) {
            use(ByteView(m_bytes.data() + at, entry.size), entry.arrival);
            at += entry.size;
        }
    }

    bool Empty() const { return m_entries.empty(); }
    std::size_t Bytes() const { return m_bytes.size(); }

    /// Removes all datagrams, but keeps the memory.
    void Clear()
    {
        m_bytes.clear();
        m_entries.clear();
    }

private:
    std::vector<std::uint8_t> m_bytes;
    std::vector<Entry> m_entries;
};

} // namespace zviptv::sim
