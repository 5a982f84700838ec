#pragma once

#include <sys/types.h>

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
        TooLong, ///< for a datagram: the journal takes such entries as files
        Absent   ///< no journal runs
    };

    JournalSocket() = default;
    ~JournalSocket();
    JournalSocket(JournalSocket const&) = delete;
    JournalSocket& operator=(JournalSocket const&) = delete;

    /// Sends one entry in the journal's own form. Waits while the journal's queue is full.
    Outcome Send(std::string const& entry);

private:
    bool IsOpen() const;
    bool Open();
    void Close();

    std::mutex m_mutex;
    int m_socket = -1;
    dev_t m_device = 0;
    ino_t m_inode = 0;
};

/// Appends a field to an entry; a value with line breaks takes the form that gives its length.
void AppendJournalField(std::string& entry, char const* name, char const* value);

} // namespace zviptv
