// SPDX-License-Identifier: MIT
#pragma once

#include "EventPrinter.h"
#include "SequenceDiagram.h"
#include "TraceOptions.h"
#include "TraceSummary.h"
#include "output/Failure.h"
#include "output/OutputFile.h"
#include "trace/CaptureWriter.h"
#include "trace/Conversation.h"
#include "trace/Monitor.h"
#include "trace/ProcessNames.h"

#include <exception>
#include <memory>
#include <optional>
#include <string>

namespace zviptv::ctl {

/// The command `trace`: shows, records, draws and sums up what happens on the bus, or has happened in a
/// capture file.
class Trace
{
public:
    explicit Trace(TraceOptions options);

    /// Until the file, the time or the bus ends, or the user does. @throws Failure
    ExitCode Run();

private:
    bool Prints() const;
    void OpenOutputs();
    void Watch();
    void Read();
    void Take(trace::Message const& message);
    void Pause();
    void Report();
    void Describe() const;

    TraceOptions const m_options;
    std::optional<trace::CaptureWriter> m_writer;
    std::optional<OutputFile> m_svg;
    std::optional<OutputFile> m_html;
    std::optional<EventPrinter> m_printer;
    std::optional<SequenceDiagram> m_diagram;
    std::optional<TraceSummary> m_summary;
    std::unique_ptr<trace::ProcessNames> m_processes; ///< of a live bus
    trace::Conversation m_conversation;
    std::uint64_t m_shown = 0;
    bool m_isRead = true;         ///< somebody reads what is printed
    std::exception_ptr m_failure; ///< of a handler
};

} // namespace zviptv::ctl
