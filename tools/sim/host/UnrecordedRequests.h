// SPDX-License-Identifier: MIT
#pragma once

#include "process/FileHandle.h"

#include <string>

namespace zviptv::sim {

/// The requests that the recording of a replay does not have. The service writes them to a file in memory, a
/// line each, so that none is lost when it is killed.
class UnrecordedRequests
{
public:
    /// @throws std::system_error
    UnrecordedRequests();

    /// To be handed to the service.
    int File() const { return m_file.Get(); }

    /// A line for each request with its count, under a line that says what they are; empty if there are none.
    std::string Text() const;

private:
    FileHandle m_file;
};

} // namespace zviptv::sim
