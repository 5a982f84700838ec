// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

namespace zviptv::test {

/// The path of a file that a program such as ffmpeg makes. `command` is the program with its arguments, to
/// which the path is appended. `name` ends the file's name, which tells some programs the format.
///
/// The file is kept in the build folder. The program runs again only if the command, the contents of a file
/// that the command names, or the program has changed. Do not write to the file. Throws std::runtime_error if
/// the program fails or reports an error.
std::string MadeFile(std::vector<std::string> command, std::string const& name);

} // namespace zviptv::test
