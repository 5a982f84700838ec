// SPDX-License-Identifier: MIT
#include "Fuzz.h"

#include "verbs/Verbs.h"

#include <sstream>
#include <stdexcept>

// Any words as a verb of the control interface, a line each.

using namespace zviptv;
using namespace zviptv::fuzz;

namespace {

std::vector<std::string> Lines(std::string const& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        // Neither a command line nor a scenario has zero bytes.
        // NOLINTNEXTLINE(readability-redundant-string-cstr)
        lines.emplace_back(line.c_str());
    }
    return lines;
}

/// The interface accepts every parsed verb: a tuple of the method's types, within their ranges.
void CheckCommand(verbs::Command const& command)
{
    std::string types;
    for (verbs::Form const form : command.verb->arguments) {
        types += verbs::TypeOf(form);
    }
    types = "(" + types + (command.verb->options.empty() ? "" : "a{sv}") + ")";
    Require(types == g_variant_get_type_string(command.parameters.get()), "the arguments have their types");
    verbs::Check(command.verb->method, command.parameters.get());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    try {
        CheckCommand(verbs::Parse(Lines(std::string(data, data + size))));
    } catch (std::invalid_argument const& failure) {
        Require(std::string(failure.what()).find("use ") != std::string::npos,
                "an error says what is accepted");
    }
    return 0;
}
