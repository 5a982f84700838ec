// SPDX-License-Identifier: MIT
#include "SimulatorCommands.h"

#include "Simulator.h"
#include "Variant.h"
#include "output/Answer.h"
#include "output/OutputFile.h"

#include <filesystem>
#include <stdexcept>

namespace zviptv::ctl {

namespace {

/// The simulator may run in another folder: it resolves the names of files that do not exist here.
std::string AbsoluteInput(std::string const& input)
{
    std::error_code ignored;
    bool const isFile = std::filesystem::exists(input, ignored);
    return isFile ? std::filesystem::absolute(input, ignored).string() : input;
}

verbs::Command ParseVerb(std::vector<std::string> const& words)
try {
    return verbs::Parse(words);
} catch (std::invalid_argument const& failure) {
    throw Failure(ExitCode::Usage, failure.what());
}

} // namespace

ExitCode ControlSimulator(std::vector<std::string> words, bool asJson)
{
    if (words.size() == 2 && words.front() == "load") {
        words[1] = AbsoluteInput(words[1]);
    }
    verbs::Command const command = ParseVerb(words);
    Simulator().Call(command);
    if (asJson) {
        WriteOutput("{\"result\":true}\n");
    }
    return ExitCode::Accepted;
}

ExitCode ShowSimulator(bool asJson)
{
    Json::Value const state = Simulator().State();
    if (asJson) {
        WriteOutput(Compact(state) + "\n");
        return ExitCode::Accepted;
    }
    std::string text;
    for (std::string const& name : state.getMemberNames()) {
        constexpr std::size_t column = 17;
        std::string const label = name + ":";
        text += label + std::string(column - std::min(column - 1, label.size()), ' ') + ToLine(state[name]) +
                "\n";
    }
    WriteOutput(text);
    return ExitCode::Accepted;
}

} // namespace zviptv::ctl
