// SPDX-License-Identifier: MIT
#pragma once

#include "process/FileHandle.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace zviptv::sim {

/// Stores bytes in a file without a name instead of in memory. The file is in $TMPDIR, or /tmp, and is
/// removed with the object. Not thread-safe.
class Spool
{
public:
    /// The place of some bytes.
    struct Piece
    {
        std::uint64_t offset = 0;
        std::uint32_t size = 0;
    };

    /// @throws std::runtime_error with a line for the user, as Add()
    Spool();

    /// @throws std::runtime_error if the bytes cannot be written
    Piece Add(std::string_view bytes);

    /// The bytes of a piece. @throws std::runtime_error if they cannot be read
    std::string Read(Piece piece);

private:
    void Flush();

    FileHandle m_file;
    std::uint64_t m_written = 0; ///< bytes in the file
    std::string m_buffer;        ///< the following bytes
};

} // namespace zviptv::sim
