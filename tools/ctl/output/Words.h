// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zviptv::ctl {

/// The text with ASCII letters in lower case.
std::string ToLower(std::string_view text);

/// "a, b, c"
std::string Join(std::vector<std::string> const& parts, std::string_view separator = ", ");

/// "1 packet", "2 packets"
std::string Counted(unsigned long long count, std::string const& noun);

/// At most three candidates that are most similar to `word`, the best first; empty if none is similar.
std::vector<std::string> NearWords(std::string_view word, std::vector<std::string> const& candidates);

} // namespace zviptv::ctl
