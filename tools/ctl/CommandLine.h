// SPDX-License-Identifier: MIT
#pragma once

#include "Invocation.h"

#include <CLI/CLI.hpp>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace zviptv::ctl {

struct Command;
struct CommandArgument;

/// The program: reads the command line, runs the command it names and tells what went wrong.
class CommandLine
{
public:
    CommandLine();

    ExitCode Run(int argc, char const* const* argv);

private:
    using Texts = std::shared_ptr<std::vector<std::string>>;

    void AddGlobalOptions(CLI::App& app);
    void AddCall();
    ExitCode Call(std::vector<std::string> const& texts);
    void AddMethods();
    void AddCommands();
    void AddCommand(CLI::App& parent, Command const& command);
    void AddStream(char const* name, char const* help, bool isPes);
    void AddWatch();
    void AddDoctor();
    void AddSimulator();
    void AddSimulatorWatch(CLI::App& simulator);
    void AddTrace();
    void AddHelp();
    ExitCode Help(std::vector<std::string> words) const;
    static Texts AddArguments(CLI::App& app, std::vector<CommandArgument> const& arguments);

    CLI::App m_app;
    Invocation m_invocation;
    bool m_listsMethods = false;
    bool m_answersOnce = true; ///< the command answers with one JSON object
    std::function<ExitCode()> m_action;
};

} // namespace zviptv::ctl
