// SPDX-License-Identifier: MIT
#pragma once

#include "Files.h"

#include <dirent.h>
#include <sys/types.h>
#include <unistd.h>

#include <climits>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

namespace zviptv::test {

/// Neither there nor waiting for its parent to look after it.
inline bool HasEnded(pid_t pid)
{
    std::string const stat = ReadFile("/proc/" + std::to_string(pid) + "/stat");
    return stat.empty() || stat.at(stat.rfind(')') + 2) == 'Z';
}

inline std::vector<pid_t> ChildrenOf(pid_t pid)
{
    std::string const number = std::to_string(pid);
    std::ifstream children("/proc/" + number + "/task/" + number + "/children");
    return {std::istream_iterator<pid_t>(children), {}};
}

inline std::size_t ThreadsOf(pid_t pid)
{
    std::string const status = ReadFile("/proc/" + std::to_string(pid) + "/status");
    return std::stoul(status.substr(status.find("Threads:") + 8));
}

/// Of a simulator on the system bus it is the service. 0 if there are none or several.
inline pid_t OnlyChildOf(pid_t pid)
{
    std::vector<pid_t> const children = ChildrenOf(pid);
    return children.size() == 1 ? children.front() : 0;
}

/// Whether the process has the file open.
inline bool HasOpen(pid_t pid, std::string const& path)
{
    std::string const folder = "/proc/" + std::to_string(pid) + "/fd/";
    std::unique_ptr<DIR, int (*)(DIR*)> const descriptors(opendir(folder.c_str()), closedir);
    while (dirent const* const entry = descriptors ? readdir(descriptors.get()) : nullptr) {
        char target[PATH_MAX];
        ssize_t const size = readlink((folder + entry->d_name).c_str(), target, sizeof(target));
        if (size > 0 && path == std::string(target, static_cast<std::size_t>(size))) {
            return true;
        }
    }
    return false;
}

} // namespace zviptv::test
