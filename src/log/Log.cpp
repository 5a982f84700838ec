// SPDX-License-Identifier: MIT
#include "log/Log.h"

#include "log/DefaultSink.h"

#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace zviptv {

std::atomic<int> leastLogPriority{std::numeric_limits<int>::min()};

namespace {

enum class Destination
{
    System,
    StandardError,
    None
};

std::string Prefix(SourceLocation const& where)
{
    std::string prefix(BaseName(where.file));
    prefix += ": ";
    prefix += where.function;
    prefix += '(';
    prefix += std::to_string(where.line);
    prefix += ") > ";
    return prefix;
}

class Logger
{
public:
    /// Never destroyed: objects that outlive main() still log.
    static Logger& Instance()
    {
        static Logger* const logger = new Logger;
        return *logger;
    }

    void SetSink(ZVLogSink sink, void* userData)
    {
        std::lock_guard<std::mutex> const lock(m_mutex);
        m_sink = {sink, userData};
        Publish();
    }

    void Write(EZVLogPriority priority, SourceLocation const& where, char const* line)
    {
        Sink const sink = CurrentSink();
        if (sink.call != nullptr) {
            sink.call(priority, LogTag, line, sink.userData);
        } else if (m_destination == Destination::System) {
            WriteToSystemLog(priority, where, line);
        } else if (m_destination == Destination::StandardError) {
            WriteToStandardError(priority, line);
        }
    }

private:
    struct Sink
    {
        ZVLogSink call = nullptr;
        void* userData = nullptr;
    };

    Logger()
    {
        std::vector<std::string> complaints;
        m_destination = FromEnvironment<Destination>("ZV_IPTV_LOG", Destination::System,
                                                     {{{"system", Destination::System},
                                                       {"stderr", Destination::StandardError},
                                                       {"none", Destination::None}}},
                                                     complaints);
        m_threshold = FromEnvironment<EZVLogPriority>(
            "ZV_IPTV_LOG_LEVEL", ZV_LOG_DEBUG,
            {{{"debug", ZV_LOG_DEBUG}, {"info", ZV_LOG_INFO}, {"error", ZV_LOG_ERROR}}}, complaints);
        SourceLocation const where = SourceLocation::Here();
        Publish();
        for (std::string const& complaint : complaints) {
            Write(ZV_LOG_ERROR, where, (Prefix(where) + complaint).c_str());
        }
    }

    /// The value of an environment variable's word; an unknown word is added to the complaints.
    template <typename T>
    static T FromEnvironment(char const* variable, T fallback,
                             std::array<std::pair<char const*, T>, 3> const& words,
                             std::vector<std::string>& complaints)
    {
        char const* const text = std::getenv(variable);
        if (text == nullptr || *text == '\0') {
            return fallback;
        }
        for (auto const& [word, value] : words) {
            if (std::strcmp(text, word) == 0) {
                return value;
            }
        }
        complaints.push_back(std::string(variable) + "=" + text + " is not known and is ignored: use " +
                             words[0].first + ", " + words[1].first + " or " + words[2].first);
        return fallback;
    }

    /// Sets the threshold of IsLogWanted().
    void Publish() const
    {
        bool const isRead = m_destination != Destination::None || m_sink.call != nullptr;
        leastLogPriority = isRead ? static_cast<int>(m_threshold) : std::numeric_limits<int>::max();
    }

    Sink CurrentSink()
    {
        std::lock_guard<std::mutex> const lock(m_mutex);
        return m_sink;
    }

    std::mutex m_mutex;
    Sink m_sink;
    Destination m_destination;
    EZVLogPriority m_threshold;
};

__attribute__((format(printf, 2, 0))) void AppendFormatted(std::string& line, char const* format,
                                                           va_list arguments)
{
    va_list again;
    va_copy(again, arguments);
    int const length = std::vsnprintf(nullptr, 0, format, again);
    va_end(again);
    if (length <= 0) {
        return;
    }
    std::size_t const start = line.size();
    line.resize(start + static_cast<std::size_t>(length) + 1);
    std::vsnprintf(&line[start], static_cast<std::size_t>(length) + 1, format, arguments);
    line.pop_back();
}

} // namespace

void WriteLog(EZVLogPriority priority, SourceLocation const& where, char const* format, ...)
{
    Logger& logger = Logger::Instance(); // before the question, which it answers
    if (!IsLogWanted(priority)) {
        return;
    }
    std::string line = Prefix(where);
    va_list arguments;
    va_start(arguments, format);
    AppendFormatted(line, format, arguments);
    va_end(arguments);
    logger.Write(priority, where, line.c_str());
}

void WriteLogEntry(SourceLocation const& where, EZVLogPriority priority)
{
    Logger& logger = Logger::Instance();
    if (IsLogWanted(priority)) {
        logger.Write(priority, where, Prefix(where).c_str());
    }
}

} // namespace zviptv

void ZVSetLogSink(ZVLogSink sink, void* userData)
{
    zviptv::Logger::Instance().SetSink(sink, userData);
}
