// SPDX-License-Identifier: MIT
#pragma once

#include <CLI/CLI.hpp>

#include <sstream>
#include <string>

namespace zviptv {

/// What is wrong with a command line, in our words where CLI11's are odd.
inline std::string UsageText(CLI::ParseError const& error)
{
    std::string const text = error.what();
    if (dynamic_cast<CLI::ArgumentMismatch const*>(&error) != nullptr) {
        bool const isRepeated = text.find(": At Most ") != std::string::npos;
        return text.substr(0, text.find(':')) + (isRepeated ? " is given more than once" : " needs a value");
    }
    if (dynamic_cast<CLI::RequiredError const*>(&error) != nullptr && text == "A subcommand is required") {
        return "a command is required";
    }
    return text;
}

/// What help and version, which are exceptions to CLI11 too, print: without blanks at the ends of lines, two
/// empty lines in a row, or one at the end.
inline std::string HelpText(CLI::App const& app, CLI::ParseError const& error)
{
    std::stringstream raw;
    app.exit(error, raw, raw);
    std::string text;
    std::string emptyLine;
    for (std::string line; std::getline(raw, line);) {
        line.erase(line.find_last_not_of(" \t") + 1);
        if (line.empty()) {
            emptyLine = "\n";
        } else {
            text += emptyLine + line + "\n";
            emptyLine.clear();
        }
    }
    return text;
}

} // namespace zviptv
