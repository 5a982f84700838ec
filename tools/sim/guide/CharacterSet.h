#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace zviptv::sim {

/// `bytes` as UTF-8 without control characters; nothing when `charset` (a name that iconv knows) is not known
/// or does not have one of the bytes.
std::optional<std::string> ToUtf8(char const* charset, std::string_view bytes);

/// The Unicode character of every byte, -1 where there is none; nothing when `charset` is not known or its
/// characters take more than a byte.
std::optional<std::array<int, 256>> ByteCharacters(char const* charset);

} // namespace zviptv::sim
