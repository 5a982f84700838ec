// SPDX-License-Identifier: MIT
#include "UnrecordedRequests.h"

#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <map>
#include <sstream>
#include <system_error>

namespace zviptv::sim {

UnrecordedRequests::UnrecordedRequests() : m_file(memfd_create("zviptv-sim", MFD_CLOEXEC))
{
    if (!m_file) {
        throw std::system_error(errno, std::generic_category(), "cannot make a file in memory");
    }
}

std::string UnrecordedRequests::Text() const
{
    std::stringstream lines;
    std::array<char, 4096> buffer;
    off_t at = 0;
    for (ssize_t size = 0; (size = pread(m_file.Get(), buffer.data(), buffer.size(), at)) > 0; at += size) {
        lines.write(buffer.data(), size);
    }
    std::map<std::string, std::uint64_t> counts;
    for (std::string line; std::getline(lines, line);) {
        ++counts[line];
    }
    std::string text;
    for (auto const& [request, count] : counts) {
        text += (text.empty() ? "zviptv-sim: requests that were not recorded:\n  " : "  ") +
                std::to_string(count) + " x " + request + "\n";
    }
    return text;
}

} // namespace zviptv::sim
