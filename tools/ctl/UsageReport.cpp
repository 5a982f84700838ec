// SPDX-License-Identifier: MIT
#include "UsageReport.h"

#include "common/UsageText.h"
#include "output/Words.h"

#include <iostream>

namespace zviptv::ctl {

namespace {

/// The error in the words for `app`, the last command that was recognised.
std::string UsageMessage(CLI::App const& app, CLI::ParseError const& error)
{
    std::vector<std::string> const unknown = app.remaining();
    if (unknown.empty()) {
        return UsageText(error);
    }
    std::string const quoted = " '" + unknown.front() + "'";
    std::vector<std::string> names;
    for (CLI::App const* command : app.get_subcommands([](CLI::App const*) { return true; })) {
        names.push_back(command->get_name());
    }
    if (unknown.front()[0] == '-') {
        return "unknown option" + quoted;
    }
    if (names.empty()) {
        return "unexpected argument:" + quoted;
    }
    std::vector<std::string> const near = NearWords(unknown.front(), names);
    return "unknown command" + quoted + (near.empty() ? "" : "; did you mean " + Join(near, " or ") + "?");
}

} // namespace

UsageError ExplainUsage(CLI::App const& program, CLI::ParseError const& error)
{
    CLI::App const* app = &program;
    std::string command = "zviptvctl";
    while (app->remaining().empty() && !app->get_subcommands().empty()) {
        app = app->get_subcommands().front();
        command += " " + app->get_name();
    }
    return {command, UsageMessage(*app, error)};
}

ExitCode ReportUsage(CLI::App const& program, CLI::ParseError const& error)
{
    UsageError const usage = ExplainUsage(program, error);
    std::cerr << usage.command << ": " << usage.message << "\n'" << usage.command << " --help' shows more\n";
    return ExitCode::Usage;
}

} // namespace zviptv::ctl
