// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <mutex>
#include <string>

namespace zviptv {

/// The journal's socket, connected once: looking up its path for each line would cost as much as sending the
/// line. May be used from any thread.
class JournalSocket
{
public:
    enum class Outcome
    {
        Sent,
        Full,  ///< the journal does not read its socket
        Absent ///< no journal runs
    };

    /// Sends one entry in the journal's native format. Never waits.
    Outcome Send(std::string const& entry);

private:
    class Connection;
    using Handle = std::shared_ptr<Connection const>;

    Handle Current();
    Handle Renewed(Handle const& failed);

    std::mutex m_mutex;
    Handle m_connection;
};

/// Appends a field to an entry; a value with line breaks is written with its length.
void AppendJournalField(std::string& entry, char const* name, char const* value);

} // namespace zviptv
