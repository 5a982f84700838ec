// SPDX-License-Identifier: MIT
#pragma once

#include "Invocation.h"

#include <CLI/CLI.hpp>

#include <functional>
#include <string>
#include <vector>

namespace zviptv::ctl {

struct Command;
struct CommandArgument;

/// The program: reads the command line, runs the command and reports errors.
class CommandLine
{
public:
    CommandLine();

    ExitCode Run(int argc, char const* const* argv);

    /// Calls the service and evaluates its answers.
    using Question = std::function<Answer(Session& session)>;

    /// Reads the words of a command that gives one answer; `options` are the default of its options. May be
    /// called repeatedly. Throws a Failure for words that are no such command.
    Question Read(Invocation const& options, std::vector<std::string> words);

    /// The options of the last command that was read.
    Invocation const& Options() const { return m_invocation; }

private:
    using Arguments = std::vector<CLI::Option const*>;

    void AddGlobalOptions(CLI::App& app);
    void AddCall();
    Answer Call(Session& session, std::vector<std::string> const& texts) const;
    void AddMethods();
    void AddCommands();
    void AddCommand(CLI::App& parent, Command const& command);
    void AddStream(char const* name, char const* help, bool isPes);
    void AddWatch();
    void AddDoctor();
    void AddSimulator();
    void AddSimulatorWatch(CLI::App& simulator);
    void AddTrace();
    void AddBatch();
    void AddHelp();
    ExitCode Help(std::vector<std::string> words) const;
    static Arguments AddArguments(CLI::App& app, std::vector<CommandArgument> const& arguments);

    CLI::App m_app;
    Invocation m_invocation;
    bool m_listsMethods = false;
    bool m_answersOnce = true;          ///< the command answers with one JSON object
    Question m_question;                ///< for a command that gives one answer
    std::function<ExitCode()> m_action; ///< for any other command
};

} // namespace zviptv::ctl
