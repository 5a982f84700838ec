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

/// The largest difference between the announced size and the data, in bytes. It limits the memory for a
/// message that announces much and contains little: the rest is filled with zeros.
constexpr std::size_t MostMissing = std::size_t{1024} * 1024;

/// Empties `target` and returns the announced number of elements of a value of `carried` bytes. If the number
/// is negative, or over MostMissing bytes more than the value has, it throws std::length_error, and sets the
/// calling thread's failure with `key`.
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

/// Stores the first `announced` elements of `bytes` in `target`; missing elements are zero. Throws like
/// ClearForAnnounced().
template <typename Element>
void TakeAnnounced(std::vector<Element>& target, int announced, std::string const& bytes, char const* key)
{
    target.resize(ClearForAnnounced(target, announced, bytes.size(), key));
    std::size_t const count = std::min(target.size() * sizeof(Element), bytes.size());
    if (count > 0) {
        std::memcpy(target.data(), bytes.data(), count);
    }
}

/// The same for bytes: as there may be many, no byte is written twice.
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
