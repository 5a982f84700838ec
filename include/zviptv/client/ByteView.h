// SPDX-License-Identifier: MIT
/// @file
/// A view of bytes.

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace zviptv {

/// A read-only view of bytes that another object owns, which has to live as long as the view is used. A view
/// never reads past its end: bytes there are 0. Copying a view copies no bytes.
class ByteView
{
public:
    /// Views no bytes.
    constexpr ByteView() = default;

    /// Views `size` bytes from `data` on.
    constexpr ByteView(std::uint8_t const* data, std::size_t size) : m_data(data), m_size(size) {}

    /// Views all bytes of the vector, until it is changed.
    ByteView(std::vector<std::uint8_t> const& bytes) : m_data(bytes.data()), m_size(bytes.size()) {}

    /// The first byte; null for a default-constructed view.
    constexpr std::uint8_t const* Data() const { return m_data; }
    /// Number of bytes.
    constexpr std::size_t Size() const { return m_size; }
    /// Whether there are no bytes.
    constexpr bool Empty() const { return m_size == 0; }

    /// The byte at `offset`; 0 past the end.
    constexpr std::uint8_t operator[](std::size_t offset) const
    {
        return offset < m_size ? m_data[offset] : std::uint8_t{0};
    }

    /// Two bytes, most significant first.
    constexpr std::uint16_t U16(std::size_t offset) const
    {
        return static_cast<std::uint16_t>(((*this)[offset] << 8) | (*this)[offset + 1]);
    }

    /// Four bytes, most significant first.
    constexpr std::uint32_t U32(std::size_t offset) const
    {
        return (std::uint32_t{U16(offset)} << 16) | U16(offset + 2);
    }

    /// The bytes from `offset` on: at most `count`, and fewer if the view ends earlier.
    constexpr ByteView Part(std::size_t offset, std::size_t count = SIZE_MAX) const
    {
        std::size_t const start = std::min(offset, m_size);
        return ByteView(m_data + start, std::min(count, m_size - start));
    }

    /// The bytes in a vector.
    std::vector<std::uint8_t> Copy() const { return std::vector<std::uint8_t>(begin(), end()); }

    /// For range-based loops.
    constexpr std::uint8_t const* begin() const { return m_data; }

    /// For range-based loops.
    constexpr std::uint8_t const* end() const { return m_data + m_size; }

private:
    std::uint8_t const* m_data = nullptr;
    std::size_t m_size = 0;
};

} // namespace zviptv
