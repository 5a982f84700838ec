// SPDX-License-Identifier: MIT
#include "PrivateBus.h"

#include "Files.h"
#include "SpawnThread.h"
#include "process/BusDaemon.h"
#include "process/FileHandle.h"

#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace zviptv::test {

namespace {

constexpr char const* AddressVariable = "DBUS_SYSTEM_BUS_ADDRESS";

constexpr char const* OpenPolicy = R"(  <policy context="default">
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

/// The daemon runs as the test's user: a daemon that changes its user would survive a killed test.
std::string BaseConfig(std::string const& file)
{
    return file.empty()
               ? std::string()
               : "  <include>" + file + "</include>\n  <user>" + std::to_string(getuid()) + "</user>\n";
}

void RestoreVariable(std::optional<std::string> const& former)
{
    if (former) {
        setenv(AddressVariable, former->c_str(), 1);
    } else {
        unsetenv(AddressVariable);
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
    if (char const* const former = getenv(AddressVariable); former != nullptr) {
        m_formerAddress = former;
    }
    setenv(AddressVariable, m_address.c_str(), 1);
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
           << (m_options.openPolicy ? OpenPolicy : "") << m_options.extraConfig << "\n</busconfig>\n";
    if (!config.flush()) {
        throw std::runtime_error("cannot write " + m_directory + "/bus.conf");
    }
}

void PrivateBus::Start()
{
    FileHandle const log(open(LogFile().c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600));
    try {
        BusDaemon const daemon = StartBusDaemon({m_options.program,
                                                 m_directory + "/bus.conf",
                                                 m_address,
                                                 {{log.Get(), STDERR_FILENO}},
                                                 SpawnFromAnyThread});
        m_pid = daemon.pid;
        if (daemon.address.empty()) {
            Kill();
            throw std::runtime_error("dbus-daemon did not start: " + Log());
        }
    } catch (std::system_error const& failure) {
        bool const missing = failure.code() == std::errc::no_such_file_or_directory;
        throw std::runtime_error(std::string(failure.what()) +
                                 (missing ? " (install the package dbus)" : ""));
    }
}

std::string PrivateBus::LogFile() const
{
    return m_directory + "/daemon.log";
}

std::string PrivateBus::Log() const
{
    return ReadFile(LogFile());
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
