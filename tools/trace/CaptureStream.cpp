// SPDX-License-Identifier: MIT
#include "CaptureStream.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <memory>
#include <thread>

namespace zviptv::trace {

namespace {

constexpr std::size_t BufferSize = 64 * 1024;

/// Interval between two checks of a growing file.
constexpr std::chrono::milliseconds Pause{100};

class Source
{
public:
    Source(CaptureInput const& input, int descriptor) : m_input(input), m_descriptor(descriptor) {}
    ~Source() { close(m_descriptor); }
    Source(Source const&) = delete;
    Source& operator=(Source const&) = delete;

    ssize_t Read(char* buffer, std::size_t size) const
    {
        if (m_input.beforeRead) {
            m_input.beforeRead();
        }
        while (!IsStopped()) {
            ssize_t const read = ::read(m_descriptor, buffer, size);
            if (read > 0 || (read < 0 && errno != EINTR)) {
                return read;
            }
            if (read == 0 && !m_input.follows) {
                return 0;
            }
            if (read == 0) {
                std::this_thread::sleep_for(Pause);
            }
        }
        return 0;
    }

private:
    bool IsStopped() const { return m_input.isStopped && m_input.isStopped(); }

    CaptureInput const& m_input;
    int const m_descriptor;
};

ssize_t Read(void* source, char* buffer, std::size_t size)
{
    return static_cast<Source*>(source)->Read(buffer, size);
}

int Close(void* source)
{
    delete static_cast<Source*>(source);
    return 0;
}

} // namespace

std::FILE* OpenCapture(CaptureInput const& input)
{
    int const descriptor = input.path == "-" ? fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)
                                             : open(input.path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) {
        return nullptr;
    }
    auto source = std::make_unique<Source>(input, descriptor);
    std::FILE* const stream = fopencookie(source.get(), "r", {Read, nullptr, nullptr, Close});
    if (stream != nullptr) {
        static_cast<void>(source.release()); // NOLINT(bugprone-unused-return-value): the stream deletes it
        std::setvbuf(stream, nullptr, _IOFBF, BufferSize);
    }
    return stream;
}

} // namespace zviptv::trace
