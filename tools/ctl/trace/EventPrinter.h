// SPDX-License-Identifier: MIT
#pragma once

#include "output/OutputFile.h"
#include "trace/Event.h"

#include <string>

namespace zviptv::ctl {

/// Writes events to standard output, a line each.
class EventPrinter
{
public:
    explicit EventPrinter(bool asJson) : m_asJson(asJson), m_out("-") {}

    /// Adds a line. Lines are collected; many are written at once. False if the reader has gone.
    bool Print(trace::Event const& event);

    /// Writes what was collected. False if the reader has gone.
    bool Flush();

private:
    bool const m_asJson;
    OutputFile m_out;
    std::string m_lines;
    bool m_isRead = true;
};

} // namespace zviptv::ctl
