// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/SystemLog.h>

#include <mutex>
#include <string>

namespace zviptv::ctl {

/// Reads the library's log while it lives: the interface answers false both when the service refuses and when
/// it cannot be asked, and only the log tells which it was, and why. One at a time in a process.
class LogCollector
{
public:
    /// With `echo` every line is also written to standard error.
    explicit LogCollector(bool echo);
    ~LogCollector();

    LogCollector(LogCollector const&) = delete;
    LogCollector& operator=(LogCollector const&) = delete;

    /// Forgets the failed exchange, before the next call.
    void ForgetCall();

    /// Whether an exchange failed since ForgetCall().
    bool SendFailed() const;

    /// Why it failed, in words; never empty.
    std::string Reason() const;

    /// Whether it failed because the service gave the object no endpoint.
    bool LacksEndpoint() const;

    /// Whether a player control object destroyed itself since the last question.
    bool TakePlayerControlGone();

private:
    static void Sink(EZVLogPriority priority, char const* tag, char const* line, void* userData);

    void Take(EZVLogPriority priority, std::string const& line);
    void TakeError(std::string const& message);

    bool const m_echo;
    mutable std::mutex m_mutex;
    bool m_sendFailed = false;
    bool m_playerControlGone = false;
    std::string m_callReason;     ///< of the latest exchange
    std::string m_announceReason; ///< why the service gave the latest object no endpoint
    std::string m_helperError;    ///< of the latest announcement, of coming or going
};

} // namespace zviptv::ctl
