// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

namespace zviptv::ctl {

/// A time of 1/90000 s as "00:00:02.480", with this sign before the milliseconds.
inline std::string ClockText(std::uint64_t time, char separator = '.')
{
    std::uint64_t const milliseconds = time / 90;
    std::uint64_t const seconds = milliseconds / 1000;
    char text[40];
    std::snprintf(
        text, sizeof text, "%02llu:%02llu:%02llu%c%03llu", static_cast<unsigned long long>(seconds / 3600),
        static_cast<unsigned long long>(seconds / 60 % 60), static_cast<unsigned long long>(seconds % 60),
        separator, static_cast<unsigned long long>(milliseconds % 1000));
    return text;
}

} // namespace zviptv::ctl
