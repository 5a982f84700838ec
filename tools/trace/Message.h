// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

namespace zviptv::trace {

constexpr std::int64_t MicrosecondsPerSecond = 1'000'000;

/// A D-Bus message with its time on the bus.
struct Message
{
    std::int64_t time = 0; ///< microseconds since 1970, UTC
    std::string bytes;
};

/// The longest message that the D-Bus specification allows, in bytes.
constexpr std::size_t LongestMessage = 128U * 1024U * 1024U;

} // namespace zviptv::trace
