// SPDX-License-Identifier: MIT
#include "LogCapture.h"

#include <algorithm>
#include <chrono>

namespace zviptv::test {

namespace {
constexpr char Separator[] = " > ";
}

std::string LogLine::Message() const
{
    std::size_t const at = line.find(Separator);
    return at == std::string::npos ? std::string() : line.substr(at + 3);
}

std::string LogLine::Origin() const
{
    return line.substr(0, line.find('('));
}

LogCapture::LogCapture()
{
    ZVSetLogSink(Sink, this);
}

LogCapture::~LogCapture()
{
    ZVSetLogSink(nullptr, nullptr);
}

void LogCapture::Sink(EZVLogPriority priority, char const* tag, char const* line, void* userData)
{
    auto* const self = static_cast<LogCapture*>(userData);
    LogLine const written{priority, tag, line};
    {
        std::lock_guard<std::mutex> const lock(self->m_mutex);
        self->m_lines.push_back(written);
    }
    self->HoldIfAsked(written.Origin());
}

void LogCapture::HoldIfAsked(std::string const& origin)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    if (m_holdAt.empty() || m_holdAt != origin) {
        return;
    }
    m_holdAt.clear();
    m_isHeld = true;
    m_holding.notify_all();
    m_holding.wait(lock, [this] { return !m_isHeld; });
}

void LogCapture::HoldAt(std::string const& origin)
{
    std::lock_guard<std::mutex> const lock(m_mutex);
    m_holdAt = origin;
}

bool LogCapture::WaitUntilHeld()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_holding.wait_for(lock, std::chrono::seconds(20), [this] { return m_isHeld; });
}

void LogCapture::Release()
{
    std::lock_guard<std::mutex> const lock(m_mutex);
    m_holdAt.clear();
    m_isHeld = false;
    m_holding.notify_all();
}

void LogCapture::HoldAtNext(std::string const& origin)
{
    std::lock_guard<std::mutex> const lock(m_mutex);
    m_holdAt = origin;
    m_isHeld = false;
    m_holding.notify_all();
}

std::vector<LogLine> LogCapture::Lines() const
{
    std::lock_guard<std::mutex> const lock(m_mutex);
    return m_lines;
}

std::vector<std::string> LogCapture::Messages() const
{
    std::vector<std::string> messages;
    for (LogLine const& line : Lines()) {
        messages.push_back(line.Message());
    }
    return messages;
}

std::vector<std::string> LogCapture::Messages(EZVLogPriority priority) const
{
    std::vector<std::string> messages;
    for (LogLine const& line : Lines()) {
        if (line.priority == priority) {
            messages.push_back(line.Message());
        }
    }
    return messages;
}

bool LogCapture::Has(EZVLogPriority priority, std::string const& message) const
{
    std::vector<std::string> const messages = Messages(priority);
    return std::find(messages.begin(), messages.end(), message) != messages.end();
}

std::size_t LogCapture::Count(std::string const& message) const
{
    std::vector<std::string> const messages = Messages();
    return static_cast<std::size_t>(std::count(messages.begin(), messages.end(), message));
}

void LogCapture::Clear()
{
    std::lock_guard<std::mutex> const lock(m_mutex);
    m_lines.clear();
}

} // namespace zviptv::test
