// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace zviptv::sim {

/// The characters of `bytes`. What is no character of `charset` (a name that iconv knows) becomes '?', one
/// for every `unit` bytes. @throws std::invalid_argument when iconv does not know the name
std::u32string ToUnicode(char const* charset, std::string_view bytes, std::size_t unit = 1);

/// The Unicode character of every byte, -1 where there is none; nothing when `charset` is not known or its
/// characters take more than a byte.
std::optional<std::array<int, 256>> ByteCharacters(char const* charset);

} // namespace zviptv::sim
