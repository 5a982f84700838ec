// SPDX-License-Identifier: MIT
#pragma once

#include <fstream>
#include <iterator>
#include <string>

namespace zviptv::test {

/// The contents of the file; empty if it cannot be read.
inline std::string ReadFile(std::string const& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace zviptv::test
