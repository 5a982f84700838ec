// SPDX-License-Identifier: MIT
#include "ScenarioFile.h"

#include "control/Methods.h"
#include "endpoints/FaultRule.h"
#include "input/InputUrl.h"
#include "scenario/Parser.h"
#include "verbs/Verbs.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <utility>

namespace zviptv::sim {

namespace {

constexpr std::size_t LargestFile = 1024 * 1024;

std::string ReadFile(std::string const& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error(std::strerror(errno));
    }
    std::string text(LargestFile + 1, '\0');
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    if (file.bad() || (file.gcount() == 0 && std::filesystem::is_directory(path))) {
        throw std::runtime_error("it is not a file");
    }
    text.resize(static_cast<std::size_t>(file.gcount()));
    if (text.size() > LargestFile) {
        throw std::runtime_error("it is larger than 1 MiB");
    }
    return text;
}

bool IsFile(Word const& input)
try {
    return ParseInputUrl(input.text).kind == InputUrl::Kind::File;
} catch (std::runtime_error const& failure) {
    throw LineError(input.column, failure.what());
}

/// The path of a file relative to the scenario's folder; the file must exist. Other inputs are unchanged.
void CheckInput(Word& input, std::string const& folder)
{
    if (!IsFile(input)) {
        return;
    }
    input.text = (std::filesystem::path(folder) / input.text).string();
    if (access(input.text.c_str(), R_OK) != 0) {
        throw LineError(input.column, "cannot open " + input.text + ": " + std::strerror(errno) +
                                          ": use a file that can be read, relative to the scenario's folder");
    }
}

/// Checks a fault, and the options of `fault add`.
void CheckFault(Word const& fault, verbs::Command const& command)
try {
    FaultRule::Parse(fault.text);
    if (!command.verb->options.empty()) {
        FaultRule::Parse(FaultText(command.parameters.get()));
    }
} catch (std::invalid_argument const& failure) {
    throw LineError(fault.column, failure.what());
}

} // namespace

void CheckVerb(std::vector<Word>& verb, std::string const& folder)
{
    std::vector<std::string> words;
    for (Word const& word : verb) {
        words.push_back(word.text);
    }
    try {
        verbs::Command const command = verbs::Parse(words);
        for (std::size_t const word : command.arguments) {
            verbs::Form const form = command.verb->arguments.front();
            if (form == verbs::Form::Input) {
                CheckInput(verb[word], folder);
            } else if (form == verbs::Form::Fault) {
                CheckFault(verb[word], command);
            }
        }
    } catch (verbs::VerbError const& failure) {
        std::size_t const word = failure.Word();
        throw LineError(word < verb.size() ? verb[word].column : verb.back().end, failure.what());
    }
}

Scenario LoadScenario(std::string const& file)
{
    return ParseScenario(file, {ReadFile, CheckVerb});
}

Scenario LoadScenarioText(std::string const& text, std::string const& file)
{
    if (text.size() > LargestFile) {
        throw ScenarioError(file + ": the scenario is larger than 1 MiB; split it");
    }
    bool isFirst = true;
    auto const read = [&](std::string const& path) {
        return std::exchange(isFirst, false) ? text : ReadFile(path);
    };
    return ParseScenario(file, {read, CheckVerb});
}

ScenarioOptions PrepareScenario(Options const& options)
{
    ScenarioOptions prepared;
    if (options.scenario.empty()) {
        return prepared;
    }
    prepared.scenario = LoadScenario(options.scenario);
    prepared.showsSteps = options.service.log == RequestLog::Form::Text;
    if (!options.junit.empty()) {
        prepared.junitName = options.junit;
        if (std::error_code none; std::filesystem::equivalent(options.scenario, options.junit, none)) {
            throw ScenarioError("zviptv-sim: cannot write the report to " + options.junit +
                                ": it is the scenario; use --junit with another file");
        }
        prepared.junit =
            FileHandle(open(options.junit.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
        if (!prepared.junit) {
            throw ScenarioError("zviptv-sim: cannot write " + options.junit + ": " + std::strerror(errno) +
                                "; use --junit with a file that can be written");
        }
    }
    return prepared;
}

} // namespace zviptv::sim
