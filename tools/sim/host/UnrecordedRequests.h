// SPDX-License-Identifier: MIT
#pragma once

#include "process/FileHandle.h"

#include <string>

namespace zviptv::sim {

/// The requests of a replay that were not recorded. The service writes them to a file in memory, one per
/// line, so that none is lost when the service is killed.
class UnrecordedRequests
{
public:
    /// @throws std::system_error
    UnrecordedRequests();

    /// The descriptor to pass to the service.
    int File() const { return m_file.Get(); }

    /// A heading, and a line with the count for each request; empty if there are none.
    std::string Text() const;

private:
    FileHandle m_file;
};

} // namespace zviptv::sim
