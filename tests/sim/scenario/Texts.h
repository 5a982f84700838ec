// SPDX-License-Identifier: MIT
#pragma once

#include "scenario/Parser.h"

#include <map>
#include <string>

namespace zviptv::sim {

/// Reads scenarios of these files: nothing of the file system.
inline Scenario Parsed(std::map<std::string, std::string> const& files,
                       std::string const& name = "a.scenario")
{
    return ParseScenario(name, {[&files](std::string const& path) {
                                    auto const found = files.find(path);
                                    if (found == files.end()) {
                                        throw std::runtime_error("No such file or directory");
                                    }
                                    return found->second;
                                },
                                [](std::vector<Word>& verb, std::string const& folder) {
                                    if (verb.front().text == "bad") {
                                        throw LineError(verb.back().column, "bad verb in '" + folder + "'");
                                    }
                                }});
}

inline Scenario Parsed(std::string const& text)
{
    return Parsed({{"a.scenario", text}});
}

} // namespace zviptv::sim
