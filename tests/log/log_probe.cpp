#include "LogSockets.h"

#include "log/Log.h"

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

/// Its size in front, since it may hold anything.
void PrintEntry(std::string const& kind, std::string const& datagram)
{
    std::printf("%s %zu\n", kind.c_str(), datagram.size());
    std::fwrite(datagram.data(), 1, datagram.size(), stdout);
    std::printf("\n");
}

int Logged(bool withJournal, std::size_t longSize)
{
    zviptv::test::LogSockets sockets(withJournal);
    if (longSize == 0) {
        WriteLines();
    } else {
        WriteLongLine(longSize);
    }
    for (std::string const& datagram : sockets.TakeSyslog()) {
        PrintEntry("syslog", datagram);
    }
    for (std::string const& datagram : sockets.TakeJournal()) {
        PrintEntry("journal", datagram);
    }
    return 0;
}

} // namespace

/// log_probe lines | syslog [size] | journal [size]
int main(int count, char** arguments)
{
    std::string const command = count > 1 ? arguments[1] : "";
    std::size_t const longSize = count > 2 ? std::stoul(arguments[2]) : 0;
    if (command == "lines") {
        WriteLines();
        return 0;
    }
    try {
        return Logged(command == "journal", longSize);
    } catch (std::runtime_error const& failure) {
        std::fprintf(stderr, "%s", failure.what());
        return NotPermitted;
    }
}
