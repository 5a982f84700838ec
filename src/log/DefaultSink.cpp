#include "log/DefaultSink.h"

#include "log/JournalSocket.h"

#include <glib.h>
#include <syslog.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <string>

namespace zviptv {

namespace {

struct PriorityNames
{
    GLogLevelFlags glib;
    int syslog;
    char const* number; // the journal's PRIORITY field
    char const* word;
};

PriorityNames const& NamesOf(EZVLogPriority priority)
{
    static constexpr std::array<PriorityNames, 3> names{{
        {G_LOG_LEVEL_DEBUG, LOG_DEBUG, "7", "debug"},
        {G_LOG_LEVEL_INFO, LOG_INFO, "6", "info"},
        {G_LOG_LEVEL_WARNING, LOG_ERR, "3", "error"},
    }};
    return names.at(static_cast<std::size_t>(priority));
}

using Fields = std::array<GLogField, 6>;

/// As a file, which is how the journal takes what is too long for a datagram.
bool WriteToJournalAtLength(EZVLogPriority priority, Fields const& fields)
{
    return g_log_writer_journald(NamesOf(priority).glib, fields.data(), fields.size(), nullptr) ==
           G_LOG_WRITER_HANDLED;
}

bool WriteToJournal(EZVLogPriority priority, SourceLocation const& where, char const* line)
{
    static JournalSocket* const journal = new JournalSocket; // objects that outlive main still log
    std::string const lineNumber = std::to_string(where.line);
    Fields const fields{{
        {"MESSAGE", line, -1},
        {"PRIORITY", NamesOf(priority).number, -1},
        {"SYSLOG_IDENTIFIER", LogTag, -1},
        {"CODE_FILE", BaseName(where.file), -1},
        {"CODE_LINE", lineNumber.c_str(), -1},
        {"CODE_FUNC", where.function, -1},
    }};
    std::string entry;
    for (GLogField const& field : fields) {
        AppendJournalField(entry, field.key, static_cast<char const*>(field.value));
    }
    JournalSocket::Outcome const outcome = journal->Send(entry);
    return outcome == JournalSocket::Outcome::Sent ||
           (outcome == JournalSocket::Outcome::TooLong && WriteToJournalAtLength(priority, fields));
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
