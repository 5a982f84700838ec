// SPDX-License-Identifier: MIT
#pragma once

#include "WireMessage.h"

#include <cstring>
#include <initializer_list>
#include <string>
#include <type_traits>
#include <utility>

namespace zviptv::test {

using TextEntry = std::pair<std::string, std::string>;

/// Entries({{"functionname", "MuteAudio"}, {"handleID", "256"}}): every value an "ay" of exactly the
/// text's bytes. For values with zero bytes pass std::string(data, size) or BytesOf(record).
inline WireEntries Entries(std::initializer_list<TextEntry> list)
{
    WireEntries entries;
    for (auto const& [key, value] : list) {
        entries.push_back(WireEntry{key, "ay", value});
    }
    return entries;
}

/// Pairs({{"dbusname", ":1.7"}, {"type", "IPGUTIL"}, {"add", "y"}})
inline WirePairs Pairs(std::initializer_list<TextEntry> list)
{
    return WirePairs(list.begin(), list.end());
}

/// The memory image of a plain record.
template <typename Record>
std::string BytesOf(Record const& record)
{
    static_assert(std::is_trivially_copyable_v<Record>);
    std::string bytes(sizeof(Record), '\0');
    std::memcpy(bytes.data(), &record, sizeof(Record));
    return bytes;
}

/// `size` bytes in which every value from 0 to 255 occurs and a shift by any amount below 251 shows.
inline std::string PatternBytes(std::size_t size)
{
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i) {
        bytes[i] = static_cast<char>(static_cast<unsigned char>((i + i / 251) & 0xFFU));
    }
    return bytes;
}

} // namespace zviptv::test
