// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/testing/Control.h>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <vector>

namespace zviptv::simulated {

/// How zviptv-sim is started.
struct Options
{
    std::string input; ///< what is played; the installed sample stream if it is empty
    std::string guide; ///< an XMLTV file; the guide of the stream if it is empty
    std::vector<std::string> arguments{"--loop"}; ///< other options of zviptv-sim

    /// Whether the simulator starts in the same way.
    bool operator==(Options const& other) const
    {
        return input == other.input && guide == other.guide && arguments == other.arguments;
    }
};

/// The process zviptv-sim on a private bus, which ends with this object or with the test program. Puts the
/// address of the bus into DBUS_SYSTEM_BUS_ADDRESS. Its messages go to standard error.
class Simulator
{
public:
    /// Waits until applications find the service. @throws TelevisionError
    explicit Simulator(Options const& options)
    {
        std::vector<std::string> words = Command(options);
        std::vector<char*> arguments;
        for (std::string& word : words) {
            arguments.push_back(word.data());
        }
        arguments.push_back(nullptr);
        int input[2] = {-1, -1};
        int output[2] = {-1, -1};
        if (pipe2(input, O_CLOEXEC) != 0 || pipe2(output, O_CLOEXEC) != 0) {
            throw TelevisionError(std::string("cannot start zviptv-sim: ") + std::strerror(errno) +
                                  "; close files that the test has opened");
        }
        m_input = input[1];
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, input[0], STDIN_FILENO);
        posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
        int const failure =
            posix_spawn(&m_pid, words[0].c_str(), &actions, nullptr, arguments.data(), environ);
        posix_spawn_file_actions_destroy(&actions);
        close(input[0]);
        close(output[1]);
        std::string const address = ReadLine(output[0]);
        close(output[0]);
        if (failure != 0 || address.empty()) {
            close(m_input);
            throw TelevisionError(failure != 0 ? "cannot start " + words[0] + ": " + std::strerror(failure)
                                               : "zviptv-sim did not start: " + EndDescription(0));
        }
        setenv("DBUS_SYSTEM_BUS_ADDRESS", address.c_str(), 1);
    }

    ~Simulator()
    {
        close(m_input); // the simulator's command ends with its standard input
        if (m_pid != 0) {
            waitpid(m_pid, nullptr, 0);
        }
    }
    Simulator(Simulator const&) = delete;
    Simulator& operator=(Simulator const&) = delete;

    /// The process; 0 after its end was noticed.
    pid_t Pid() const { return m_pid; }

    /// @throws TelevisionError if the process has ended, or ends within a second
    void Check()
    {
        auto const end = std::chrono::steady_clock::now() + std::chrono::seconds(1);
        do {
            if (m_end = m_end.empty() ? EndDescription(WNOHANG) : m_end; !m_end.empty()) {
                throw TelevisionError("zviptv-sim has ended during the tests: " + m_end);
            }
            usleep(1000);
        } while (std::chrono::steady_clock::now() < end);
    }

private:
    static std::vector<std::string> Command(Options const& options)
    {
        Handle<char> const program(g_find_program_in_path("zviptv-sim"));
        if (!program) {
            throw TelevisionError("cannot start zviptv-sim: it is not in PATH; install the package "
                                  "zv-iptv-tools, or add the folder of zviptv-sim to PATH");
        }
        std::string const input = options.input.empty() ? Sample(program.get()) : options.input;
        std::vector<std::string> words{program.get(), "--ts", input};
        if (!options.guide.empty()) {
            words.insert(words.end(), {"--guide", options.guide});
        }
        words.insert(words.end(), options.arguments.begin(), options.arguments.end());
        words.insert(words.end(), {"--", "sh", "-c", "echo \"$DBUS_SYSTEM_BUS_ADDRESS\"; exec cat"});
        return words;
    }

    static std::string Sample(char const* program)
    {
        std::filesystem::path const bin = std::filesystem::canonical(program).parent_path();
        std::filesystem::path const sample = bin.parent_path() / "share/zv-iptv/samples/sample.ts";
        if (!std::filesystem::exists(sample)) {
            throw TelevisionError("cannot find a stream to play: " + sample.string() +
                                  " does not exist; set the input of the options to a transport stream");
        }
        return sample.string();
    }

    static std::string ReadLine(int file)
    {
        std::string line;
        for (char letter = 0; read(file, &letter, 1) == 1 && letter != '\n';) {
            line += letter;
        }
        return line;
    }

    /// How the process has ended; empty if it has not ended.
    std::string EndDescription(int flags)
    {
        int status = 0;
        if (m_pid == 0 || waitpid(m_pid, &status, flags) != m_pid) {
            return "";
        }
        m_pid = 0;
        return (WIFSIGNALED(status) ? "signal " + std::to_string(WTERMSIG(status)) + " has killed it"
                                    : "its exit status is " + std::to_string(WEXITSTATUS(status))) +
               "; standard error has its messages";
    }

    pid_t m_pid = 0;
    int m_input = -1;
    std::string m_end; ///< how it ended
};

} // namespace zviptv::simulated
