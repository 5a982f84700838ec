#include "Spawn.h"

#include "Handles.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <condition_variable>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>

namespace zviptv::test {

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

/// Everything the child needs, made before fork(): it may not allocate.
struct ChildPlan
{
    char* const* arguments;
    char* const* environment;
    std::vector<std::pair<int, int>>& descriptors;
    pid_t parent;
    int failures;
};

/// Between fork() and exec(): async-signal-safe calls only.
[[noreturn]] void RunChild(ChildPlan const& plan)
{
    constexpr int outOfTheWay = 100;
    int const failures = fcntl(plan.failures, F_DUPFD_CLOEXEC, outOfTheWay);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    // The parent may have died before the request above, which then never fires.
    if (getppid() != plan.parent) {
        _exit(127);
    }
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    signal(SIGPIPE, SIG_DFL);
    // First all out of the way, so that no target overwrites a source that is still wanted.
    for (auto& [source, target] : plan.descriptors) {
        source = fcntl(source, F_DUPFD_CLOEXEC, outOfTheWay);
    }
    for (auto const& [source, target] : plan.descriptors) {
        dup2(source, target);
    }
    execvpe(plan.arguments[0], plan.arguments, plan.environment);
    int const reason = errno;
    static_cast<void>(!write(failures, &reason, sizeof reason));
    _exit(127);
}

/// What came of it. Plain data and no exception: it goes from one thread to another, and the hidden
/// reference count of an exception in transit is nothing that ThreadSanitizer can follow.
struct Outcome
{
    pid_t pid = 0;
    int error = 0;
    char const* what = "";
};

/// The reason why exec() failed, 0 if it did not: then it has closed the other end.
int ReadReason(int failures)
{
    int reason = 0;
    ssize_t size = -1;
    do {
        size = read(failures, &reason, sizeof reason);
    } while (size < 0 && errno == EINTR);
    return size == static_cast<ssize_t>(sizeof reason) ? reason : 0;
}

Outcome ForkAndExec(SpawnRequest const& request)
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

    ChildPlan const plan{arguments.data(), environment.data(), descriptors, getpid(), writeEnd.Get()};
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

/// The parent-death signal comes when the *thread* that forked ends, so one thread that lives as long
/// as the process does all the forking.
class Spawner
{
public:
    Spawner() : m_owner(getpid()), m_thread([this] { Loop(); }) {}

    ~Spawner()
    {
        if (getpid() != m_owner) {
            // A forked copy of the test process, in which the thread does not exist.
            m_thread.detach();
            return;
        }
        {
            std::lock_guard const lock(m_mutex);
            m_stopping = true;
        }
        m_changed.notify_all();
        m_thread.join();
    }

    Outcome Spawn(SpawnRequest const& request)
    {
        if (getpid() != m_owner) {
            return ForkAndExec(request);
        }
        auto const task =
            std::make_shared<std::packaged_task<Outcome()>>([&] { return ForkAndExec(request); });
        auto result = task->get_future();
        {
            std::lock_guard const lock(m_mutex);
            m_tasks.emplace_back([task] { (*task)(); });
        }
        m_changed.notify_all();
        return result.get();
    }

private:
    void Loop()
    {
        std::unique_lock lock(m_mutex);
        while (true) {
            m_changed.wait(lock, [this] { return m_stopping || !m_tasks.empty(); });
            if (m_tasks.empty()) {
                return;
            }
            auto const task = std::move(m_tasks.back());
            m_tasks.pop_back();
            lock.unlock();
            task();
            lock.lock();
        }
    }

    pid_t m_owner;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<std::function<void()>> m_tasks;
    bool m_stopping = false;
    std::thread m_thread;
};

} // namespace

pid_t Spawn(SpawnRequest const& request)
{
    static Spawner spawner;
    auto const outcome = spawner.Spawn(request);
    if (outcome.error != 0) {
        throw std::system_error(outcome.error, std::generic_category(),
                                outcome.what + request.command.front());
    }
    return outcome.pid;
}

} // namespace zviptv::test
