#include "Options.h"

#include <CLI/CLI.hpp>

#include <cmath>

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

} // namespace

std::optional<Options> ParseCommandLine(int argc, char** argv, int& exitStatus)
{
    Options options;
    std::string pes;
    std::string bus;
    CLI::App app(Description, "zviptv-sim");
    app.footer(Examples);
    app.set_version_flag("--version", ZVIPTV_VERSION);
    app.add_option("--ts", options.playback.path, "Transport stream to play")->required()->type_name("FILE");
    app.add_option("--program", options.playback.programme, "Programme to play; the first one by default")
        ->type_name("N");
    app.add_option("--speed", options.playback.speed, "Seconds of the stream played in a second")
        ->type_name("X")
        ->capture_default_str()
        ->check(CLI::Range(0.01, 1000.0));
    app.add_flag("--loop", options.playback.loop, "Start again at the end of the stream");
    app.add_option("--pes", pes,
                   "What subscribers get: audio, subtitle, teletext, caption, video and PIDs, separated by "
                   "commas, or "
                   "none; everything by default")
        ->type_name("LIST");
    app.add_option("--bus", bus,
                   "The machine's system bus, or a private one; private when a command is given")
        ->type_name("system|private")
        ->check(CLI::IsMember({"system", "private"}));
    app.add_option("command", options.command, "Command to run on a private bus, after --")
        ->type_name("-- COMMAND");
    app.positionals_at_end();
    try {
        app.parse(argc, argv);
        options.filter = PesFilter::Parse(pes);
    } catch (CLI::ParseError const& failure) {
        exitStatus = app.exit(failure) == 0 ? 0 : UsageError;
        return std::nullopt;
    } catch (std::invalid_argument const& failure) {
        std::cerr << "--pes: " << failure.what() << "\n";
        exitStatus = UsageError;
        return std::nullopt;
    }
    if (bus == "system" && !options.command.empty()) {
        std::cerr
            << "A command runs on a private bus: leave out --bus system, or start the command by itself.\n";
        exitStatus = UsageError;
        return std::nullopt;
    }
    options.privateBus = bus == "private" || !options.command.empty();
    return options;
}

} // namespace zviptv::sim
