// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/client/ByteView.h>

namespace zviptv::sim {

/// Reads bits, most significant first. After the end it reads zeros, and Ok() becomes false.
class BitReader
{
public:
    explicit BitReader(ByteView bytes) : m_bytes(bytes) {}

    /// At most 32 bits.
    std::uint32_t Bits(unsigned count)
    {
        std::uint32_t value = 0;
        for (unsigned i = 0; i < count; ++i) {
            value = (value << 1) | Bit();
        }
        return value;
    }

    bool Flag() { return Bit() != 0; }

    void Skip(std::size_t count)
    {
        m_ok = m_ok && count <= m_bytes.Size() * 8 - m_position;
        m_position = m_ok ? m_position + count : m_bytes.Size() * 8;
    }

    /// Exp-Golomb code, unsigned. Codes over 32 bits are an error.
    std::uint32_t Ue()
    {
        unsigned zeros = 0;
        while (m_ok && !Flag()) {
            ++zeros;
        }
        if (zeros > 31) {
            m_ok = false;
        }
        return m_ok ? ((std::uint32_t{1} << zeros) - 1) + Bits(zeros) : 0;
    }

    /// Exp-Golomb code, signed.
    std::int32_t Se()
    {
        std::uint32_t const code = Ue();
        auto const half = static_cast<std::int32_t>(code / 2);
        return (code & 1) ? half + 1 : -half;
    }

    bool Ok() const { return m_ok; }

private:
    std::uint32_t Bit()
    {
        if (m_position >= m_bytes.Size() * 8) {
            m_ok = false;
            return 0;
        }
        std::uint32_t const bit = (std::uint32_t{m_bytes[m_position / 8]} >> (7 - m_position % 8)) & 1u;
        ++m_position;
        return bit;
    }

    ByteView m_bytes;
    std::size_t m_position = 0;
    bool m_ok = true;
};

} // namespace zviptv::sim
