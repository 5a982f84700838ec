// SPDX-License-Identifier: MIT
#include "CommandLine.h"

#include "Batch.h"
#include "HelpTexts.h"
#include "UsageReport.h"
#include "commands/Arguments.h"
#include "commands/Commands.h"
#include "commands/Methods.h"
#include "common/UsageText.h"
#include "doctor/Doctor.h"
#include "output/OutputFile.h"

#include <algorithm>
#include <csignal>
#include <iostream>
#include <utility>

namespace zviptv::ctl {

namespace {

/// The words that were given for the arguments.
std::vector<std::string> TextsOf(std::vector<CLI::Option const*> const& arguments)
{
    std::vector<std::string> texts;
    for (CLI::Option const* argument : arguments) {
        texts.insert(texts.end(), argument->results().begin(), argument->results().end());
    }
    return texts;
}

/// The extra words of `call`: too many arguments, or an unknown option.
void AppendExtras(std::vector<std::string> const& extras, std::vector<std::string>& texts)
{
    for (std::string const& extra : extras) {
        bool const isNumber = extra.size() > 1 && extra[1] >= '0' && extra[1] <= '9';
        if (extra == "--") {
            continue;
        }
        if (extra[0] == '-' && !isNumber) {
            throw Failure(ExitCode::Usage, "unknown option '" + extra + "'; see zviptvctl call --help");
        }
        texts.push_back(extra);
    }
}

} // namespace

CommandLine::CommandLine() : m_app(help::Program, "zviptvctl")
{
    m_app.set_version_flag("--version", "zviptvctl " ZVIPTV_VERSION);
    m_app.set_help_all_flag("--help-all", "Print the help of all commands");
    m_app.require_subcommand(1);
    m_app.footer(help::ProgramFooter);
    AddGlobalOptions(m_app);
    AddCall();
    AddMethods();
    AddStream("pes", "Show PES packets as the service pushes them", true);
    AddStream("caption", "Show caption data as the service pushes it", false);
    AddWatch();
    AddTrace();
    AddDoctor();
    AddSimulator();
    AddCommands();
    AddBatch();
    AddHelp();
}

ExitCode CommandLine::Run(int argc, char const* const* argv)
{
    // If the reader closes the pipe, writes fail instead of ending the process, so that subscriptions are
    // ended.
    std::signal(SIGPIPE, SIG_IGN);
    try {
        m_app.parse(argc, argv);
    } catch (CLI::ParseError const& error) {
        if (error.get_exit_code() != static_cast<int>(CLI::ExitCodes::Success)) {
            return ReportUsage(m_app, error);
        }
        m_action = [text = HelpText(m_app, error)] { // or prints the version
            WriteOutput(text);
            return ExitCode::Accepted;
        };
    }
    if (m_question) {
        m_action = [this] { return m_invocation.AnswerWith(m_question); };
    }
    return m_invocation.Perform(m_action, m_answersOnce);
}

CommandLine::Question CommandLine::Read(Invocation const& options, std::vector<std::string> words)
{
    m_invocation = options;
    m_listsMethods = false;
    m_question = nullptr;
    std::reverse(words.begin(), words.end()); // in the order that the parser requires
    try {
        m_app.parse(words);
    } catch (CLI::ParseError const& error) {
        if (error.get_exit_code() != static_cast<int>(CLI::ExitCodes::Success)) {
            UsageError const usage = ExplainUsage(m_app, error);
            throw Failure(ExitCode::Usage, usage.message + " ('" + usage.command + " --help' shows more)");
        }
    }
    if (!m_question) {
        throw Failure(ExitCode::Usage, "this command cannot run in a batch; run it by itself");
    }
    return m_question;
}

/// Adds the options on every level, so that they may stand anywhere.
void CommandLine::AddGlobalOptions(CLI::App& app)
{
    if (app.get_parent() != nullptr) {
        app.footer(""); // without the parent's footer
    }
    app.add_flag("--json", m_invocation.asJson, "Write JSON");
    app.add_option("--profile", m_invocation.profile, "Profile of the handle; 1 by default")->type_name("N");
    app.add_option("--id", m_invocation.id, "Id of the handle, of which 16 bits count; 0 by default")
        ->type_name("N");
    app.add_flag("--log", m_invocation.echoLog, "Write the library's log lines to standard error");
}

/// Uses one option for each argument: CLI11 would split "[a,b]" in an option with several values.
CommandLine::Arguments CommandLine::AddArguments(CLI::App& app, std::vector<CommandArgument> const& arguments)
{
    Arguments options;
    for (CommandArgument const& argument : arguments) {
        options.push_back(app.add_option(argument.name, argument.help)->type_name(""));
    }
    return options;
}

void CommandLine::AddCall()
{
    CLI::App* const call = m_app.add_subcommand("call", "Call a method of the interface by its name");
    AddGlobalOptions(*call);
    call->footer(help::CallFooter);
    call->allow_extras();
    call->add_flag("--list", m_listsMethods, "List the methods instead");
    Arguments const arguments = AddArguments(*call, {{"METHOD", "Name of the method"},
                                                     {"ARG1", "Its first argument, if it takes any"},
                                                     {"ARG2", "Its second argument"},
                                                     {"ARG3", "Its third argument"},
                                                     {"ARG4", "Its fourth argument"},
                                                     {"ARG5", "Its fifth argument"}}); // GetProgram has most
    call->callback([this, call, arguments] {
        std::vector<std::string> texts = TextsOf(arguments);
        m_question = [this, call, texts](Session& session) mutable {
            AppendExtras(call->remaining(), texts);
            return Call(session, texts);
        };
    });
}

Answer CommandLine::Call(Session& session, std::vector<std::string> const& texts) const
{
    if (m_listsMethods) {
        return ListMethods();
    }
    if (texts.empty()) {
        throw Failure(ExitCode::Usage, "no method is given: 'zviptvctl methods' lists them");
    }
    std::vector<std::string> const arguments(texts.begin() + 1, texts.end());
    return CallMethod(FindMethod(texts.front(), arguments.size()), session, arguments);
}

void CommandLine::AddMethods()
{
    CLI::App* const methods = m_app.add_subcommand("methods", "List the methods of the interface");
    AddGlobalOptions(*methods);
    methods->callback([this] { m_question = [](Session&) { return ListMethods(); }; });
}

void CommandLine::AddCommands()
{
    for (CommandGroup const& group : CommandGroups()) {
        CLI::App* const app = m_app.add_subcommand(group.name, group.help);
        AddGlobalOptions(*app);
        app->require_subcommand(1);
    }
    for (Command const& command : Commands()) {
        AddCommand(*command.group == '\0' ? m_app : *m_app.get_subcommand(command.group), command);
    }
}

void CommandLine::AddCommand(CLI::App& parent, Command const& command)
{
    CLI::App* const app = parent.add_subcommand(command.name, command.help);
    AddGlobalOptions(*app);
    Arguments const arguments = AddArguments(*app, command.arguments);
    for (CommandArgument const& argument : command.arguments) {
        app->get_option(argument.name)->required();
    }
    app->callback([this, &command, arguments] {
        m_question = [&command, texts = TextsOf(arguments)](Session& session) {
            return command.run(session, CommandArguments(command, texts));
        };
    });
}

void CommandLine::AddDoctor()
{
    auto const names = std::make_shared<doctor::Names>();
    CLI::App* const app =
        m_app.add_subcommand("doctor", "Report what is wrong on this machine, and how to fix it");
    AddGlobalOptions(*app);
    app->footer(help::DoctorFooter);
    app->add_option("--user", names->user, "The user under which the service runs; zviptv by default")
        ->type_name("USER");
    app->add_option("--group", names->group, "The group of applications; zviptv-apps by default")
        ->type_name("GROUP");
    app->callback(
        [this, names] { m_action = [this, names] { return doctor::Run(*names, m_invocation.asJson); }; });
}

void CommandLine::AddBatch()
{
    CLI::App* const app = m_app.add_subcommand(
        "batch", "Run commands from standard input, one per line, and answer each in JSON");
    AddGlobalOptions(*app);
    app->footer(help::BatchFooter);
    app->callback([this] {
        m_answersOnce = false;
        m_action = [this] { return Batch(m_invocation).Run(std::cin); };
    });
}

void CommandLine::AddHelp()
{
    CLI::App* const app = m_app.add_subcommand("help", "Print this help, or the help of a command");
    AddGlobalOptions(*app);
    auto const words = std::make_shared<std::vector<std::string>>();
    app->add_option("COMMAND", *words, "Words of the command")->type_name("");
    app->callback([this, words] { m_action = [this, words] { return Help(*words); }; });
}

/// Prints the same as --help after these words.
ExitCode CommandLine::Help(std::vector<std::string> words) const
{
    CLI::App const* app = &m_app;
    for (std::string const& word : words) {
        auto const found =
            app->get_subcommands([&](CLI::App const* command) { return command->get_name() == word; });
        if (found.empty()) {
            throw Failure(ExitCode::Usage, "unknown command '" + word + "'; 'zviptvctl help' lists them");
        }
        app = found.front();
    }
    words.emplace_back("--help");
    std::vector<char const*> argv = {"zviptvctl"};
    for (std::string const& word : words) {
        argv.push_back(word.c_str());
    }
    return CommandLine().Run(static_cast<int>(argv.size()), argv.data());
}

} // namespace zviptv::ctl
