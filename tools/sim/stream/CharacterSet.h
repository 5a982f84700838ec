// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace zviptv::sim {

/// The characters of `bytes`. Bytes that are not characters of `charset` (a name for iconv) become '?', one
/// for every `unit` bytes. @throws std::invalid_argument if iconv does not know the name
std::u32string ToUnicode(char const* charset, std::string_view bytes, std::size_t unit = 1);

/// The Unicode character of every byte, -1 if there is none; nullopt if `charset` is not known or its
/// characters have more than one byte.
std::optional<std::array<int, 256>> ByteCharacters(char const* charset);

} // namespace zviptv::sim
