// SPDX-License-Identifier: MIT
#include "LogCollector.h"

#include <cstdio>
#include <utility>

namespace zviptv::ctl {

namespace {

constexpr char const* NoEndpoint = "it named no endpoint for this interface";

/// What follows `prefix` in `text`, if it starts so.
bool StripPrefix(std::string const& text, std::string const& prefix, std::string& rest)
{
    if (text.compare(0, prefix.size(), prefix) != 0) {
        return false;
    }
    rest = text.substr(prefix.size());
    return true;
}

/// The text behind "file: function(line) > ".
std::string MessageOf(std::string const& line)
{
    static std::string const mark = ") > ";
    std::size_t const found = line.find(mark);
    return found == std::string::npos ? line : line.substr(found + mark.size());
}

} // namespace

LogCollector::LogCollector(bool echo) : m_echo(echo)
{
    ZVSetLogSink(Sink, this);
}

LogCollector::~LogCollector()
{
    ZVSetLogSink(nullptr, nullptr);
}

void LogCollector::ForgetCall()
{
    std::lock_guard<std::mutex> const lock(m_mutex);
    m_sendFailed = false;
    m_callReason.clear();
}

bool LogCollector::SendFailed() const
{
    std::lock_guard<std::mutex> const lock(m_mutex);
    return m_sendFailed;
}

std::string LogCollector::Reason() const
{
    std::lock_guard<std::mutex> const lock(m_mutex);
    if (!m_callReason.empty()) {
        return m_callReason;
    }
    return m_announceReason.empty() ? "there is no connection to the service's endpoint"
                                    : "the service did not take the connection: " + m_announceReason;
}

bool LogCollector::TakePlayerControlGone()
{
    std::lock_guard<std::mutex> const lock(m_mutex);
    return std::exchange(m_playerControlGone, false);
}

bool LogCollector::LacksEndpoint() const
{
    std::lock_guard<std::mutex> const lock(m_mutex);
    return m_callReason.empty() && m_announceReason == NoEndpoint;
}

void LogCollector::Sink(EZVLogPriority priority, char const* /*tag*/, char const* line, void* userData)
{
    static_cast<LogCollector*>(userData)->Take(priority, line);
}

void LogCollector::Take(EZVLogPriority priority, std::string const& line)
{
    static char const* const words[] = {"debug", "info", "error"};
    std::lock_guard<std::mutex> const lock(m_mutex);
    if (m_echo) {
        std::fprintf(stderr, "[%s] %s\n", words[priority], line.c_str());
    }
    if (priority == ZV_LOG_ERROR) {
        TakeError(MessageOf(line));
    }
}

void LogCollector::TakeError(std::string const& message)
{
    std::string rest;
    if (message == "SendMessage failed.") {
        m_sendFailed = true;
    } else if (StripPrefix(message, "Error while sending message ", rest)) {
        m_callReason = rest;
    } else if (message == "Destroy CPlayerControlProxy") {
        m_playerControlGone = true;
    } else if (message == "G_IO_ERROR_TIMED_OUT") {
        m_helperError = "no answer within 2 seconds";
    } else if (message == "G_DBUS_ERROR_NAME_HAS_NO_OWNER") {
        m_helperError = "it does not run";
    } else if (StripPrefix(message, "Error : ", rest)) {
        m_helperError = rest;
    } else if (StripPrefix(message, "partner's name: ", rest)) {
        std::string const error = std::exchange(m_helperError, std::string());
        m_announceReason = error.empty() ? NoEndpoint : error;
        if (!rest.empty()) {
            m_announceReason.clear();
        }
    }
}

} // namespace zviptv::ctl
