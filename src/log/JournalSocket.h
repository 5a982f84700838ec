#pragma once

#include <memory>
#include <mutex>
#include <string>

namespace zviptv {

/// The journal's socket, connected once: to look its path up for each line would cost as much as the rest.
/// May be used from any thread; no lock is held while one waits for the journal.
class JournalSocket
{
public:
    enum class Outcome
    {
        Sent,
        TooLong, ///< for a datagram: the journal takes such entries as files
        Absent   ///< no journal runs
    };

    /// Sends one entry in the journal's own form. Waits while the journal's queue is full.
    Outcome Send(std::string const& entry);

private:
    class Connection;
    using Handle = std::shared_ptr<Connection const>;

    Handle Current();
    Handle Renewed(Handle const& failed);

    std::mutex m_mutex;
    Handle m_connection;
};

/// Appends a field to an entry; a value with line breaks takes the form that gives its length.
void AppendJournalField(std::string& entry, char const* name, char const* value);

} // namespace zviptv
