// SPDX-License-Identifier: MIT
#include "Decoder.h"

#include "process/Spawn.h"

#include <fcntl.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace zviptv::sim {

Decoder::Decoder(std::vector<std::string> const& arguments, FileHandle input,
                 std::function<void(std::string const& bytes)> onBytes, std::function<void()> onEnd)
    : m_onBytes(std::move(onBytes)), m_onEnd(std::move(onEnd))
{
    auto [output, theirs] = MakeLargePipe();
    FileHandle const silence(open("/dev/null", O_WRONLY | O_CLOEXEC));
    SpawnRequest request;
    request.command = {"ffmpeg", "-hide_banner", "-loglevel", "fatal"};
    request.command.insert(request.command.end(), arguments.begin(), arguments.end());
    request.descriptors = {{input.Get(), 0}, {theirs.Get(), 1}, {silence.Get(), 2}};
    request.ownGroup = true;
    m_process.emplace(Spawn(request));
    m_output = std::move(output);
    m_reading = LoopSource::OnInput(m_output.Get(), [this] { Read(); });
}

void Decoder::Read()
{
    constexpr std::size_t pieceSize = std::size_t{256} * 1024;
    std::string bytes(pieceSize, '\0');
    ssize_t const size = read(m_output.Get(), bytes.data(), bytes.size());
    if (size > 0) {
        bytes.resize(static_cast<std::size_t>(size));
        m_onBytes(bytes);
    } else if (size == 0 || (errno != EINTR && errno != EAGAIN)) {
        m_reading.Stop();
        auto const onEnd = m_onEnd; // the callback may remove the source
        onEnd();
    }
}

std::pair<FileHandle, FileHandle> MakeLargePipe()
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        throw std::system_error(errno, std::generic_category(), "cannot make a pipe for ffmpeg");
    }
    constexpr int largest = 1024 * 1024;
    fcntl(ends[1], F_SETPIPE_SZ, largest); // else it stays as it is
    return {FileHandle(ends[0]), FileHandle(ends[1])};
}

} // namespace zviptv::sim
