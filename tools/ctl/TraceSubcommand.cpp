// SPDX-License-Identifier: MIT
#include "CommandLine.h"
#include "HelpTexts.h"
#include "commands/Arguments.h"
#include "trace/Trace.h"

#include <filesystem>
#include <iterator>
#include <system_error>
#include <utility>

namespace zviptv::ctl {

namespace {

/// Whether both name one file, which may not exist yet. Standard input and output are different files.
bool IsSameFile(std::string const& one, std::string const& other)
{
    if (one.empty() || other.empty() || one == "-" || other == "-") {
        return false;
    }
    std::error_code failure;
    return std::filesystem::weakly_canonical(one, failure) ==
               std::filesystem::weakly_canonical(other, failure) ||
           std::filesystem::equivalent(one, other, failure);
}

/// Files are written from their start, so that nothing may be lost that another option needs.
void RequireDifferentFiles(TraceOptions const& options)
{
    std::pair<char const*, std::string const&> const written[] = {
        {"--out", options.out}, {"--svg", options.svg}, {"--html", options.html}};
    for (auto const& [option, path] : written) {
        if (IsSameFile(path, options.in)) {
            throw Failure(ExitCode::Usage, option + std::string(" would overwrite the file that --in reads: "
                                                                "name another file"));
        }
        for (auto const* other = std::begin(written); other->first != option; ++other) {
            if (IsSameFile(path, other->second)) {
                throw Failure(ExitCode::Usage, option + std::string(" would overwrite the file of ") +
                                                   other->first + ": name another file");
            }
        }
    }
}

void RequireCompatibleOptions(TraceOptions const& options)
{
    std::string const badName =
        options.out.empty() ? std::string() : trace::CaptureWriter::CheckName(options.out);
    if (!badName.empty()) {
        throw Failure(ExitCode::Usage, badName);
    }
    if (options.duration && !options.in.empty()) {
        throw Failure(ExitCode::Usage, "--seconds and --in exclude each other: a file ends by itself");
    }
    RequireDifferentFiles(options);
}

} // namespace

void CommandLine::AddTrace()
{
    struct Given
    {
        TraceOptions options;
        std::string seconds;
    };
    auto const given = std::make_shared<Given>();
    TraceOptions& options = given->options;
    CLI::App* const app = m_app.add_subcommand("trace", "Show, record and draw what happens on the bus");
    AddGlobalOptions(*app);
    app->footer(help::TraceFooter);
    app->add_option("--application", options.filter.application,
                    "Show this application only: bus name, application name, program or process id")
        ->type_name("NAME");
    app->add_option("--endpoint", options.filter.endpoint, "Show this endpoint only")
        ->type_name("PLAYERCONTROL|BROADCASTDATA|IPTVDATASUBSCRIBER|IPGUTIL");
    app->add_option("--function", options.filter.function, "Show this function only")->type_name("NAME");
    app->add_option("--seconds", given->seconds, "End after S seconds")->type_name("S");
    app->add_option("--in", options.in, "Read a capture file instead of the bus; - is standard input")
        ->type_name("FILE");
    app->add_flag("--follow", options.follows,
                  "At the end of the file of --in, wait for more; a bus is always followed");
    app->add_option("--out", options.out,
                    "Record all messages of the bus in FILE.pcapng or FILE.pcap; - writes pcapng to "
                    "standard output instead of the lines")
        ->type_name("FILE");
    app->add_flag("--summary", options.sumsUp,
                  "Print tables at the end: calls by function, pushes by PID, pauses, slow calls");
    app->add_option("--svg", options.svg, "Draw a sequence diagram")->type_name("FILE");
    app->add_option("--html", options.html, "Draw a sequence diagram on a page with search")
        ->type_name("FILE");
    app->callback([this, given] {
        m_answersOnce = given->options.sumsUp;
        m_action = [this, given] {
            given->options.asJson = m_invocation.asJson;
            if (!given->seconds.empty()) {
                given->options.duration = ParseSeconds(given->seconds, {"trace", "--seconds"});
            }
            RequireCompatibleOptions(given->options);
            return Trace(given->options).Run();
        };
    });
}

} // namespace zviptv::ctl
