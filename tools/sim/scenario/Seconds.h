// SPDX-License-Identifier: MIT
#pragma once

#include <cstdio>
#include <string>

namespace zviptv::sim {

/// With at most three decimals, without zeros at the end: "1.25"
inline std::string SecondsText(double seconds)
{
    char text[64];
    std::snprintf(text, sizeof(text), "%.3f", seconds);
    std::string shown = text;
    shown.erase(shown.find_last_not_of('0') + 1);
    if (shown.back() == '.') {
        shown.pop_back();
    }
    return shown;
}

} // namespace zviptv::sim
