// SPDX-License-Identifier: MIT
#include "LogSockets.h"

#include <sched.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>

namespace zviptv::test {

namespace {

constexpr char JournalPath[] = "/run/systemd/journal/socket";

void Check(bool succeeded, char const* what)
{
    if (!succeeded) {
        throw std::runtime_error(std::string(what) + ": " + std::strerror(errno));
    }
}

void EnterNamespace()
{
    int const flags = CLONE_NEWNS | (geteuid() == 0 ? 0 : CLONE_NEWUSER);
    Check(unshare(flags) == 0, "unshare");
    Check(mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0, "mount /");
    Check(mount("tmpfs", "/dev", "tmpfs", 0, nullptr) == 0, "mount /dev");
    Check(mkdir("/dev/shm", 01777) == 0, "mkdir /dev/shm"); // where long entries are put
    Check(mount("tmpfs", "/run", "tmpfs", 0, nullptr) == 0, "mount /run");
}

int Bind(char const* path)
{
    int const handle = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    Check(handle >= 0, "socket");
    int const room = 4 * 1024 * 1024;
    setsockopt(handle, SOL_SOCKET, SO_RCVBUF, &room, sizeof room);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path, sizeof address.sun_path - 1);
    void const* const raw = &address;
    Check(bind(handle, static_cast<sockaddr const*>(raw), sizeof address) == 0, path);
    return handle;
}

std::string ContentsOf(int file)
{
    std::string contents;
    std::string block(1024 * 1024, '\0');
    for (off_t at = 0;;) {
        ssize_t const size = pread(file, block.data(), block.size(), at);
        Check(size >= 0, "pread");
        if (size == 0) {
            return contents;
        }
        contents.append(block.data(), static_cast<std::size_t>(size));
        at += size;
    }
}

/// The file handle that came with a message, else -1.
int HandleIn(msghdr& message)
{
    cmsghdr* const control = CMSG_FIRSTHDR(&message);
    if (control == nullptr || control->cmsg_type != SCM_RIGHTS) {
        return -1;
    }
    int handle = -1;
    std::memcpy(&handle, CMSG_DATA(control), sizeof handle);
    return handle;
}

/// False when nothing is there.
bool Receive(int socket, std::string& datagram)
{
    datagram.assign(1024 * 1024, '\0');
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))] = {};
    iovec part{datagram.data(), datagram.size()};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    ssize_t const size = recvmsg(socket, &message, MSG_CMSG_CLOEXEC);
    if (size < 0) {
        return false;
    }
    datagram.resize(static_cast<std::size_t>(size));
    if (int const handle = HandleIn(message); handle >= 0) {
        datagram = ContentsOf(handle);
        close(handle);
    }
    return true;
}

std::vector<std::string> Take(int socket)
{
    std::vector<std::string> datagrams;
    for (std::string datagram; Receive(socket, datagram);) {
        datagrams.push_back(datagram);
    }
    return datagrams;
}

} // namespace

LogSockets::LogSockets(bool withJournal)
{
    EnterNamespace();
    m_syslog = Bind("/dev/log");
    if (withJournal) {
        Check(mkdir("/run/systemd", 0755) == 0 && mkdir("/run/systemd/journal", 0755) == 0, "mkdir");
        m_journal = Bind(JournalPath);
    }
}

LogSockets::~LogSockets()
{
    close(m_syslog);
    if (m_journal >= 0) {
        close(m_journal);
    }
}

void LogSockets::EndJournal()
{
    close(m_journal);
    m_journal = -1;
    Check(unlink(JournalPath) == 0, "unlink");
}

void LogSockets::RenewJournal()
{
    if (m_journal >= 0) {
        EndJournal();
    }
    m_journal = Bind(JournalPath);
}

std::vector<std::string> LogSockets::TakeSyslog()
{
    return Take(m_syslog);
}

std::vector<std::string> LogSockets::TakeJournal()
{
    return m_journal < 0 ? std::vector<std::string>() : Take(m_journal);
}

} // namespace zviptv::test
