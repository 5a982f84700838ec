// SPDX-License-Identifier: MIT
#include "Recorder.h"

#include "common/PrintableText.h"

#include <cstdio>

namespace zviptv::sim {

Recorder::Recorder(std::string const& file, std::string const& address)
    : m_writer(file, "zviptv-sim " ZVIPTV_VERSION),
      m_conversation([this](std::string const& busName) { m_processes.Ask(busName); }),
      m_monitor(address, {[this](trace::Message const& message) { Take(message); }, [this] { Flush(); }, {}}),
      m_processes(address)
{
}

bool Recorder::Finish()
{
    if (!m_monitor.CatchUp()) {
        std::fprintf(
            stderr,
            "zviptv-sim: the end of the recording is missing: the bus did not deliver it within %d s\n",
            static_cast<int>(trace::TransitTime.count()));
        m_hasFailed = true;
    }
    if (m_monitor.Lost() != 0) {
        std::fprintf(stderr, "zviptv-sim: messages that could not be recorded: %llu\n",
                     static_cast<unsigned long long>(m_monitor.Lost()));
        m_hasFailed = true;
    }
    return !m_hasFailed;
}

void Recorder::Take(trace::Message const& message)
{
    try {
        m_writer.Write(message);
    } catch (trace::CaptureError const& failure) {
        Fail(failure);
    }
    m_conversation.Add(message);
}

void Recorder::Flush()
{
    try {
        m_writer.Flush();
    } catch (trace::CaptureError const& failure) {
        Fail(failure);
    }
}

void Recorder::Fail(std::exception const& failure)
{
    std::fprintf(stderr, "zviptv-sim: %s\n", EscapeText(failure.what()).c_str());
    m_hasFailed = true;
}

} // namespace zviptv::sim
