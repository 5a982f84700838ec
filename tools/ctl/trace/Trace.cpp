// SPDX-License-Identifier: MIT
#include "Trace.h"

#include "Interruption.h"

#include "common/PrintableText.h"
#include "glib/Owned.h"
#include "output/Answer.h"
#include "output/Words.h"
#include "session/Explanations.h"
#include "session/Loop.h"

#include <csignal>
#include <iostream>
#include <utility>

namespace zviptv::ctl {

namespace {

/// Time after which they want to know what a program waits for.
constexpr std::chrono::seconds PatienceOfUsers{1};

std::string BusAddress()
{
    Error error;
    Owned<char> const address(g_dbus_address_get_for_bus_sync(G_BUS_TYPE_SYSTEM, nullptr, error.Out()));
    if (error) {
        throw Failure(ExitCode::NoService, std::string("the system bus has no address (") + error.Message() +
                                               "): set DBUS_SYSTEM_BUS_ADDRESS to a bus that runs");
    }
    return address.get();
}

void WriteFile(OutputFile& file, std::string const& text)
{
    file.Write(text.data(), text.size());
    file.Close();
}

void PrintMessage(std::string const& text)
{
    std::cerr << "zviptvctl: " << PrintableText(text) << std::endl;
}

} // namespace

Trace::Trace(TraceOptions options)
    : m_options(std::move(options)),
      m_conversation(
          [this](std::string const& busName) {
              if (m_processes) {
                  m_processes->Ask(busName);
              }
          },
          [this](int processId) { return m_processes ? m_processes->ProgramOf(processId) : std::string(); })
{
    if (!m_options.svg.empty() || !m_options.html.empty()) {
        m_diagram.emplace();
    }
    if (m_options.sumsUp) {
        m_summary.emplace();
    }
    if (Prints()) {
        m_printer.emplace(m_options.asJson);
    }
}

/// A diagram or a summary, and a recording on standard output, come instead of the lines.
bool Trace::Prints() const
{
    return !m_options.sumsUp && m_options.svg.empty() && m_options.html.empty() && m_options.out != "-";
}

ExitCode Trace::Run()
{
    try {
        std::exception_ptr failure;
        try {
            if (m_options.in.empty()) {
                Watch();
            } else {
                Read();
            }
        } catch (...) {
            if (m_conversation.Count().messages == 0) {
                throw;
            }
            failure = std::current_exception(); // what came before is shown first
        }
        Pause();
        Report();
        if (failure) {
            std::rethrow_exception(failure);
        }
    } catch (trace::MonitorError const& error) {
        throw Failure(error.HasBus() ? ExitCode::NoAnswer : ExitCode::NoService, error.what());
    } catch (trace::CaptureWriteError const& error) {
        throw Failure(ExitCode::CannotWrite, error.what());
    } catch (trace::CaptureError const& error) {
        throw Failure(ExitCode::Malformed, error.what());
    }
    return ExitCode::Accepted;
}

/// Files that cannot be written are reported before the user has waited for their content.
void Trace::OpenOutputs()
{
    if (!m_options.out.empty()) {
        m_writer.emplace(m_options.out, "zviptvctl " ZVIPTV_VERSION);
    }
    if (!m_options.svg.empty()) {
        m_svg.emplace(m_options.svg);
    }
    if (!m_options.html.empty()) {
        m_html.emplace(m_options.html);
    }
}

void Trace::Watch()
{
    OpenOutputs();
    Loop loop;
    std::string end;
    bool isOver = false;
    auto const quit = [&] {
        isOver = true;
        loop.Quit();
    };
    auto const guarded = [this, quit](auto const& work) {
        try {
            work();
        } catch (...) {
            m_failure = std::current_exception();
        }
        if (m_failure || !m_isRead) {
            quit();
        }
    };
    EventSource const interrupted = Loop::OnSignal(SIGINT, quit);
    EventSource const terminated = Loop::OnSignal(SIGTERM, quit);
    EventSource const hungUp = IsIgnored(SIGHUP) ? EventSource() : Loop::OnSignal(SIGHUP, quit);
    std::string const address = BusAddress();
    trace::Monitor monitor(address, {[&](trace::Message const& message) {
                                         guarded([&] { m_failure ? void() : Take(message); });
                                     },
                                     [&] { guarded([&] { m_failure ? void() : Pause(); }); },
                                     [&](std::string const& reason) {
                                         end = reason;
                                         quit();
                                     }});
    m_processes = std::make_unique<trace::ProcessNames>(address);
    PrintMessage("watching the bus at " + address + "; Ctrl-C ends it");
    EventSource over = m_options.duration ? Loop::Every(*m_options.duration, quit) : EventSource();
    loop.Run([](std::exception const&) { throw; });
    if (end.empty() && !m_failure && m_isRead) {
        isOver = false;
        over = Loop::Every(PatienceOfUsers, [isSaid = false]() mutable {
            if (!std::exchange(isSaid, true)) {
                PrintMessage("waiting for messages in transit; Ctrl-C ends the wait");
            }
        });
        if (!monitor.CatchUp(trace::TransitTime, [&isOver] { return isOver; }) && end.empty() && m_isRead) {
            PrintMessage("the last messages are missing: the bus has not delivered them yet");
        }
    }
    if (m_failure) {
        std::rethrow_exception(m_failure);
    }
    if (monitor.Lost() != 0) {
        PrintMessage(Counted(monitor.Lost(), "message") + " could not be read");
    }
    if (!end.empty()) {
        throw Failure(ExitCode::NoAnswer, BusClosed);
    }
}

void Trace::Read()
{
    Interruption const interruption;
    trace::CaptureReader reader(
        {m_options.in, m_options.follows, [this] { Pause(); }, [] { return Interruption::HasCome(); }});
    OpenOutputs();
    try {
        for (trace::Message message; m_isRead && reader.Next(message);) {
            Take(message);
        }
    } catch (trace::CaptureError const&) {
        if (!Interruption::HasCome()) { // which may have come in the middle of a message
            throw;
        }
    }
    if (reader.Cut() != 0) {
        PrintMessage(reader.CutText());
    }
}

void Trace::Take(trace::Message const& message)
{
    if (m_writer) {
        m_writer->Write(message);
    }
    auto const event = m_conversation.Add(message);
    if (!event || !m_options.filter.Passes(*event)) {
        return;
    }
    ++m_shown;
    if (m_printer) {
        m_isRead = m_printer->Print(*event);
    }
    if (m_diagram) {
        m_diagram->Add(*event);
    }
    if (m_summary) {
        m_summary->Add(*event);
    }
}

/// Nothing more has come for now: what came is shown.
void Trace::Pause()
{
    if (m_writer) {
        m_writer->Flush();
    }
    if (m_printer) {
        m_isRead = m_printer->Flush();
    }
}

void Trace::Report()
{
    if (m_svg) {
        WriteFile(*m_svg, m_diagram->Svg());
    }
    if (m_html) {
        WriteFile(*m_html, m_diagram->Html());
    }
    if (m_summary) {
        trace::Counts const& counts = m_conversation.Count();
        WriteOutput(m_options.asJson ? Compact(m_summary->ToJson(counts)) + "\n" : m_summary->Text(counts));
    }
    Describe();
}

void Trace::Describe() const
{
    trace::Counts const& counts = m_conversation.Count();
    std::string text = Counted(m_shown, "event") + " of " + Counted(counts.messages, "message");
    if (counts.malformed != 0) {
        text += "; " + std::to_string(counts.malformed) + " malformed (" + counts.firstMalformed + ")";
    }
    if (counts.forgotten != 0) {
        text += "; " + std::to_string(counts.forgotten) +
                " requests without a reply were dropped, because too many others followed";
    }
    PrintMessage(text);
}

} // namespace zviptv::ctl
