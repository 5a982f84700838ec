// SPDX-License-Identifier: MIT
#include "Options.h"

#include "OptionChecks.h"
#include "ReplayOptions.h"
#include "common/UsageText.h"
#include "trace/CaptureWriter.h"

#include <CLI/CLI.hpp>

#include <iostream>
#include <random>
#include <stdexcept>

namespace zviptv::sim {

namespace {

constexpr int CannotWrite = 1;
constexpr int UsageError = 2;

constexpr char Description[] =
    "A simulated IPTV service: plays a transport stream on a system bus and answers "
    "applications as the service of a television would.";

constexpr char Examples[] =
    "\nExamples:\n"
    "  zviptv-sim --ts samples/sample.ts --loop --bus private -- bash\n"
    "      a private bus with the service on it, and a shell in which applications find it\n"
    "  zviptv-sim --ts capture.ts -- zviptvctl pes --count 20\n"
    "      one command with the service; the exit status is the command's\n"
    "  zviptv-sim --ts capture.ts --scenario film.scenario -- application\n"
    "      an application on a television that does what the file says\n"
    "  zviptv-sim --replay bug.pcapng -- application\n"
    "      an application on the television that was recorded\n";

/// Options that are given as text and must be parsed.
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
    app.add_option("--ts,--input", playback.input.url,
                   "Transport stream to play: a file, a FIFO, - for standard input, "
                   "udp://[@]GROUP:PORT[?iface=NAME], "
                   "rtp:// with the same parts, http:// or https://")
        ->type_name("FILE|URL");
    app.add_flag("--follow", playback.input.follow,
                 "The file is being written: at its end, wait for more data. At the end of a FIFO, wait for "
                 "the next writer");
    app.add_option("--program", playback.programme, "Programme to play; the first one by default")
        ->type_name("N")
        ->check(WholeNumber(0, 65535, "a programme number, 0 to 65535"));
    app.add_option("--speed", playback.speed, "Seconds of the stream played in a second, 0.01 to 1000")
        ->type_name("X")
        ->capture_default_str()
        ->check(Number(0.01, 1000, Fractions::Allowed, "a speed from 0.01 to 1000"));
    app.add_flag("--loop", playback.loop, "Start again at the end of the stream");
    app.add_option(
           "--pes", texts.pes,
           "Packets to send to subscribers: audio, subtitle, teletext, caption, video and PIDs (257 or "
           "0x101), separated by commas, or none; all packets by default")
        ->type_name("LIST");
    app.add_option(
           "--wait-for", options.service.awaitedSubscribers,
           "Begin to play when the given number of applications have subscribed, so that they miss nothing")
        ->type_name("N")
        ->check(WholeNumber(0, 1000, "a number of applications, 0 to 1000"));
}

void AddGuide(CLI::App& app, Options& options)
{
    ServiceOptions& service = options.service;
    app.add_option("--guide", service.guide,
                   "Programme guide; the event information of the stream by default")
        ->type_name("XMLTV");
    app.add_flag("--list-services", options.listServices,
                 "List the guide's services, with the ids that applications use, and exit");
    app.add_option("--time", service.now, "Time of the guide's clock at the start; the real time by default")
        ->type_name("UNIX-SECONDS")
        ->check(WholeNumber(0, 4294967295.0, "a number of seconds since 1970, 0 to 4294967295"));
    app.add_option("--rating-limit", service.ratingLimit,
                   "Lock programmes whose minimum age is above this until a PIN unlocks them")
        ->type_name("AGE")
        ->check(WholeNumber(0, 99, "an age in years, 0 to 99"));
    app.add_flag("--lock-service", service.serviceLocked, "Lock the service until it is unlocked");
    app.add_flag("--lock-stops-pushes", service.lockStopsPushes,
                 "Push nothing while the programme or the service is locked");
}

void AddFaults(CLI::App& app, Options& options, Texts& texts)
{
    app.add_option(
           "--fault", texts.faults,
           "Make messages faulty: " + FaultRule::Usage() +
               " The option may be given several times. The fault of a request has priority over one of *, "
               "and a later fault over an earlier one")
        ->type_name("FAULT")
        ->allow_extra_args(false);
    app.add_option(
           "--fault-seed", options.service.faultSeed,
           "Seed of the faults with a probability: the same seed repeats them; a random one by default")
        ->type_name("N")
        ->check(WholeNumber(0, 4294967295.0, "a seed, 0 to 4294967295"));
    app.add_option("--die-after", options.dieAfter, "The service dies after the given number of seconds")
        ->type_name("SECONDS")
        ->check(Seconds(0.001));
    app.add_option("--restart-after", options.restartAfter,
                   "A service that died, or was killed, comes back after the given number of seconds")
        ->type_name("SECONDS")
        ->check(Seconds(0));
    app.add_flag("--restart-from-start", options.restartFromStart,
                 "A service that comes back plays the stream from its start, with the initial time");
}

void AddScenario(CLI::App& app, Options& options)
{
    CLI::Option* const scenario =
        app.add_option("--scenario", options.scenario,
                       "Control the television and check the application as described in this file")
            ->type_name("FILE")
            ->check(IsNotEmpty());
    app.add_option("--junit", options.junit, "Write the scenario's report as JUnit XML, too")
        ->type_name("FILE")
        ->check(IsNotEmpty())
        ->needs(scenario);
}

void AddPanel(CLI::App& app, Options& options)
{
    app.add_option_function<std::vector<unsigned>>(
           "--panel",
           [&options](std::vector<unsigned> const& port) { options.panel = port.empty() ? 0 : port.front(); },
           "Serve a page for the browser that shows and controls the television, on this port of 127.0.0.1 "
           "or on any free one")
        ->type_name("[PORT]")
        ->expected(0, 1)
        ->check(WholeNumber(0, 65535, "a port, 0 to 65535"));
}

void AddOutput(CLI::App& app, Options& options, Texts& texts)
{
    app.add_option(
           "--bus", texts.bus,
           "Use the machine's system bus, or a private one; private if a command is given, otherwise system")
        ->type_name("system|private")
        ->check(CLI::Validator(
            [](std::string& text) {
                bool const isKnown = text == "system" || text == "private";
                return isKnown ? std::string() : "'" + text + "' is neither system nor private";
            },
            ""));
    app.add_option("--record", options.record,
                   "Record all messages of the bus in FILE.pcapng or FILE.pcap, for zviptvctl trace --in and "
                   "Wireshark")
        ->type_name("FILE")
        ->check(CLI::Validator(
            [](std::string& text) {
                return text == "-" ? "--record needs a file" : trace::CaptureWriter::CheckName(text);
            },
            ""));
    app.add_flag("--verbose", texts.verbose, "Show every request, also if a command is given");
    app.add_flag("--quiet", texts.quiet, "Show no requests");
    app.add_flag("--json", texts.json,
                 "Print requests and status on standard output, one JSON object per line");
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
void ParseOptions(Texts const& texts, Options& options)
{
    options.service.filter = PesFilter::Parse(texts.pes);
    for (std::string const& fault : texts.faults) {
        options.service.faults.push_back(FaultRule::Parse(fault));
    }
    if (texts.bus == "system" && !options.command.empty()) {
        throw std::invalid_argument(
            "a command runs on a private bus: leave out --bus system, or start the command by itself");
    }
    options.privateBus = texts.bus == "private" || !options.command.empty();
    options.service.isTapped = options.panel.has_value();
    options.service.log = LogForm(texts, !options.command.empty());
}

/// The first unknown option; empty if there is none. The unparsed words may also be "--" and the command.
std::string UnknownOption(CLI::App const& app)
{
    std::vector<std::string> const rest = app.remaining();
    return rest.empty() || rest.front() == "--" ? std::string() : rest.front();
}

/// Help and version are handled here, too, with the code 0.
int ReportUsage(CLI::App const& app, CLI::ParseError const& error)
{
    if (error.get_exit_code() == 0) {
        std::cout << HelpText(app, error) << std::flush;
        if (std::cout) {
            return 0;
        }
        std::cerr << "zviptv-sim: cannot write standard output: check that it is open and not full\n";
        return CannotWrite;
    }
    std::string const unknown = UnknownOption(app);
    std::cerr << "zviptv-sim: " << (unknown.empty() ? UsageText(error) : "unknown option '" + unknown + "'")
              << "\n'zviptv-sim --help' shows more\n";
    return UsageError;
}

} // namespace

std::optional<Options> ParseCommandLine(int argc, char** argv, int& exitStatus)
{
    Options options;
    options.service.faultSeed = std::random_device()();
    Texts texts;
    CLI::App app(Description, "zviptv-sim");
    app.footer(Examples);
    app.set_version_flag("--version", "zviptv-sim " ZVIPTV_VERSION);
    AddPlayback(app, options, texts);
    AddGuide(app, options);
    AddFaults(app, options, texts);
    AddReplay(app, options.service.replay);
    AddScenario(app, options);
    AddPanel(app, options);
    AddOutput(app, options, texts);
    try {
        app.parse(argc, argv);
        options.words.assign(argv, argv + argc);
        if (app.count("--fault-seed") == 0) { // so that every service uses the same seed, also after a death
            options.words.insert(options.words.begin() + 1,
                                 "--fault-seed=" + std::to_string(options.service.faultSeed));
        }
        ParseReplayOptions(app, options);
        ParseOptions(texts, options);
        return options;
    } catch (CLI::ParseError const& failure) {
        exitStatus = ReportUsage(app, failure);
    } catch (std::invalid_argument const& failure) {
        std::cerr << "zviptv-sim: " << failure.what() << "\n";
        exitStatus = UsageError;
    }
    return std::nullopt;
}

} // namespace zviptv::sim
