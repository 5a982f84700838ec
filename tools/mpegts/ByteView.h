// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace zviptv {

/// A read-only view of bytes that it does not own. It never reads past its end: bytes there are 0.
class ByteView
{
public:
    constexpr ByteView() = default;
    constexpr ByteView(std::uint8_t const* data, std::size_t size) : m_data(data), m_size(size) {}
    ByteView(std::vector<std::uint8_t> const& bytes) : m_data(bytes.data()), m_size(bytes.size()) {}

    constexpr std::uint8_t const* Data() const { return m_data; }
    constexpr std::size_t Size() const { return m_size; }
    constexpr bool Empty() const { return m_size == 0; }

    constexpr std::uint8_t operator[](std::size_t offset) const
    {
        return offset < m_size ? m_data[offset] : std::uint8_t{0};
    }

    /// Two bytes, most significant first.
    constexpr std::uint16_t U16(std::size_t offset) const
    {
        return static_cast<std::uint16_t>(((*this)[offset] << 8) | (*this)[offset + 1]);
    }

    constexpr std::uint32_t U32(std::size_t offset) const
    {
        return (std::uint32_t{U16(offset)} << 16) | U16(offset + 2);
    }

    /// The part from `offset`, at most `count` bytes, cut at the end of the view.
    constexpr ByteView Part(std::size_t offset, std::size_t count = SIZE_MAX) const
    {
        std::size_t const start = std::min(offset, m_size);
        return ByteView(m_data + start, std::min(count, m_size - start));
    }

    std::vector<std::uint8_t> Copy() const { return std::vector<std::uint8_t>(begin(), end()); }

    constexpr std::uint8_t const* begin() const { return m_data; }
    constexpr std::uint8_t const* end() const { return m_data + m_size; }

private:
    std::uint8_t const* m_data = nullptr;
    std::size_t m_size = 0;
};

} // namespace zviptv
