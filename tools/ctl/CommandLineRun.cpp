#include "CommandLine.h"

#include "UsageText.h"
#include "commands/Arguments.h"
#include "output/Answer.h"
#include "output/OutputFile.h"
#include "output/Words.h"

#include <csignal>
#include <iostream>
#include <sstream>

namespace zviptv::ctl {

namespace {

/// What is wrong with the words that `app`, the last command that was understood, was given.
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
        return "one argument too many:" + quoted;
    }
    std::vector<std::string> const near = NearWords(unknown.front(), names);
    return "unknown command" + quoted + (near.empty() ? "" : "; did you mean " + Join(near, " or ") + "?");
}

void Say(std::string const& text)
{
    std::cerr << "zviptvctl: " << text << '\n';
}

/// A reader that has seen enough is no failure.
void WriteOutput(std::string const& text)
{
    OutputFile out("-");
    out.Write(text.data(), text.size());
    out.Close();
}

} // namespace

ExitCode CommandLine::Run(int argc, char const* const* argv)
{
    // A reader that goes away shows as a failed write, so that subscriptions are ended properly.
    std::signal(SIGPIPE, SIG_IGN);
    try {
        m_app.parse(argc, argv);
    } catch (CLI::ParseError const& error) {
        if (error.get_exit_code() != static_cast<int>(CLI::ExitCodes::Success)) {
            return ReportUsage(error);
        }
        m_action = [text = HelpText(m_app, error)] { // or the version
            WriteOutput(text);
            return ExitCode::Accepted;
        };
    }
    return Perform();
}

ExitCode CommandLine::Perform()
{
    try {
        OutputFile const probe("-"); // before a closed standard output's number is given to something else
        return m_action();
    } catch (Failure const& failure) {
        Say(failure.what());
        bool const isAboutService = failure.Code() == ExitCode::NoService ||
                                    failure.Code() == ExitCode::NoAnswer ||
                                    failure.Code() == ExitCode::Malformed;
        if (m_asJson && m_answersOnce && isAboutService) {
            PrintError(std::cout, failure.what());
        }
        return failure.Code();
    }
}

ExitCode CommandLine::AnswerWith(std::function<Answer(Session& session)> const& command)
{
    std::ostringstream text;
    ExitCode code = ExitCode::Accepted;
    {
        LogCollector log(m_echoLog);
        Session session(ChosenHandle(), log);
        Answer const answer = command(session);
        Print(text, answer, m_asJson);
        if (!answer.warning.empty()) {
            Say(answer.warning);
        }
        for (Failure const& failure : answer.failures) {
            Say(failure.what());
        }
        code = answer.Code();
    }
    WriteOutput(text.str());
    return code;
}

Handle CommandLine::ChosenHandle() const
{
    return {static_cast<IPTVProfile>(ParseArgument<std::int32_t>(m_profile, {"zviptvctl", "--profile"})),
            ParseArgument<int>(m_id, {"zviptvctl", "--id"})};
}

ExitCode CommandLine::ReportUsage(CLI::ParseError const& error) const
{
    CLI::App const* app = &m_app;
    std::string command = "zviptvctl";
    while (app->remaining().empty() && !app->get_subcommands().empty()) {
        app = app->get_subcommands().front();
        command += " " + app->get_name();
    }
    std::cerr << command << ": " << UsageMessage(*app, error) << "\n'" << command << " --help' shows more\n";
    return ExitCode::Usage;
}

} // namespace zviptv::ctl
