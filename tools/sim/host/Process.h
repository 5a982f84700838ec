#pragma once

#include <sys/types.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace zviptv::sim {

/// A child process. It is killed when this one ends, however that happens, but not what it has started
/// itself. Killed and reaped by the destructor.
class Process
{
public:
    /// A terminal sends its Ctrl-C to a whole group: what has to end in order is in one of its own.
    enum class Group
    {
        Ours,
        Own
    };

    /// Runs a program, searched in PATH; its standard error goes to the descriptor `errors`.
    /// @throws std::system_error when it cannot be started
    static Process Run(std::vector<std::string> const& command, Group group, int errors = 2);

    /// Runs `work` in a copy of this process, in a group of its own, with its result as exit status. To be
    /// used before threads start.
    static Process Fork(std::function<int()> const& work);

    Process(Process&& other) noexcept;
    Process& operator=(Process&& other) noexcept;
    ~Process();

    pid_t Pid() const { return m_pid; }

    /// No effect once it has ended.
    void Signal(int number);

    /// Waits for the end. The exit status, or 128 plus the number of the signal that ended it, as a shell has
    /// it.
    int Wait();

    /// The same when it has ended already.
    std::optional<int> Poll();

private:
    explicit Process(pid_t pid) : m_pid(pid) {}

    pid_t m_pid;
    std::optional<int> m_status;
};

} // namespace zviptv::sim
