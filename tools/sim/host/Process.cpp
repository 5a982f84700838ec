#include "Process.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <system_error>
#include <utility>

namespace zviptv::sim {

namespace {

constexpr int CannotRun = 127;

int ToStatus(int waited)
{
    return WIFSIGNALED(waited) ? 128 + WTERMSIG(waited) : WEXITSTATUS(waited);
}

/// In the child: die with the parent, also when that is gone already; start with the default signal handling.
void BeginChild(pid_t parent, Process::Group group)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) {
        _exit(CannotRun);
    }
    if (group == Process::Group::Own) {
        setpgid(0, 0);
    }
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
}

pid_t ForkOrThrow()
{
    std::fflush(nullptr);
    pid_t const pid = fork();
    if (pid < 0) {
        throw std::system_error(errno, std::generic_category(), "cannot start a process");
    }
    return pid;
}

} // namespace

Process Process::Run(std::vector<std::string> const& command, Group group, int errors)
{
    std::vector<char*> arguments;
    for (std::string const& word : command) {
        // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast): exec leaves the texts alone
        arguments.push_back(const_cast<char*>(word.c_str()));
    }
    arguments.push_back(nullptr);
    pid_t const parent = getpid();
    pid_t const pid = ForkOrThrow();
    if (pid == 0) {
        BeginChild(parent, group);
        std::signal(SIGPIPE, SIG_DFL);
        dup2(errors, STDERR_FILENO);
        execvp(arguments[0], arguments.data());
        std::fprintf(stderr, "zviptv-sim: cannot run %s: %s\n", arguments[0], std::strerror(errno));
        _exit(CannotRun);
    }
    return Process(pid);
}

Process Process::Fork(std::function<int()> const& work)
{
    pid_t const parent = getpid();
    pid_t const pid = ForkOrThrow();
    if (pid == 0) {
        BeginChild(parent, Group::Own);
        int const status = work();
        std::fflush(nullptr);
        _exit(status);
    }
    return Process(pid);
}

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

} // namespace zviptv::sim
