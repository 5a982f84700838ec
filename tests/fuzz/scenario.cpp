// SPDX-License-Identifier: MIT
#include "Fuzz.h"

#include "host/ScenarioFile.h"
#include "scenario/Parser.h"
#include "scenario/Report.h"

#include <algorithm>
#include <map>
#include <stdexcept>

// Any text as a scenario, which may include itself and another file; then requests that it names, and its
// reports.

using namespace zviptv::sim;
using namespace zviptv::fuzz;

namespace {

/// Scenarios open no inputs of this machine.
void CheckVerbButInput(std::vector<Word>& verb, std::string const& folder)
{
    if (verb.front().text != "load") {
        CheckVerb(verb, folder);
    }
}

void CheckProblems(std::string const& problems)
{
    Require(!problems.empty() && problems.back() != '\n', "a problem has a text");
    Require(problems.find(": ") != std::string::npos, "a problem has a place");
}

SeenRequest RequestFor(Pattern const& pattern, std::string const& value)
{
    return {pattern.Function(), {{"onoff", value}, {"index", value}}};
}

void Run(Scenario const& scenario, std::string const& value)
{
    std::size_t performed = 0;
    Play play(scenario, [&](std::size_t step) {
        Require(!scenario.steps.at(step).verb.empty(), "a verb is performed");
        ++performed;
    });
    double now = 0;
    for (std::size_t i = 0; i < std::min<std::size_t>(scenario.steps.size(), 50); ++i) {
        Step const& step = scenario.steps[i];
        Pattern const* const pattern = step.after         ? &*step.after
                                       : step.expectation ? &step.expectation->request
                                                          : nullptr;
        if (pattern != nullptr) {
            play.OnRequest(RequestFor(*pattern, value), now);
        }
        now = std::max(now, play.Next().value_or(now));
        play.Advance(now);
    }
    play.End(now, "the command ended");
    Require(performed <= scenario.steps.size(), "a step runs once");
    Require(IsUtf8(JUnitReport(play, now)), "the report is UTF-8");
    TextReport(play);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    std::string const text(data, data + size);
    std::size_t const half = text.find('\0');
    std::map<std::string, std::string> const files{
        {"a", text.substr(0, half)}, {"b", half == std::string::npos ? "" : text.substr(half + 1)}};
    auto const read = [&files](std::string const& path) {
        auto const found = files.find(path);
        if (found == files.end()) {
            throw std::runtime_error("No such file or directory");
        }
        return found->second;
    };
    try {
        Run(ParseScenario("a", {read, CheckVerbButInput}), std::to_string(size % 3));
    } catch (ScenarioError const& failure) {
        CheckProblems(failure.what());
    }
    return 0;
}
