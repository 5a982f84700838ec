// SPDX-License-Identifier: MIT
#pragma once

#include "input/InputCounters.h"

#include <zviptv/MessageBuffer.h>

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace zviptv::sim {

/// A value as people read it: short text with control characters escaped, long text and bytes by their size.
std::string Shown(std::string const& value);

/// Shows what the service does: a line a request, and a status line.
/// docs/reference/simulator.md has the JSON members.
class RequestLog
{
public:
    /// Entry::replay of a request that the recording does not have.
    static constexpr char NotRecorded[] = "not recorded";

    enum class Form
    {
        Quiet,
        Text, ///< for people: to standard error, the status line in place on a terminal
        Json  ///< one object a line: to standard output
    };

    struct Entry
    {
        std::string endpoint; ///< type word
        std::string busName;  ///< of the application
        CMessageBuffer const& request;
        CMessageBuffer const* reply; ///< null when there is none
        std::string note;            ///< what a fault did; may be empty
        std::chrono::microseconds took;
        std::string replay; ///< how it differs from a recorded reply; may be empty
    };

    /// An application that asked for data.
    struct Subscriber
    {
        std::string busName;
        std::uint64_t sent = 0;    ///< notifications since it came
        std::uint64_t dropped = 0; ///< notifications that found its queue full
        std::size_t queued = 0;    ///< notifications that wait for it
        bool pes = false;          ///< it wants PES packets
        bool captions = false;     ///< it wants captions
    };

    struct Status
    {
        std::size_t clients = 0; ///< applications that have announced themselves
        std::uint64_t packetsPerSecond = 0;
        std::uint64_t dropped = 0; ///< in all, those of applications that have left included
        std::vector<Subscriber> subscribers;
        std::string appId;       ///< that SetAppID has told last; may be empty
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
    /// @throws std::runtime_error with a line for the user when standard output does not take it, or has not
    /// taken what came before
    void Write(Status const& status);
    /// Where applications find the private bus. @throws as Write(Status) does
    void WriteBus(std::string const& address);

    /// A line for the user, in every form: to standard error, with control characters escaped.
    void Say(std::string const& text);

private:
    void ClearStatus();

    Form m_form;
    bool m_statusShown = false;
};

} // namespace zviptv::sim
