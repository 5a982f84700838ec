// SPDX-License-Identifier: MIT
#include "input/PipeBytes.h"

#include "stream/PacketSource.h"

#include <fcntl.h>
#include <poll.h>

#include <cerrno>
#include <cstring>

namespace zviptv::sim {

std::unique_ptr<PipeBytes> PipeBytes::OpenFifo(std::string const& path, bool outlivesWriters)
{
    // A descriptor that could also write would count as a writer that never ends.
    int const access = outlivesWriters ? O_RDWR : O_RDONLY;
    FileHandle pipe(open(path.c_str(), access | O_NONBLOCK | O_CLOEXEC));
    if (!pipe) {
        throw StreamError("cannot open " + path + ": " + std::strerror(errno) +
                          "; check that this user may read it");
    }
    return std::make_unique<PipeBytes>(std::move(pipe), path);
}

std::size_t PipeBytes::Read(std::uint8_t* bytes, std::size_t size)
{
    pollfd ready{m_pipe.Get(), POLLIN, 0};
    // read() itself may block, because other processes share standard input.
    if (poll(&ready, 1, 0) > 0 && ready.revents != 0) {
        ssize_t const got = read(m_pipe.Get(), bytes, size);
        if (got > 0) {
            m_watch.Stop();
            m_bytes += static_cast<std::uint64_t>(got);
            return static_cast<std::size_t>(got);
        }
        if (got == 0) {
            m_hasEnded = true;
            m_watch.Stop();
            return 0;
        }
        if (errno != EAGAIN && errno != EINTR) {
            throw StreamError("cannot read " + m_name + ": " + std::strerror(errno));
        }
    }
    if (!m_watch.IsRunning()) {
        m_watch = LoopSource::OnInput(m_pipe.Get(), [this] {
            m_watch.Stop(); // it would call repeatedly until the data is read
            Wake();
        });
    }
    return 0;
}

} // namespace zviptv::sim
