#include "log/JournalSocket.h"

#include <glib.h>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>

namespace zviptv {

namespace {

constexpr char Path[] = "/run/systemd/journal/socket";

bool SendAll(int socket, std::string const& entry)
{
    ssize_t sent = -1;
    do {
        sent = send(socket, entry.data(), entry.size(), MSG_NOSIGNAL);
    } while (sent < 0 && errno == EINTR);
    return sent >= 0;
}

bool IsTooLong(int error)
{
    return error == EMSGSIZE || error == ENOBUFS;
}

} // namespace

JournalSocket::~JournalSocket()
{
    Close();
}

JournalSocket::Outcome JournalSocket::Send(std::string const& entry)
{
    std::lock_guard<std::mutex> const lock(m_mutex);
    bool const isKept = IsOpen();
    if (!isKept && !Open()) {
        return Outcome::Absent;
    }
    bool sent = SendAll(m_socket, entry);
    if (!sent && !IsTooLong(errno) && isKept) { // the journal has another socket since
        Close();
        sent = Open() && SendAll(m_socket, entry);
    }
    if (sent) {
        return Outcome::Sent;
    }
    return IsTooLong(errno) ? Outcome::TooLong : Outcome::Absent;
}

/// Whether the descriptor is still the socket: an application that becomes a daemon closes all that it knows
/// nothing of, and then opens others of the same number.
bool JournalSocket::IsOpen() const
{
    struct stat status = {};
    return m_socket >= 0 && fstat(m_socket, &status) == 0 && status.st_dev == m_device &&
           status.st_ino == m_inode;
}

bool JournalSocket::Open()
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    static_assert(sizeof Path <= sizeof address.sun_path);
    std::memcpy(address.sun_path, Path, sizeof Path);
    struct stat status = {};
    int const opened = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (opened < 0) {
        return false;
    }
    if (connect(opened, reinterpret_cast<sockaddr const*>(&address), sizeof address) != 0 ||
        fstat(opened, &status) != 0) {
        close(opened);
        return false;
    }
    m_socket = opened;
    m_device = status.st_dev;
    m_inode = status.st_ino;
    return true;
}

void JournalSocket::Close()
{
    if (IsOpen()) {
        close(m_socket);
    }
    m_socket = -1;
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
