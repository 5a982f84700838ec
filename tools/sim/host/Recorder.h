// SPDX-License-Identifier: MIT
#pragma once

#include "trace/CaptureWriter.h"
#include "trace/Conversation.h"
#include "trace/Monitor.h"
#include "trace/ProcessNames.h"

#include <string>

namespace zviptv::sim {

/// Records every message of a bus in a capture file while the main context is iterated. It queries the bus
/// for the processes of the applications, so that the file contains them, too.
class Recorder
{
public:
    /// @throws std::exception with a line for the user
    Recorder(std::string const& file, std::string const& address);

    /// Records the pending messages. Returns false if the file is incomplete; then a message was printed.
    bool Finish();

private:
    void Take(trace::Message const& message);
    void Flush();
    void Fail(std::exception const& failure);

    trace::CaptureWriter m_writer;
    trace::Conversation m_conversation;
    trace::Monitor m_monitor;
    trace::ProcessNames m_processes;
    bool m_hasFailed = false;
};

} // namespace zviptv::sim
