// SPDX-License-Identifier: MIT
#pragma once

#include "input/InputCounters.h"

#include <zviptv/MessageBuffer.h>

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace zviptv::sim {

/// A value for people: short text with escaped control characters, long text and bytes as their size.
std::string Shown(std::string const& value);

/// Shows the work of the service: a line for each request, and a status line.
/// docs/reference/simulator.md has the JSON members.
class RequestLog
{
public:
    /// Value of Entry::replay for a request that was not recorded.
    static constexpr char NotRecorded[] = "not recorded";

    enum class Form
    {
        Quiet,
        Text, ///< for people: to standard error, the status line in place on a terminal
        Json  ///< one object per line: to standard output
    };

    struct Entry
    {
        std::string endpoint; ///< type word
        std::string busName;  ///< of the application
        CMessageBuffer const& request;
        CMessageBuffer const* reply; ///< null if there is none
        std::string note;            ///< effect of a fault; may be empty
        std::chrono::microseconds took;
        std::string replay; ///< difference from a recorded reply; may be empty
    };

    /// An application that has subscribed to data.
    struct Subscriber
    {
        std::string busName;
        std::uint64_t sent = 0;    ///< notifications since it subscribed
        std::uint64_t dropped = 0; ///< notifications that were dropped because its queue was full
        std::size_t queued = 0;    ///< notifications in its queue
        bool pes = false;          ///< it has subscribed to PES packets
        bool captions = false;     ///< it has subscribed to captions
    };

    struct Status
    {
        std::size_t clients = 0; ///< applications that have announced themselves
        std::uint64_t packetsPerSecond = 0;
        std::uint64_t dropped = 0; ///< in total, including those of applications that have left
        std::vector<Subscriber> subscribers;
        std::string appId;       ///< last id of SetAppID; may be empty
        bool audioMuted = false; ///< by MuteAudio
        bool videoMuted = false; ///< by MuteVideo
        bool locked = false;     ///< the programme or the service, until it is unlocked
        InputCounters input;
    };

    explicit RequestLog(Form form) : m_form(form) {}
    /// Ends the status line.
    ~RequestLog();
    RequestLog(RequestLog const&) = delete;
    RequestLog& operator=(RequestLog const&) = delete;

    bool WantsStatus() const { return m_form != Form::Quiet; }
    void Write(Entry const& entry);
    /// @throws std::runtime_error with a line for the user if this or earlier output could not be written to
    /// standard output
    void Write(Status const& status);
    /// Writes the address of the private bus. @throws like Write(Status)
    void WriteBus(std::string const& address);

    /// Writes a line for the user, in both forms to standard error, with escaped control characters.
    void WriteLine(std::string const& text);

private:
    void ClearStatus();

    Form m_form;
    bool m_statusShown = false;
};

} // namespace zviptv::sim
