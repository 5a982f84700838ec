// SPDX-License-Identifier: MIT
#include "CommandLine.h"
#include "HelpTexts.h"
#include "commands/Arguments.h"
#include "simulator/SimulatorCommands.h"
#include "simulator/SimulatorWatch.h"
#include "verbs/Verbs.h"

#include <memory>

namespace zviptv::ctl {

namespace {

using Words = std::vector<std::string>;

/// The subcommand of the verb; "fault add" is a subcommand of "fault".
CLI::App* AddApp(CLI::App& simulator, verbs::Verb const& verb, std::function<void(CLI::App&)> const& prepare)
{
    Words const words = verbs::WordsOf(verb);
    CLI::App* parent = &simulator;
    if (words.size() == 2) {
        auto const found = simulator.get_subcommands(
            [&words](CLI::App const* app) { return app->get_name() == words.front(); });
        parent = found.empty() ? nullptr : found.front();
        if (parent == nullptr) {
            parent =
                simulator.add_subcommand(words.front(), "Add or remove faults, like --fault of zviptv-sim");
            prepare(*parent);
            parent->require_subcommand(1);
        }
    }
    CLI::App* const app = parent->add_subcommand(words.back(), verb.help);
    prepare(*app);
    return app;
}

/// An option that is given twice is twice in the words, so that it is refused.
void AddOption(CLI::App& app, verbs::Option const& option, std::shared_ptr<Words> const& texts)
{
    std::string const name = std::string("--") + option.name;
    app.add_option_function<std::string>(
           name,
           [texts, name](std::string const& text) {
               texts->push_back(name);
               texts->push_back(text);
           },
           option.help)
        ->type_name(NameOf(option.form));
}

/// Adds a subcommand for each verb and calls `prepare` with it. `choose` gets the words of the verb that was
/// given, with its arguments and options.
void AddVerbs(CLI::App& simulator, std::function<void(CLI::App&)> const& prepare,
              std::function<void(std::vector<std::string>)> const& choose)
{
    for (verbs::Verb const& verb : verbs::Verbs()) {
        CLI::App* const app = AddApp(simulator, verb, prepare);
        auto const texts = std::make_shared<Words>(verbs::WordsOf(verb));
        for (verbs::Form const form : verb.arguments) {
            app->add_option_function<std::string>(
                   NameOf(form), [texts](std::string const& text) { texts->push_back(text); }, Accepted(form))
                ->type_name("")
                ->required();
        }
        for (verbs::Option const& option : verb.options) {
            AddOption(*app, option, texts);
        }
        app->callback([choose, texts] { choose(*texts); });
    }
}

} // namespace

void CommandLine::AddSimulator()
{
    CLI::App* const simulator = m_app.add_subcommand("sim", "Control the simulator that runs on the bus");
    AddGlobalOptions(*simulator);
    simulator->require_subcommand(1);
    simulator->footer(help::SimulatorFooter);
    CLI::App* const status = simulator->add_subcommand("status", "Show the state of the television");
    AddGlobalOptions(*status);
    status->callback([this] { m_action = [this] { return ShowSimulator(m_invocation.asJson); }; });
    AddSimulatorWatch(*simulator);
    AddVerbs(
        *simulator, [this](CLI::App& app) { AddGlobalOptions(app); },
        [this](std::vector<std::string> words) {
            m_action = [this, words = std::move(words)] {
                return ControlSimulator(words, m_invocation.asJson);
            };
        });
}

void CommandLine::AddSimulatorWatch(CLI::App& simulator)
{
    auto const seconds = std::make_shared<std::string>();
    CLI::App* const app =
        simulator.add_subcommand("watch", "Follow the state of the television, and every request");
    AddGlobalOptions(*app);
    app->add_option("--seconds", *seconds, "End after S seconds")->type_name("S");
    app->callback([this, seconds] {
        m_answersOnce = false;
        m_action = [this, seconds] {
            auto const duration = seconds->empty()
                                      ? std::nullopt
                                      : std::optional(ParseSeconds(*seconds, {"watch", "--seconds"}));
            return SimulatorWatch(duration, m_invocation.asJson).Run();
        };
    });
}

} // namespace zviptv::ctl
