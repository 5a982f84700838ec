#include "PrivateBus.h"

#include "Handles.h"
#include "MessageLog.h"
#include "Spawn.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace zviptv::test {

namespace {

constexpr char const* addressVariable = "DBUS_SYSTEM_BUS_ADDRESS";

constexpr char const* openPolicy = R"(  <policy context="default">
    <allow user="*"/>
    <allow own="*"/>
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
  </policy>
)";

std::string NewDirectory()
{
    // Always /tmp: a socket address holds 107 characters only.
    std::string path = "/tmp/zviptv-bus-XXXXXX";
    if (mkdtemp(path.data()) == nullptr) {
        throw std::system_error(errno, std::generic_category(), "mkdtemp");
    }
    return path;
}

/// The daemon keeps the test's user: one that changes it would outlive a killed test.
std::string BaseConfig(std::string const& file)
{
    return file.empty()
               ? std::string()
               : "  <include>" + file + "</include>\n  <user>" + std::to_string(getuid()) + "</user>\n";
}

/// The first line that comes out of the pipe; empty if the writer ends, or stays silent, instead.
std::string ReadLine(int descriptor)
{
    std::string line;
    auto const deadline = std::chrono::steady_clock::now() + patience;
    while (line.empty() || line.back() != '\n') {
        auto const left =
            std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        pollfd polled{descriptor, POLLIN, 0};
        if (left.count() <= 0 || poll(&polled, 1, static_cast<int>(left.count())) == 0) {
            return {};
        }
        std::array<char, 512> buffer;
        auto const size = read(descriptor, buffer.data(), buffer.size());
        if (size == 0 || (size < 0 && errno != EINTR)) {
            return {};
        }
        if (size > 0) {
            line.append(buffer.data(), static_cast<std::size_t>(size));
        }
    }
    return line;
}

void RestoreVariable(std::optional<std::string> const& former)
{
    if (former) {
        setenv(addressVariable, former->c_str(), 1);
    } else {
        unsetenv(addressVariable);
    }
}

void SignalAndAwait(pid_t pid, int signal, int waitFlag)
{
    if (pid == 0) {
        throw std::logic_error("the bus is dead");
    }
    if (kill(pid, signal) != 0 || waitpid(pid, nullptr, waitFlag) != pid) {
        throw std::system_error(errno, std::generic_category(), "dbus-daemon does not obey");
    }
}

} // namespace

PrivateBus::PrivateBus(BusOptions options)
    : m_options(std::move(options)), m_directory(NewDirectory()),
      // Without the guid, which is a new one after each restart.
      m_address("unix:path=" + m_directory + "/bus")
{
    try {
        WriteConfig();
        Start();
    } catch (...) {
        RemoveDirectory();
        throw;
    }
    if (!m_options.setEnvironment) {
        return;
    }
    if (char const* const former = getenv(addressVariable); former != nullptr) {
        m_formerAddress = former;
    }
    setenv(addressVariable, m_address.c_str(), 1);
}

PrivateBus::~PrivateBus()
{
    if (m_options.setEnvironment) {
        RestoreVariable(m_formerAddress);
    }
    Kill();
    RemoveDirectory();
}

void PrivateBus::RemoveDirectory() const
{
    std::error_code ignored;
    std::filesystem::remove_all(m_directory, ignored);
}

void PrivateBus::WriteConfig() const
{
    std::ofstream config(m_directory + "/bus.conf");
    config << "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-BUS Bus Configuration 1.0//EN\"\n"
              " \"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
              "<busconfig>\n"
           << BaseConfig(m_options.baseConfig)
           << "  <type>system</type>\n"
              "  <listen>"
           << m_address
           << "</listen>\n"
              "  <auth>EXTERNAL</auth>\n"
           << (m_options.openPolicy ? openPolicy : "") << m_options.extraConfig << "\n</busconfig>\n";
    if (!config.flush()) {
        throw std::runtime_error("cannot write " + m_directory + "/bus.conf");
    }
}

void PrivateBus::Start()
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        throw std::system_error(errno, std::generic_category(), "pipe2");
    }
    FileHandle const readEnd(ends[0]);
    FileHandle writeEnd(ends[1]);
    FileHandle const log(open(LogFile().c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600));
    try {
        m_pid = Spawn({{m_options.program, "--config-file=" + m_directory + "/bus.conf", "--nofork",
                        "--nopidfile", "--nosyslog", "--print-address=3", "--address=" + m_address},
                       {},
                       {{log.Get(), STDERR_FILENO}, {writeEnd.Get(), 3}}});
    } catch (std::system_error const& failure) {
        bool const missing = failure.code() == std::errc::no_such_file_or_directory;
        throw std::runtime_error(std::string(failure.what()) +
                                 (missing ? " (install the package dbus)" : ""));
    }
    writeEnd.Reset();
    // The daemon listens before it prints where.
    if (ReadLine(readEnd.Get()).empty()) {
        Kill();
        throw std::runtime_error("dbus-daemon did not start: " + Log());
    }
}

std::string PrivateBus::LogFile() const
{
    return m_directory + "/daemon.log";
}

std::string PrivateBus::Log() const
{
    std::ifstream file(LogFile());
    return std::string(std::istreambuf_iterator<char>(file), {});
}

void PrivateBus::Kill()
{
    if (m_pid == 0) {
        return;
    }
    kill(m_pid, SIGKILL);
    while (waitpid(m_pid, nullptr, 0) < 0 && errno == EINTR) {
    }
    m_pid = 0;
}

void PrivateBus::Restart()
{
    Kill();
    Start();
}

void PrivateBus::Stop()
{
    SignalAndAwait(m_pid, SIGSTOP, WUNTRACED);
}

void PrivateBus::Continue()
{
    SignalAndAwait(m_pid, SIGCONT, WCONTINUED);
}

} // namespace zviptv::test
