// SPDX-License-Identifier: MIT
#include "MadeFile.h"

#include "ChildProcess.h"
#include "Files.h"

#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <sstream>
#include <stdexcept>

namespace zviptv::test {

namespace {

namespace fs = std::filesystem;

/// Size and time of a program in PATH, which a new version changes.
std::string VersionOf(std::string const& program)
{
    char const* const path = std::getenv("PATH");
    std::istringstream folders(path == nullptr ? "" : path);
    for (std::string folder; std::getline(folders, folder, ':');) {
        std::error_code error;
        auto const time = fs::last_write_time(fs::path(folder) / program, error);
        if (!error) {
            return std::to_string(fs::file_size(fs::path(folder) / program)) + " " +
                   std::to_string(time.time_since_epoch().count());
        }
    }
    return "";
}

/// A file counts by its contents, so that a copy elsewhere is the same.
std::string KeyOf(std::vector<std::string> const& command)
{
    std::string key = VersionOf(command.front());
    for (std::string const& word : command) {
        std::error_code ignored;
        key += '\0' + (fs::is_regular_file(word, ignored) ? ReadFile(word) : word);
    }
    std::ostringstream digits;
    digits << std::hex << std::hash<std::string>()(key);
    return digits.str();
}

} // namespace

std::string MadeFile(std::vector<std::string> command, std::string const& name)
{
    fs::path const folder = MADE_FILES;
    fs::create_directories(folder);
    fs::path const path = folder / (KeyOf(command) + "-" + name);
    if (!fs::exists(path)) {
        // Complete when it gets its name: other processes look for it at the same time.
        fs::path const unfinished = folder / (std::to_string(getpid()) + "-" + path.filename().string());
        command.push_back(unfinished);
        ChildProcess program(command);
        if (!(program.Wait(std::chrono::seconds(60)) == ExitStatus{0, 0}) || !program.Errors().empty()) {
            std::error_code ignored;
            fs::remove(unfinished, ignored);
            throw std::runtime_error(command.front() + " cannot make " + name + ": " + program.Errors());
        }
        fs::rename(unfinished, path);
    }
    return path;
}

} // namespace zviptv::test
