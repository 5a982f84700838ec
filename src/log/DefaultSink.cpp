// SPDX-License-Identifier: MIT
#include "log/DefaultSink.h"

#include "log/JournalSocket.h"

#include <syslog.h>

#include <array>
#include <atomic>
#include <cstdio>
#include <cstring>
#include <initializer_list>
#include <string>

namespace zviptv {

namespace {

struct PriorityNames
{
    int syslog;
    char const* number; // for the journal's PRIORITY field
    char const* word;
};

PriorityNames const& NamesOf(EZVLogPriority priority)
{
    static constexpr std::array<PriorityNames, 3> names{{
        {LOG_DEBUG, "7", "debug"},
        {LOG_INFO, "6", "info"},
        {LOG_ERR, "3", "error"},
    }};
    return names.at(static_cast<std::size_t>(priority));
}

struct Field
{
    char const* name;
    char const* value;
};

std::string Entry(std::initializer_list<Field> fields)
{
    std::string entry;
    for (Field const& field : fields) {
        AppendJournalField(entry, field.name, field.value);
    }
    return entry;
}

/// The number of lines that were dropped since the last report.
std::atomic<unsigned long> droppedLines{0};

void ReportDropped(JournalSocket& journal)
{
    if (unsigned long const dropped = droppedLines.exchange(0)) {
        std::string const line = std::to_string(dropped) + " log lines dropped";
        if (journal.Send(Entry({{"MESSAGE", line.c_str()},
                                {"PRIORITY", NamesOf(ZV_LOG_ERROR).number},
                                {"SYSLOG_IDENTIFIER", LogTag}})) != JournalSocket::Outcome::Sent) {
            droppedLines += dropped;
        }
    }
}

/// Returns false if no journal runs. A line for which the journal has no room is dropped and counted.
bool WriteToJournal(EZVLogPriority priority, SourceLocation const& where, char const* line)
{
    static JournalSocket* const journal = new JournalSocket; // objects that outlive main() still log
    std::string const lineNumber = std::to_string(where.line);
    switch (journal->Send(Entry({{"MESSAGE", line},
                                 {"PRIORITY", NamesOf(priority).number},
                                 {"SYSLOG_IDENTIFIER", LogTag},
                                 {"CODE_FILE", BaseName(where.file)},
                                 {"CODE_LINE", lineNumber.c_str()},
                                 {"CODE_FUNC", where.function}}))) {
    case JournalSocket::Outcome::Sent:
        ReportDropped(*journal);
        return true;
    case JournalSocket::Outcome::Full:
        ++droppedLines;
        return true;
    case JournalSocket::Outcome::Absent:
        break;
    }
    return false;
}

} // namespace

char const* BaseName(char const* path)
{
    char const* const slash = std::strrchr(path, '/');
    return slash == nullptr ? path : slash + 1;
}

void WriteToSystemLog(EZVLogPriority priority, SourceLocation const& where, char const* line)
{
    if (!WriteToJournal(priority, where, line)) {
        syslog(LOG_USER | NamesOf(priority).syslog, "%s: %s", LogTag, line);
    }
}

void WriteToStandardError(EZVLogPriority priority, char const* line)
{
    std::size_t const length = std::strlen(line);
    bool const ended = length > 0 && line[length - 1] == '\n';
    std::fprintf(stderr, "%s %s: %s%s", LogTag, NamesOf(priority).word, line, ended ? "" : "\n");
}

} // namespace zviptv
