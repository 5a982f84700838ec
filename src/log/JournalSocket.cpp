// SPDX-License-Identifier: MIT
#include "log/JournalSocket.h"

#include <glib.h>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>

namespace zviptv {

/// A connected descriptor, closed by the destructor.
class JournalSocket::Connection
{
public:
    /// Null if no journal runs.
    static Handle Open();

    Connection(int descriptor, struct stat const& identity) : m_descriptor(descriptor), m_identity(identity)
    {
    }
    ~Connection()
    {
        if (IsOurs()) {
            close(m_descriptor);
        }
    }
    Connection(Connection const&) = delete;
    Connection& operator=(Connection const&) = delete;

    /// Whether the descriptor is still this socket: an application that becomes a daemon closes all
    /// descriptors that it does not know, and then opens others with the same numbers.
    bool IsOurs() const
    {
        struct stat status = {};
        return fstat(m_descriptor, &status) == 0 && status.st_dev == m_identity.st_dev &&
               status.st_ino == m_identity.st_ino;
    }

    Outcome Send(std::string const& entry) const
    {
        if (send(m_descriptor, entry.data(), entry.size(), MSG_NOSIGNAL | MSG_DONTWAIT) >= 0) {
            return Outcome::Sent;
        }
        return errno == EMSGSIZE || errno == ENOBUFS ? SendAsFile(entry) : OutcomeOfFailure();
    }

private:
    /// Sends an entry that is too long for a datagram, as a sealed file in memory.
    Outcome SendAsFile(std::string const& entry) const;

    static Outcome OutcomeOfFailure()
    {
        return errno == EAGAIN || errno == EINTR || errno == ENOMEM ? Outcome::Full : Outcome::Absent;
    }

    int m_descriptor;
    struct stat m_identity;
};

JournalSocket::Outcome JournalSocket::Connection::SendAsFile(std::string const& entry) const
{
    int const file = memfd_create("zv-iptv-log", MFD_CLOEXEC | MFD_ALLOW_SEALING);
    if (file < 0) {
        return Outcome::Full;
    }
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof file)] = {};
    msghdr message = {};
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    cmsghdr* const header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(sizeof file);
    std::memcpy(CMSG_DATA(header), &file, sizeof file);
    Outcome outcome = Outcome::Sent;
    if (write(file, entry.data(), entry.size()) != static_cast<ssize_t>(entry.size()) ||
        fcntl(file, F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE | F_SEAL_SEAL) != 0) {
        outcome = Outcome::Full;
    } else if (sendmsg(m_descriptor, &message, MSG_NOSIGNAL | MSG_DONTWAIT) < 0) {
        outcome = OutcomeOfFailure();
    }
    close(file);
    return outcome;
}

JournalSocket::Handle JournalSocket::Connection::Open()
{
    constexpr char path[] = "/run/systemd/journal/socket";
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    static_assert(sizeof path <= sizeof address.sun_path);
    std::memcpy(address.sun_path, path, sizeof path);
    struct stat status = {};
    int const descriptor = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (descriptor < 0) {
        return nullptr;
    }
    if (connect(descriptor, reinterpret_cast<sockaddr const*>(&address), sizeof address) != 0 ||
        fstat(descriptor, &status) != 0) {
        close(descriptor);
        return nullptr;
    }
    return std::make_shared<Connection>(descriptor, status);
}

JournalSocket::Outcome JournalSocket::Send(std::string const& entry)
{
    Handle const kept = Current();
    Outcome const outcome = kept == nullptr ? Outcome::Absent : kept->Send(entry);
    if (outcome != Outcome::Absent) {
        return outcome;
    }
    // Since the last line, the journal may have started, or have a new socket.
    Handle const renewed = Renewed(kept);
    return renewed == nullptr ? Outcome::Absent : renewed->Send(entry);
}

JournalSocket::Handle JournalSocket::Current()
{
    std::lock_guard<std::mutex> const lock(m_mutex);
    return m_connection != nullptr && m_connection->IsOurs() ? m_connection : nullptr;
}

/// Returns a connection to replace the one that failed: a new one, unless another thread has already made it.
JournalSocket::Handle JournalSocket::Renewed(Handle const& failed)
{
    std::lock_guard<std::mutex> const lock(m_mutex);
    if (m_connection == nullptr || m_connection == failed || !m_connection->IsOurs()) {
        m_connection = Connection::Open();
    }
    return m_connection;
}

void AppendJournalField(std::string& entry, char const* name, char const* value)
{
    entry += name;
    if (std::strchr(value, '\n') == nullptr) {
        entry += '=';
    } else {
        std::uint64_t const length = GUINT64_TO_LE(std::strlen(value));
        entry += '\n';
        entry.append(reinterpret_cast<char const*>(&length), sizeof length);
    }
    entry += value;
    entry += '\n';
}

} // namespace zviptv
