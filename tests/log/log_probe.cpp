// SPDX-License-Identifier: MIT
#include "LogSockets.h"

#include "log/Log.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>

namespace {

constexpr int NotPermitted = 77;

void WriteLines()
{
    ZV_LOG_DEBUG_LINE("a debug line");
    ZV_LOG_INFO_LINE("an info line, 100%% of %s", "it: 50%s%n");
    ZV_LOG_ERROR_LINE("an error line\n");
    ZV_LOG_ENTRY();
}

void WriteLongLine(std::size_t size)
{
    ZV_LOG_INFO_LINE("%s", std::string(size, 'x').c_str());
}

/// Writes the size first, because the text may contain any bytes.
void PrintEntry(std::string const& kind, std::string const& datagram)
{
    std::printf("%s %zu\n", kind.c_str(), datagram.size());
    std::fwrite(datagram.data(), 1, datagram.size(), stdout);
    std::printf("\n");
}

void PrintLogs(zviptv::test::LogSockets& sockets)
{
    for (std::string const& datagram : sockets.TakeSyslog()) {
        PrintEntry("syslog", datagram);
    }
    for (std::string const& datagram : sockets.TakeJournal()) {
        PrintEntry("journal", datagram);
    }
}

int Logged(bool withJournal, std::size_t longSize)
{
    zviptv::test::LogSockets sockets(withJournal);
    if (longSize == 0) {
        WriteLines();
    } else {
        WriteLongLine(longSize);
    }
    PrintLogs(sockets);
    return 0;
}

int LoggedToANewJournal()
{
    zviptv::test::LogSockets sockets(true);
    ZV_LOG_INFO_LINE("to the first");
    PrintLogs(sockets);
    sockets.RenewJournal();
    ZV_LOG_INFO_LINE("to the second");
    PrintLogs(sockets);
    sockets.EndJournal();
    ZV_LOG_INFO_LINE("to none");
    PrintLogs(sockets);
    sockets.RenewJournal();
    ZV_LOG_INFO_LINE("to the last");
    PrintLogs(sockets);
    return 0;
}

/// Does what a program that becomes a daemon does: closes all descriptors that it does not know, whose
/// numbers are then used again.
int LoggedAfterClosing()
{
    zviptv::test::LogSockets sockets(true);
    int const next = dup(0);
    close(next);
    ZV_LOG_INFO_LINE("opens the journal");
    close(next);
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK, 0, ends.data()) != 0 || ends[0] != next) {
        std::fprintf(stderr, "the log has not opened the journal with descriptor %d\n", next);
        return 1;
    }
    ZV_LOG_INFO_LINE("for the journal alone");
    PrintLogs(sockets);
    char byte = 0;
    bool const isUntouched =
        recv(ends[1], &byte, 1, 0) < 0 && errno == EAGAIN && fcntl(ends[0], F_GETFD) >= 0;
    return isUntouched ? 0 : 1;
}

/// A journal that does not read while many lines are written, also long ones, and then reads again.
int LoggedToAFullJournal()
{
    zviptv::test::LogSockets sockets(true);
    for (int i = 0; i < 20000; ++i) {
        ZV_LOG_INFO_LINE("one of many");
    }
    WriteLongLine(3000000);
    PrintLogs(sockets);
    ZV_LOG_INFO_LINE("read again");
    ZV_LOG_INFO_LINE("and again");
    PrintLogs(sockets);
    return 0;
}

} // namespace

/// log_probe lines | syslog [size] | journal [size] | new-journal | full-journal | closed-journal
int main(int count, char** arguments)
{
    std::string const command = count > 1 ? arguments[1] : "";
    std::size_t const longSize = count > 2 ? std::stoul(arguments[2]) : 0;
    if (command == "lines") {
        WriteLines();
        return 0;
    }
    try {
        if (command == "new-journal") {
            return LoggedToANewJournal();
        }
        if (command == "full-journal") {
            return LoggedToAFullJournal();
        }
        return command == "closed-journal" ? LoggedAfterClosing() : Logged(command == "journal", longSize);
    } catch (std::runtime_error const& failure) {
        std::fprintf(stderr, "%s", failure.what());
        return NotPermitted;
    }
}
