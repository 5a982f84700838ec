// SPDX-License-Identifier: MIT
#include "doctor/Versions.h"

#include <zviptv/ConnectionHelperDBusClient.h>

#include <cstdlib>
#include <filesystem>
#include <sstream>

#include <dlfcn.h>

namespace zviptv::ctl::doctor {

namespace {

std::string Resolved(std::string const& path)
{
    std::error_code failed;
    std::filesystem::path const resolved = std::filesystem::canonical(path, failed);
    return failed ? path : resolved.string();
}

/// The file of the library in this process, found by the address of one of its texts: the address of a
/// function may be that of a stub in the program.
std::string LoadedLibrary()
{
    Dl_info info = {};
    if (dladdr(CConnectionHelperDBusClient::BUSNAME, &info) == 0 || info.dli_fname == nullptr) {
        return {};
    }
    return info.dli_fname;
}

bool IsInLibraryPath(std::string const& file)
{
    char const* const variable = std::getenv("LD_LIBRARY_PATH");
    std::string const folder = Resolved(std::filesystem::path(file).parent_path().string());
    std::istringstream folders(variable == nullptr ? "" : variable);
    for (std::string named; std::getline(folders, named, ':');) {
        if (!named.empty() && Resolved(named) == folder) {
            return true;
        }
    }
    return false;
}

} // namespace

std::string VersionOf(std::string const& loadedFile)
{
    constexpr char Stem[] = "libzv-iptv-service-api.so.";
    std::string const name = loadedFile.substr(loadedFile.rfind('/') + 1);
    std::string const version =
        name.compare(0, sizeof Stem - 1, Stem) == 0 ? name.substr(sizeof Stem - 1) : "";
    return version.find('.') == std::string::npos ? "" : version;
}

VersionFacts LookUpVersions()
{
    VersionFacts versions;
    versions.tool = ZVIPTV_VERSION;
    versions.toolFile = Resolved("/proc/self/exe");
    std::string const loaded = LoadedLibrary();
    versions.loadedFile = Resolved(loaded);
    versions.loaded = VersionOf(versions.loadedFile);
    versions.isFromLibraryPath = IsInLibraryPath(loaded);
    return versions;
}

} // namespace zviptv::ctl::doctor
