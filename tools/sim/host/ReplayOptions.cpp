// SPDX-License-Identifier: MIT
#include "ReplayOptions.h"

#include <CLI/CLI.hpp>

#include <filesystem>
#include <map>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

namespace zviptv::sim {

namespace {

using Unrecorded = ReplayOptions::Unrecorded;

std::map<std::string, Unrecorded> const UnrecordedWords = {
    {"error", Unrecorded::Error}, {"false", Unrecorded::False}, {"stream", Unrecorded::Stream}};

void Refuse(CLI::App const& app, std::vector<std::string> const& options, std::string const& why)
{
    for (std::string const& option : options) {
        if (app.count(option) != 0) {
            throw std::invalid_argument(option + why);
        }
    }
}

} // namespace

void AddReplay(CLI::App& app, ReplayOptions& options)
{
    CLI::Option* const replay =
        app.add_option(
               "--replay", options.file,
               "Answer like the service that was recorded in this pcapng or pcap file, instead of playing a "
               "stream")
            ->type_name("FILE")
            ->check(CLI::Validator(
                [](std::string& text) {
                    return std::string(text.empty() ? "the name of the file is empty" : "");
                },
                ""));
    app.add_option_function<std::string>(
           "--unrecorded",
           [&options](std::string const& word) { options.unrecorded = UnrecordedWords.at(word); },
           "Answer to a request that was not recorded: a D-Bus error (the default), a complete reply with "
           "the result 0, or the answer of the simulator that plays the stream of --ts")
        ->type_name("error|false|stream")
        ->needs(replay)
        ->check(CLI::Validator(
            [](std::string& text) {
                return UnrecordedWords.count(text) != 0 ? std::string()
                                                        : "'" + text + "' is neither error, false nor stream";
            },
            ""));
}

void ParseReplayOptions(CLI::App const& app, Options& all)
{
    ServiceOptions& options = all.service;
    if (options.replay.file.empty()) {
        if (app.count("--ts") == 0) {
            throw CLI::RequiredError("--ts");
        }
        return;
    }
    std::error_code ignored;
    if (std::filesystem::equivalent(options.replay.file, all.record, ignored)) {
        throw std::invalid_argument("--record would overwrite the recording that --replay reads: name "
                                    "another file");
    }
    Refuse(app,
           {"--wait-for", "--die-after", "--restart-from-start", "--list-services", "--lock-stops-pushes"},
           " does not go together with --replay: the recording decides what the service does and when; leave "
           "it out");
    options.replay.speed = options.playback.speed;
    if (options.replay.unrecorded == Unrecorded::Stream) {
        if (app.count("--ts") == 0) {
            throw std::invalid_argument("--unrecorded stream needs a stream to answer from: add --ts FILE");
        }
        return;
    }
    Refuse(app,
           {"--ts", "--follow", "--program", "--loop", "--pes", "--guide", "--time", "--rating-limit",
            "--lock-service"},
           " has no effect with --replay, which plays no stream: leave it out, or add --unrecorded stream");
    options.playback.speed = 1; // speed of the empty input
}

} // namespace zviptv::sim
