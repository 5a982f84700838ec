#include "PrivateBus.h"

#include "Pipe.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace zviptv::sim {

namespace {

constexpr std::chrono::seconds StartTimeout{10};

constexpr char Policy[] = R"(
  <policy context="default">
    <allow user="*"/>
    <allow own="*"/>
    <allow send_destination="*" eavesdrop="true"/>
    <allow receive_sender="*" eavesdrop="true"/>
  </policy>
  <limit name="max_replies_per_connection">50000</limit>
</busconfig>
)";

std::string MakeDirectory()
{
    std::string path = (std::filesystem::temp_directory_path() / "zviptv-bus-XXXXXX").string();
    if (mkdtemp(path.data()) == nullptr) {
        throw std::runtime_error("cannot make a directory for the private bus: " +
                                 std::string(std::strerror(errno)));
    }
    return path;
}

void WriteConfig(std::string const& directory)
{
    std::ofstream config(directory + "/bus.conf");
    config << "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\"\n"
              " \"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n<busconfig>\n"
              "  <type>system</type>\n  <listen>unix:path="
           << directory << "/bus</listen>\n  <auth>EXTERNAL</auth>" << Policy;
    if (!config.flush()) {
        throw std::runtime_error("cannot write " + directory + "/bus.conf");
    }
}

std::string Contents(std::string const& path)
{
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

} // namespace

PrivateBus::PrivateBus() : m_directory(MakeDirectory())
{
    try {
        WriteConfig(m_directory);
        Pipe address;
        m_daemon = Process::Run({"dbus-daemon", "--config-file=" + m_directory + "/bus.conf", "--nofork",
                                 "--nopidfile", "--nosyslog",
                                 "--print-address=" + std::to_string(address.WriteEnd())},
                                Process::Group::Own, m_directory + "/errors");
        address.CloseWriteEnd();
        m_address = address.ReadLine(StartTimeout);
        if (m_address.empty()) {
            throw std::runtime_error(
                "the private bus did not start (is the package dbus-daemon installed?)\n" +
                Contents(m_directory + "/errors"));
        }
    } catch (...) {
        std::filesystem::remove_all(m_directory);
        throw;
    }
    setenv("DBUS_SYSTEM_BUS_ADDRESS", m_address.c_str(), 1);
}

PrivateBus::~PrivateBus()
{
    m_daemon->Signal(SIGTERM);
    m_daemon->Wait();
    std::error_code ignored;
    std::filesystem::remove_all(m_directory, ignored);
}

} // namespace zviptv::sim
