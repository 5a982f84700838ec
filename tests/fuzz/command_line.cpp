// SPDX-License-Identifier: MIT
#include "Fuzz.h"
#include "ScriptedChannel.h"

#include "CommandLine.h"
#include "output/Failure.h"
#include "session/SystemBus.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <sstream>

// Runs the program without a service, with any arguments, one per line.

using namespace zviptv::ctl;
using namespace zviptv::fuzz;

/// Instead of the connection to a bus.
SystemBus::SystemBus() = default;

namespace {

std::vector<std::string> Lines(std::string const& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.emplace_back(line.c_str()); // an argument ends at a zero byte
    }
    return lines;
}

/// Redirects standard output to a file in memory.
int Output()
{
    static int const descriptor = [] {
        int const memory = memfd_create("standard output", 0);
        Require(memory >= 0 && dup2(memory, STDOUT_FILENO) == STDOUT_FILENO, "standard output is caught");
        SetServiceRunning(false);
        return memory;
    }();
    return descriptor;
}

std::string TakeOutput()
{
    std::cout.flush();
    std::fflush(stdout);
    auto const size = lseek(Output(), 0, SEEK_END);
    std::string text(static_cast<std::size_t>(size), '\0');
    Require(pread(Output(), text.data(), text.size(), 0) == size, "the output is read");
    Require(ftruncate(Output(), 0) == 0 && lseek(Output(), 0, SEEK_SET) == 0, "the output is emptied");
    return text;
}

/// `watch` would wait for a service, `doctor` ask the machine's bus, `batch` read the input, `--out` and
/// `--ts` write files.
bool IsHarmless(std::string const& argument)
{
    auto const has = [&](char const* text) { return argument.find(text) != std::string::npos; };
    return !has("watch") && !has("doctor") && !has("batch") && !has("--out") && !has("--ts");
}

void Check(ExitCode code, std::string const& output, std::string const& errors, bool asJson)
{
    bool const failed = code != ExitCode::Accepted;
    Require(code == ExitCode::Accepted || code == ExitCode::Usage || code == ExitCode::NoService,
            "an exit code");
    Require(failed != errors.empty(), "a command prints to standard error if it fails, and only then");
    Require(failed || IsUtf8(output), "help and lists are UTF-8");
    if (failed && !output.empty()) {
        Require(asJson && output.back() == '\n' && IsJsonLine(output.substr(0, output.size() - 1)),
                "a failure is a JSON object, if asked for");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    auto const arguments = Lines(std::string(data, data + size));
    if (!std::all_of(arguments.begin(), arguments.end(), IsHarmless)) {
        return 0;
    }
    std::vector<char const*> argv{"zviptvctl"};
    for (std::string const& argument : arguments) {
        argv.push_back(argument.c_str());
    }
    Output();
    std::ostringstream errors;
    std::streambuf* const real = std::cerr.rdbuf(errors.rdbuf());
    ExitCode const code = CommandLine().Run(static_cast<int>(argv.size()), argv.data());
    std::cerr.rdbuf(real);
    bool const asJson = std::any_of(arguments.begin(), arguments.end(),
                                    [](std::string const& argument) { return argument.find("--json") == 0; });
    Check(code, TakeOutput(), errors.str(), asJson);
    return 0;
}
