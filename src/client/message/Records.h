// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/client/Language.h>

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <type_traits>

namespace zviptv::client {

/// The bytes of a record. Numbers are little endian; bytes that are missing are 0.
class RecordBytes
{
public:
    explicit RecordBytes(std::string_view bytes) : m_bytes(bytes) {}

    template <class Value>
    void Read(std::size_t offset, Value& value) const
    {
        static_assert(std::is_enum_v<Value> || std::is_unsigned_v<Value>);
        value = static_cast<Value>(Number(offset, sizeof(Value)));
    }
    void Read(std::size_t offset, Language& language) const
    {
        language = Language::FromNumber(static_cast<std::int32_t>(Number(offset, 4)));
    }

private:
    std::uint32_t Number(std::size_t offset, std::size_t size) const
    {
        std::uint32_t number = 0;
        for (std::size_t i = 0; i < size && offset + i < m_bytes.size(); ++i) {
            number |= static_cast<std::uint32_t>(static_cast<unsigned char>(m_bytes[offset + i])) << (8U * i);
        }
        return number;
    }

    std::string_view m_bytes;
};

/// Bytes of a record of this type.
template <class Record>
inline constexpr std::size_t RecordSize = 0;

} // namespace zviptv::client
