// SPDX-License-Identifier: MIT
#include "Spawn.h"

#include "FileHandle.h"
#include "Process.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <system_error>

namespace zviptv {

namespace {

std::vector<std::string> MergedEnvironment(std::map<std::string, std::string> const& added)
{
    std::vector<std::string> merged;
    for (char** variable = environ; *variable != nullptr; ++variable) {
        std::string const text = *variable;
        if (added.count(text.substr(0, text.find('='))) == 0) {
            merged.push_back(text);
        }
    }
    for (auto const& [name, value] : added) {
        merged.push_back(name + "=" + value);
    }
    return merged;
}

std::vector<char*> Pointers(std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    for (auto& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

/// The data for the child, made before fork(), because the child must not allocate.
struct ChildPlan
{
    char const* program;
    char* const* arguments;
    char* const* environment;
    std::vector<std::pair<int, int>>& descriptors;
    bool ownGroup;
    pid_t parent;
    int failures;
};

/// Sets that the new process is killed when `parent` ends, and unblocks all signals.
void BeginChild(pid_t parent, bool ownGroup)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    // The parent may have died before the request above, which then has no effect.
    if (getppid() != parent) {
        _exit(Process::CannotRun);
    }
    if (ownGroup) {
        setpgid(0, 0);
    }
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
}

/// Between fork() and exec(): async-signal-safe calls only.
[[noreturn]] void RunChild(ChildPlan const& plan)
{
    constexpr int outOfTheWay = 100;
    int const failures = fcntl(plan.failures, F_DUPFD_CLOEXEC, outOfTheWay);
    BeginChild(plan.parent, plan.ownGroup);
    std::signal(SIGPIPE, SIG_DFL);
    // Moves all sources first, so that no target overwrites a source that is still needed.
    for (auto& [source, target] : plan.descriptors) {
        source = fcntl(source, F_DUPFD_CLOEXEC, outOfTheWay);
    }
    for (auto const& [source, target] : plan.descriptors) {
        dup2(source, target);
    }
    execvpe(plan.program, plan.arguments, plan.environment);
    int const reason = errno;
    static_cast<void>(!write(failures, &reason, sizeof reason));
    _exit(Process::CannotRun);
}

/// The error number of a failed exec(); 0 on success, which has closed the other end.
int ReadReason(int failures)
{
    int reason = 0;
    ssize_t size = -1;
    do {
        size = read(failures, &reason, sizeof reason);
    } while (size < 0 && errno == EINTR);
    return size == static_cast<ssize_t>(sizeof reason) ? reason : 0;
}

} // namespace

pid_t SpawnOutcome::Pid(std::string const& program) const
{
    if (error != 0) {
        throw std::system_error(error, std::generic_category(), what + program);
    }
    return pid;
}

SpawnOutcome TrySpawn(SpawnRequest const& request)
{
    auto command = request.command;
    auto variables = MergedEnvironment(request.environment);
    auto descriptors = request.descriptors;
    auto const arguments = Pointers(command);
    auto const environment = Pointers(variables);
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        return {0, errno, "pipe2 for "};
    }
    FileHandle const failures(ends[0]);
    FileHandle writeEnd(ends[1]);

    char const* const program = request.program.empty() ? arguments.front() : request.program.c_str();
    ChildPlan const plan{program,          arguments.data(), environment.data(), descriptors,
                         request.ownGroup, getpid(),         writeEnd.Get()};
    pid_t const child = fork();
    if (child < 0) {
        return {0, errno, "fork for "};
    }
    if (child == 0) {
        RunChild(plan);
    }
    writeEnd.Reset();
    int const reason = ReadReason(failures.Get());
    if (reason != 0) {
        waitpid(child, nullptr, 0);
    }
    return {child, reason, "cannot run "};
}

pid_t Spawn(SpawnRequest const& request)
{
    return TrySpawn(request).Pid(request.command.front());
}

} // namespace zviptv
