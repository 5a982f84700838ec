// SPDX-License-Identifier: MIT
#pragma once

#include "Fuzz.h"

#include <sys/mman.h>
#include <unistd.h>

#include <string>
#include <string_view>

namespace zviptv::fuzz {

/// A file in memory with a name.
class MemoryFile
{
public:
    explicit MemoryFile(std::string_view bytes) : m_descriptor(memfd_create("input", MFD_CLOEXEC))
    {
        Require(write(m_descriptor, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()),
                "the input is written");
    }
    ~MemoryFile() { close(m_descriptor); }
    MemoryFile(MemoryFile const&) = delete;
    MemoryFile& operator=(MemoryFile const&) = delete;

    std::string Path() const { return "/proc/self/fd/" + std::to_string(m_descriptor); }

private:
    int const m_descriptor;
};

} // namespace zviptv::fuzz
