#include "Pipe.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace zviptv::sim {

Pipe::Pipe()
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        throw std::system_error(errno, std::generic_category(), "cannot make a pipe");
    }
    m_read = ends[0];
    m_write = ends[1];
}

Pipe::~Pipe()
{
    CloseWriteEnd();
    close(m_read);
}

void Pipe::PassOn()
{
    fcntl(m_write, F_SETFD, 0);
}

void Pipe::CloseWriteEnd()
{
    if (m_write >= 0) {
        close(m_write);
        m_write = -1;
    }
}

bool Pipe::HasInput() const
{
    pollfd waited{m_read, POLLIN, 0};
    return poll(&waited, 1, 0) == 1;
}

std::string Pipe::ReadLine(std::chrono::milliseconds timeout)
{
    auto const deadline = std::chrono::steady_clock::now() + timeout;
    std::string line;
    for (;;) {
        auto const left =
            std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now()).count();
        pollfd waited{m_read, POLLIN, 0};
        char next = 0;
        if (left <= 0 || (poll(&waited, 1, static_cast<int>(left)) < 0 && errno != EINTR)) {
            return std::string();
        }
        if (waited.revents == 0) {
            continue;
        }
        if (read(m_read, &next, 1) != 1) {
            return std::string();
        }
        if (next == '\n') {
            return line;
        }
        line += next;
    }
}

} // namespace zviptv::sim
