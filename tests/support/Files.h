// SPDX-License-Identifier: MIT
#pragma once

#include <fstream>
#include <sstream>
#include <string>

namespace zviptv::test {

/// The contents of the file; empty if it cannot be read.
inline std::string ReadFile(std::string const& path)
{
    std::ostringstream contents;
    contents << std::ifstream(path, std::ios::binary).rdbuf();
    return contents.str();
}

} // namespace zviptv::test
