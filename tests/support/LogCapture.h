// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/SystemLog.h>

#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

namespace zviptv::test {

struct LogLine
{
    EZVLogPriority priority;
    std::string tag;
    /// The whole line.
    std::string line;

    /// The text after "file: function(line) > "; empty for an entry line.
    std::string Message() const;
    /// "file: function"
    std::string Origin() const;
};

/// Catches the library's log lines from construction to destruction, on any thread.
class LogCapture
{
public:
    LogCapture();
    ~LogCapture();
    LogCapture(LogCapture const&) = delete;
    LogCapture& operator=(LogCapture const&) = delete;

    std::vector<LogLine> Lines() const;
    /// The messages alone, in order.
    std::vector<std::string> Messages() const;
    std::vector<std::string> Messages(EZVLogPriority priority) const;
    /// Whether a line of this priority has exactly this message.
    bool Has(EZVLogPriority priority, std::string const& message) const;
    std::size_t Count(std::string const& message) const;
    void Clear();

    /// Stops the thread that writes the next line of `origin` inside the log sink, until Release().
    void HoldAt(std::string const& origin);
    /// True when a thread has been stopped; false after 20 s without one.
    bool WaitUntilHeld();
    void Release();
    /// Release(), but for the next line of `origin`.
    void HoldAtNext(std::string const& origin);

private:
    static void Sink(EZVLogPriority priority, char const* tag, char const* line, void* userData);

    void HoldIfAsked(std::string const& origin);

    mutable std::mutex m_mutex;
    std::vector<LogLine> m_lines;
    std::condition_variable m_holding;
    std::string m_holdAt;
    bool m_isHeld = false;
};

} // namespace zviptv::test
