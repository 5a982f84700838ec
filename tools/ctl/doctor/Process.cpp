// SPDX-License-Identifier: MIT
#include "doctor/Process.h"

#include "doctor/Versions.h"

#include <fstream>
#include <iterator>
#include <sstream>

#include <sys/stat.h>

namespace zviptv::ctl::doctor {

namespace {

constexpr char Library[] = "/libzv-iptv-service-api.so";
constexpr char Replaced[] = " (deleted)";

std::string Read(std::string const& file)
{
    std::ifstream stream(file);
    return std::string(std::istreambuf_iterator<char>(stream), {});
}

bool EndsWith(std::string const& text, std::string const& end)
{
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

/// The letter after the program's name, which is in brackets and may contain any characters.
bool IsStopped(std::string const& stat)
{
    std::size_t const end = stat.rfind(") ");
    return end != std::string::npos && (stat[end + 2] == 'T' || stat[end + 2] == 't');
}

/// "zviptv-sim" of "0::/system.slice/zviptv-sim.service".
std::string UnitOf(std::string const& cgroups)
{
    std::istringstream lines(cgroups);
    for (std::string line; std::getline(lines, line);) {
        std::string const name = line.substr(line.rfind('/') + 1);
        if (line.find(":/system.slice/") != std::string::npos && EndsWith(name, ".service")) {
            return name.substr(0, name.size() - 8);
        }
    }
    return {};
}

void LookUpLibrary(std::string const& maps, ServiceFacts& service)
{
    std::istringstream lines(maps);
    for (std::string line; std::getline(lines, line);) {
        if (line.find(Library) != std::string::npos) {
            service.isLibraryReplaced = EndsWith(line, Replaced);
            std::size_t const end = service.isLibraryReplaced ? line.rfind(Replaced) : line.size();
            service.loaded = VersionOf(line.substr(0, end));
            return;
        }
    }
}

} // namespace

void LookUpProcess(ServiceFacts& service)
{
    std::string const folder = "/proc/" + std::to_string(service.process);
    struct stat status = {};
    // If the bus runs in another PID namespace, the number belongs to another process.
    if (service.process == 0 || !service.userId || stat(folder.c_str(), &status) != 0 ||
        status.st_uid != *service.userId) {
        return;
    }
    std::string const name = Read(folder + "/comm");
    service.program = name.substr(0, name.find('\n'));
    service.isStopped = IsStopped(Read(folder + "/stat"));
    service.unit = UnitOf(Read(folder + "/cgroup"));
    LookUpLibrary(Read(folder + "/maps"), service);
}

} // namespace zviptv::ctl::doctor
