// SPDX-License-Identifier: MIT
#pragma once

#include <CLI/CLI.hpp>

#include <sstream>
#include <string>

namespace zviptv {

/// The error in a command line, with clearer words than CLI11's where necessary.
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

/// The output of help and version, which are exceptions in CLI11, too: without blanks at the ends of lines,
/// without two empty lines in a row, and without an empty line at the end.
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
