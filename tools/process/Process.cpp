// SPDX-License-Identifier: MIT
#include "Process.h"

#include <sys/wait.h>

#include <cerrno>
#include <csignal>
#include <utility>

namespace zviptv {

namespace {

int ToStatus(int waited)
{
    return WIFSIGNALED(waited) ? 128 + WTERMSIG(waited) : WEXITSTATUS(waited);
}

} // namespace

Process::Process(Process&& other) noexcept : m_pid(std::exchange(other.m_pid, -1)), m_status(other.m_status)
{
}

Process& Process::operator=(Process&& other) noexcept
{
    std::swap(m_pid, other.m_pid);
    std::swap(m_status, other.m_status);
    return *this;
}

Process::~Process()
{
    if (m_pid > 0 && !Poll()) {
        Signal(SIGKILL);
        Wait();
    }
}

void Process::Signal(int number)
{
    if (!m_status) {
        kill(m_pid, number);
    }
}

int Process::Wait()
{
    int waited = 0;
    while (!m_status) {
        if (waitpid(m_pid, &waited, 0) == m_pid) {
            m_status = ToStatus(waited);
        } else if (errno != EINTR) {
            m_status = CannotRun;
        }
    }
    return *m_status;
}

std::optional<int> Process::Poll()
{
    int waited = 0;
    if (!m_status && waitpid(m_pid, &waited, WNOHANG) == m_pid) {
        m_status = ToStatus(waited);
    }
    return m_status;
}

} // namespace zviptv
