// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zviptv::ctl {

/// ASCII letters in lower case, everything else as it is.
std::string ToLower(std::string_view text);

/// "a, b, c"
std::string Join(std::vector<std::string> const& parts, std::string_view separator = ", ");

/// "1 packet", "2 packets"
std::string Counted(unsigned long long count, std::string const& noun);

/// The candidates most like `word`, the best first, three at most; empty when none is near.
std::vector<std::string> NearWords(std::string_view word, std::vector<std::string> const& candidates);

} // namespace zviptv::ctl
