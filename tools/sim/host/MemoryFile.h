#pragma once

#include "process/FileHandle.h"

#include <string>

namespace zviptv::sim {

/// A file without a name, to be handed to a program. Gone when the last who has it open is.
class MemoryFile
{
public:
    /// @throws std::system_error
    explicit MemoryFile(std::string const& contents = {});

    int Descriptor() const { return m_file.Get(); }

    std::string Contents() const;

private:
    FileHandle m_file;
};

} // namespace zviptv::sim
