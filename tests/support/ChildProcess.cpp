// SPDX-License-Identifier: MIT
#include "ChildProcess.h"

#include "SpawnThread.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/wait.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace zviptv::test {

namespace {

struct Ends
{
    FileHandle mine;
    FileHandle theirs;
};

[[noreturn]] void ThrowErrno(char const* what)
{
    throw std::system_error(errno, std::generic_category(), what);
}

Ends OutputPipe()
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        ThrowErrno("pipe2");
    }
    Ends pipe{FileHandle(ends[0]), FileHandle(ends[1])};
    if (fcntl(ends[0], F_SETFL, O_NONBLOCK) != 0) {
        ThrowErrno("fcntl");
    }
    return pipe;
}

/// A socket, since only a socket can be written to without the risk of SIGPIPE.
Ends InputSocket()
{
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
        ThrowErrno("socketpair");
    }
    return {FileHandle(ends[0]), FileHandle(ends[1])};
}

FileHandle EventDescriptor()
{
    FileHandle handle(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!handle) {
        ThrowErrno("eventfd");
    }
    return handle;
}

ExitStatus ToStatus(int raw)
{
    if (WIFSIGNALED(raw)) {
        return {-1, WTERMSIG(raw)};
    }
    return {WEXITSTATUS(raw), 0};
}

} // namespace

bool operator==(ExitStatus const& left, ExitStatus const& right)
{
    return left.code == right.code && left.signal == right.signal;
}

void PrintTo(ExitStatus const& status, std::ostream* out)
{
    if (status.signal != 0) {
        *out << "ended by signal " << status.signal;
    } else {
        *out << "exit code " << status.code;
    }
}

ChildProcess::ChildProcess(std::vector<std::string> const& command,
                           std::map<std::string, std::string> const& environment)
    : m_ended(EventDescriptor())
{
    Ends input = InputSocket();
    Ends output = OutputPipe();
    Ends errors = OutputPipe();
    m_pid =
        SpawnFromAnyThread({command,
                            environment,
                            {{input.theirs.Get(), 0}, {output.theirs.Get(), 1}, {errors.theirs.Get(), 2}}});
    m_input = std::move(input.mine);
    m_streams[0].pipe = std::move(output.mine);
    m_streams[1].pipe = std::move(errors.mine);
    m_waiter = std::thread([this] { AwaitEnd(); });
    m_reader = std::thread([this] { Watch(); });
}

ChildProcess::~ChildProcess()
{
    Signal(SIGKILL);
    m_waiter.join();
    m_reader.join();
}

std::optional<ExitStatus> ChildProcess::Wait(std::chrono::milliseconds timeout)
{
    std::unique_lock lock(m_mutex);
    m_changed.wait_for(lock, timeout, [this] { return m_status.has_value(); });
    return m_status;
}

void ChildProcess::Signal(int number)
{
    // Under the lock of the reaper, so that the number cannot belong to another process yet.
    std::lock_guard const lock(m_mutex);
    if (!m_status) {
        kill(m_pid, number);
    }
}

std::string ChildProcess::Text(std::size_t stream) const
{
    std::lock_guard const lock(m_mutex);
    return m_streams[stream].text;
}

bool ChildProcess::WaitForText(std::size_t stream, std::string const& text, std::chrono::milliseconds timeout)
{
    auto const found = [&] { return m_streams[stream].text.find(text) != std::string::npos; };
    std::unique_lock lock(m_mutex);
    m_changed.wait_for(lock, timeout, [&] { return found() || m_status; });
    return found();
}

bool ChildProcess::WriteInput(std::string const& text)
{
    std::lock_guard const lock(m_inputMutex);
    std::size_t done = 0;
    while (m_input && done < text.size()) {
        auto const size = send(m_input.Get(), text.data() + done, text.size() - done, MSG_NOSIGNAL);
        if (size < 0 && errno != EINTR) {
            return false;
        }
        done += size > 0 ? static_cast<std::size_t>(size) : 0U;
    }
    return done == text.size();
}

void ChildProcess::CloseInput()
{
    std::lock_guard const lock(m_inputMutex);
    m_input.Reset();
}

/// Waits without reaping: the number must stay the process's own until Reap() under the lock.
void ChildProcess::AwaitEnd() const
{
    siginfo_t info = {};
    while (waitid(P_PID, static_cast<id_t>(m_pid), &info, WEXITED | WNOWAIT) != 0 && errno == EINTR) {
    }
    eventfd_write(m_ended.Get(), 1);
}

void ChildProcess::Watch()
{
    while (true) {
        // Closed pipes are -1, which poll() skips.
        std::array<pollfd, 3> polled{pollfd{m_streams[0].pipe.Get(), POLLIN, 0},
                                     pollfd{m_streams[1].pipe.Get(), POLLIN, 0},
                                     pollfd{m_ended.Get(), POLLIN, 0}};
        if (poll(polled.data(), polled.size(), -1) < 0) {
            continue;
        }
        std::lock_guard const lock(m_mutex);
        for (auto& stream : m_streams) {
            Drain(stream);
        }
        if (polled[2].revents != 0) {
            m_status = Reap();
        }
        m_changed.notify_all();
        if (m_status) {
            return;
        }
    }
}

void ChildProcess::Drain(Stream& stream)
{
    std::array<char, 4096> buffer;
    while (stream.pipe) {
        auto const size = read(stream.pipe.Get(), buffer.data(), buffer.size());
        if (size > 0) {
            stream.text.append(buffer.data(), static_cast<std::size_t>(size));
        } else if (size == 0) {
            stream.pipe.Reset();
        } else if (errno != EINTR) {
            return;
        }
    }
}

ExitStatus ChildProcess::Reap() const
{
    int raw = 0;
    while (waitpid(m_pid, &raw, 0) < 0 && errno == EINTR) {
    }
    return ToStatus(raw);
}

} // namespace zviptv::test
