#include "Options.h"

#include <CLI/CLI.hpp>

#include <iostream>
#include <stdexcept>

namespace zviptv::sim {

namespace {

constexpr int UsageError = 2;

constexpr char Description[] =
    "The IPTV service on a desk: plays a transport stream on a system bus and answers "
    "applications as the television's service would.";

constexpr char Examples[] =
    "\nExamples:\n"
    "  zviptv-sim --ts samples/sample.ts --loop --bus private -- bash\n"
    "      a private bus with the service on it, and a shell in which applications find it\n"
    "  zviptv-sim --ts capture.ts -- zviptvctl pes --count 20\n"
    "      one command against the service; the exit status is the command's\n";

/// What is given as text and has to be understood.
struct Texts
{
    std::string pes;
    std::string bus;
    std::vector<std::string> faults;
    bool verbose = false;
    bool quiet = false;
    bool json = false;
};

void AddPlayback(CLI::App& app, Options& options, Texts& texts)
{
    PlayerOptions& playback = options.service.playback;
    app.add_option("--ts", playback.path, "Transport stream to play")->required()->type_name("FILE");
    app.add_option("--program", playback.programme, "Programme to play; the first one by default")
        ->type_name("N");
    app.add_option("--speed", playback.speed, "Seconds of the stream played in a second")
        ->type_name("X")
        ->capture_default_str()
        ->check(CLI::Range(0.01, 1000.0));
    app.add_flag("--loop", playback.loop, "Start again at the end of the stream");
    app.add_option("--pes", texts.pes,
                   "What subscribers get: audio, subtitle, teletext, caption, video and PIDs, separated by "
                   "commas, or "
                   "none; everything by default")
        ->type_name("LIST");
}

void AddGuide(CLI::App& app, ServiceOptions& service)
{
    app.add_option("--guide", service.guide, "Programme guide; the stream's own event information by default")
        ->type_name("XMLTV");
    app.add_option("--time", service.now,
                   "What the guide's clock shows at the start; the real time by default")
        ->type_name("UNIX-SECONDS");
    app.add_option("--rating-limit", service.ratingLimit,
                   "Lock programmes whose minimum age is above this until a PIN unlocks them")
        ->type_name("AGE");
    app.add_flag("--lock-service", service.serviceLocked, "Lock the service until it is unlocked");
}

void AddFaults(CLI::App& app, Options& options, Texts& texts)
{
    app.add_option("--fault", texts.faults,
                   "METHOD=delay:MS|drop|error|result:N|missing:KEY|garbage:KEY|short:KEY, METHOD by its "
                   "\"functionname\" or * for all; may be given several times")
        ->type_name("FAULT")
        ->allow_extra_args(false);
    app.add_option("--die-after", options.dieAfter, "The service dies after so many seconds")
        ->type_name("SECONDS")
        ->check(CLI::PositiveNumber);
    app.add_option("--restart-after", options.restartAfter,
                   "A service that died comes back after so many seconds")
        ->type_name("SECONDS")
        ->check(CLI::NonNegativeNumber);
}

void AddOutput(CLI::App& app, Options& options, Texts& texts)
{
    app.add_option("--bus", texts.bus,
                   "The machine's system bus, or a private one; private when a command is given")
        ->type_name("system|private")
        ->check(CLI::IsMember({"system", "private"}));
    app.add_flag("--verbose", texts.verbose, "Show every request, also beside a command");
    app.add_flag("--quiet", texts.quiet, "Show no requests");
    app.add_flag("--json", texts.json,
                 "Show requests and status as one JSON object a line on standard output");
    app.add_option("command", options.command, "Command to run on a private bus, after --")
        ->type_name("-- COMMAND");
    app.positionals_at_end();
}

RequestLog::Form LogForm(Texts const& texts, bool besideCommand)
{
    if (texts.json) {
        return RequestLog::Form::Json;
    }
    return texts.verbose || (!texts.quiet && !besideCommand) ? RequestLog::Form::Text
                                                             : RequestLog::Form::Quiet;
}

/// @throws std::invalid_argument with a line for the user
void Understand(Texts const& texts, Options& options)
{
    options.service.filter = PesFilter::Parse(texts.pes);
    for (std::string const& fault : texts.faults) {
        options.service.faults.Add(fault);
    }
    if (texts.bus == "system" && !options.command.empty()) {
        throw std::invalid_argument(
            "a command runs on a private bus: leave out --bus system, or start the command by itself");
    }
    if (options.restartAfter && !options.dieAfter) {
        throw std::invalid_argument("--restart-after needs --die-after");
    }
    options.privateBus = texts.bus == "private" || !options.command.empty();
    options.service.log = LogForm(texts, !options.command.empty());
}

} // namespace

std::optional<Options> ParseCommandLine(int argc, char** argv, int& exitStatus)
{
    Options options;
    Texts texts;
    CLI::App app(Description, "zviptv-sim");
    app.footer(Examples);
    app.set_version_flag("--version", "zviptv-sim " ZVIPTV_VERSION);
    AddPlayback(app, options, texts);
    AddGuide(app, options.service);
    AddFaults(app, options, texts);
    AddOutput(app, options, texts);
    try {
        app.parse(argc, argv);
        Understand(texts, options);
        return options;
    } catch (CLI::ParseError const& failure) {
        bool const isHelp = failure.get_exit_code() == 0;
        std::cerr << (isHelp ? "" : "zviptv-sim: ");
        app.exit(failure);
        exitStatus = isHelp ? 0 : UsageError;
    } catch (std::invalid_argument const& failure) {
        std::cerr << "zviptv-sim: " << failure.what() << "\n";
        exitStatus = UsageError;
    }
    return std::nullopt;
}

} // namespace zviptv::sim
