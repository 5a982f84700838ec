// SPDX-License-Identifier: MIT
#include "Pipe.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace zviptv {

Pipe::Pipe()
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        throw std::system_error(errno, std::generic_category(), "cannot make a pipe");
    }
    m_read = FileHandle(ends[0]);
    m_write = FileHandle(ends[1]);
}

std::string Pipe::ReadLine(std::chrono::milliseconds timeout)
{
    auto const deadline = std::chrono::steady_clock::now() + timeout;
    std::string line;
    for (;;) {
        auto const left =
            std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now()).count();
        pollfd waited{ReadEnd(), POLLIN, 0};
        char next = 0;
        if (left <= 0 || (poll(&waited, 1, static_cast<int>(left)) < 0 && errno != EINTR)) {
            return std::string();
        }
        if (waited.revents == 0) {
            continue;
        }
        if (read(ReadEnd(), &next, 1) != 1) {
            return std::string();
        }
        if (next == '\n') {
            return line;
        }
        line += next;
    }
}

} // namespace zviptv
