// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

namespace zviptv::test {

struct GeneratedGuide
{
    std::uint32_t programmes = 0;
    std::uint64_t bytes = 0;
};

/// Writes a guide of about `bytes` bytes: 200 channels, programmes of 30 minutes, titles and categories that
/// repeat, descriptions that do not.
GeneratedGuide WriteGuide(std::string const& path, std::uint64_t bytes);

} // namespace zviptv::test
