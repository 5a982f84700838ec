// SPDX-License-Identifier: MIT
#include "PrivateBus.h"

#include "process/BusDaemon.h"
#include "process/FileHandle.h"

#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <random>
#include <sstream>
#include <stdexcept>
#include <system_error>

namespace zviptv::sim {

namespace {

/// Every user who may connect may do everything. Without a rule, only the user of the daemon and root may
/// connect.
constexpr char Policy[] = R"(
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow user="root"/>
    <allow own="*"/>
    <allow send_destination="*"/>
    <allow receive_sender="*"/>
  </policy>
  <limit name="max_replies_per_connection">50000</limit>
</busconfig>
)";

/// An abstract socket address, which has no file: it vanishes with the daemon.
std::string NewAddress()
{
    std::random_device random;
    std::ostringstream address;
    address << "unix:abstract=zviptv-bus-" << std::hex << random() << random();
    return address.str();
}

std::string Config(std::string const& address)
{
    return "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\"\n"
           " \"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n<busconfig>\n"
           "  <type>system</type>\n  <listen>" +
           address + "</listen>" + Policy;
}

/// A file without a name, to pass to a program. It vanishes when its last descriptor is closed.
FileHandle MemoryFile(std::string const& contents = {})
{
    FileHandle file(memfd_create("zviptv-sim", MFD_CLOEXEC));
    if (write(file.Get(), contents.data(), contents.size()) != static_cast<ssize_t>(contents.size())) {
        throw std::system_error(errno, std::generic_category(), "cannot make a file in memory");
    }
    return file;
}

std::string ContentsOf(FileHandle const& file)
{
    std::string contents;
    std::array<char, 1024> buffer;
    for (ssize_t size = 0;
         (size = pread(file.Get(), buffer.data(), buffer.size(), static_cast<off_t>(contents.size()))) > 0;) {
        contents.append(buffer.data(), static_cast<std::size_t>(size));
    }
    return contents;
}

} // namespace

PrivateBus::PrivateBus()
{
    constexpr int configTarget = 4;
    std::string const address = NewAddress();
    FileHandle const config = MemoryFile(Config(address));
    FileHandle const errors = MemoryFile();
    std::string reason;
    try {
        BusStart start;
        start.config = "/proc/self/fd/" + std::to_string(configTarget);
        start.address = address;
        start.descriptors = {{config.Get(), configTarget}, {errors.Get(), STDERR_FILENO}};
        BusDaemon const daemon = StartBusDaemon(start);
        m_daemon.emplace(daemon.pid);
        m_address = daemon.address;
    } catch (std::system_error const& failure) {
        reason = failure.what();
    }
    if (m_address.empty()) {
        throw std::runtime_error("the private bus did not start: install the package dbus-daemon, or see "
                                 "what it said:\n" +
                                 reason + ContentsOf(errors));
    }
    setenv("DBUS_SYSTEM_BUS_ADDRESS", m_address.c_str(), 1);
}

} // namespace zviptv::sim
