#pragma once

#include <string>

namespace zviptv::sim {

/// A file without a name, for a program that is run: it inherits the descriptor. Gone when the last who has
/// it open is.
class MemoryFile
{
public:
    /// @throws std::system_error
    explicit MemoryFile(std::string const& contents = {});
    ~MemoryFile();
    MemoryFile(MemoryFile const&) = delete;
    MemoryFile& operator=(MemoryFile const&) = delete;

    int Descriptor() const { return m_descriptor; }

    /// Opens it in a process that has inherited it.
    std::string Path() const { return "/proc/self/fd/" + std::to_string(m_descriptor); }

    std::string Contents() const;

private:
    int m_descriptor;
};

} // namespace zviptv::sim
