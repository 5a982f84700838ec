// SPDX-License-Identifier: MIT
#pragma once

#include "failure/LastFailure.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

namespace zviptv {

/// How much more than has arrived may be announced, in bytes. It bounds what a message costs that announces
/// much and carries nothing: the rest is filled with zeros.
constexpr std::size_t MostMissing = std::size_t{1024} * 1024;

/// Empties `target` and returns how many elements a value of `carried` bytes was announced to have. A
/// negative number, and MostMissing more than was carried, is a std::length_error and the calling thread's
/// failure, for which `key` is to blame.
template <typename Element>
std::size_t ClearForAnnounced(std::vector<Element>& target, int announced, std::size_t carried,
                              char const* key)
{
    std::size_t const most = (carried + MostMissing) / sizeof(Element);
    target.clear();
    if (announced < 0 || static_cast<std::size_t>(announced) > most) {
        SetMalformed(key, "a number from 0 to " + std::to_string(most), std::to_string(announced));
        throw std::length_error("vector::_M_default_append");
    }
    return static_cast<std::size_t>(announced);
}

/// Makes `target` hold the first `announced` elements of `bytes`; what the value is too short for is zero.
/// Throws as ClearForAnnounced() does.
template <typename Element>
void TakeAnnounced(std::vector<Element>& target, int announced, std::string const& bytes, char const* key)
{
    target.resize(ClearForAnnounced(target, announced, bytes.size(), key));
    std::size_t const count = std::min(target.size() * sizeof(Element), bytes.size());
    if (count > 0) {
        std::memcpy(target.data(), bytes.data(), count);
    }
}

/// The same of bytes, of which there may be many: none is written twice.
inline void TakeAnnounced(std::vector<std::uint8_t>& target, int announced, std::string const& bytes,
                          char const* key)
{
    std::size_t const count = ClearForAnnounced(target, announced, bytes.size(), key);
    auto const* const first = reinterpret_cast<std::uint8_t const*>(bytes.data());
    target.reserve(count);
    target.assign(first, first + std::min(count, bytes.size()));
    target.resize(count);
}

} // namespace zviptv
