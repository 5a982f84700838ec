// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <mutex>
#include <string>

namespace zviptv {

/// The journal's socket, connected once: to look its path up for each line would cost as much as the rest.
/// May be used from any thread.
class JournalSocket
{
public:
    enum class Outcome
    {
        Sent,
        Full,  ///< the journal does not read
        Absent ///< no journal runs
    };

    /// Sends one entry in the journal's own form. Never waits.
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
