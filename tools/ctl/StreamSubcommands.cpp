// SPDX-License-Identifier: MIT
#include "CommandLine.h"
#include "HelpTexts.h"
#include "commands/Arguments.h"
#include "commands/Stream.h"
#include "commands/Watch.h"

#include <cstdint>
#include <memory>
#include <string>

namespace zviptv::ctl {

namespace {

constexpr std::uint64_t LargestPid = 0x1FFF;
constexpr unsigned PidBits = 13;
constexpr unsigned FirstPage = 100;
constexpr std::uint64_t LastPage = 899;
constexpr unsigned PageBits = 10;

std::optional<std::chrono::milliseconds> Duration(std::string const& text, std::string const& command)
{
    return text.empty() ? std::nullopt : std::optional(ParseSeconds(text, {command, "--seconds"}));
}

CaptionOptions CaptionChoice(std::vector<std::string> const& pages, std::string const& srt)
{
    CaptionOptions options;
    options.srt = srt;
    for (std::string const& text : pages) {
        auto const page =
            static_cast<unsigned>(ParseUnsigned(text, LastPage, PageBits, {"caption", "--page"}));
        if (page < FirstPage) {
            throw Failure(ExitCode::Usage, "caption --page: " + text + " is not a page from 100 to 899");
        }
        options.pages.insert(page);
    }
    return options;
}

} // namespace

void CommandLine::AddStream(char const* name, char const* help, bool isPes)
{
    struct Given
    {
        std::string count;
        std::string seconds;
        std::string out;
        std::vector<std::string> pids;
        bool isElementary = false;
        std::string ts;
        bool isText = false;
        std::string srt;
        std::vector<std::string> pages;
    };
    auto const given = std::make_shared<Given>();
    CLI::App* const app = m_app.add_subcommand(name, help);
    AddGlobalOptions(*app);
    app->footer(std::string(help::StreamFooter) + (isPes ? "" : help::CaptionFooter));
    app->add_option("--count", given->count, "End after N packets")->type_name("N");
    app->add_option("--seconds", given->seconds, "End after S seconds")->type_name("S");
    app->add_option("--out", given->out,
                    "Write the data to FILE, one packet after another; - writes it to "
                    "standard output instead of the lines")
        ->type_name("FILE");
    if (isPes) {
        app->add_option("--pid", given->pids, "Packets of this PID only, 0 to 0x1FFF; may be repeated")
            ->type_name("P")
            ->allow_extra_args(false);
        app->add_flag("--es", given->isElementary,
                      "Write the elementary stream of one PID to the file of --out, without PES headers");
        app->add_option("--ts", given->ts,
                        "Write a transport stream of the PIDs to FILE; - writes it to standard output "
                        "instead of the lines")
            ->type_name("FILE");
    } else {
        app->add_flag("--text", given->isText, "Show captions as text, with time, page and language");
        app->add_option("--srt", given->srt,
                        "Like --text, and write the captions as subtitles to FILE; - writes them to "
                        "standard output instead of the lines")
            ->type_name("FILE");
        app->add_option("--page", given->pages,
                        "With --text or --srt: show only this teletext page, 100 to 899; may be repeated")
            ->type_name("N")
            ->allow_extra_args(false);
    }
    app->callback([=] {
        m_answersOnce = false;
        m_action = [=] {
            StreamOptions options;
            options.kind = isPes ? PacketKind::Pes : PacketKind::Caption;
            options.duration = Duration(given->seconds, name);
            options.out = given->out;
            options.asJson = m_invocation.asJson;
            if (!given->count.empty()) {
                options.count = ParseCount(given->count, {name, "--count"});
            }
            for (std::string const& pid : given->pids) {
                options.pids.insert(
                    static_cast<std::uint16_t>(ParseUnsigned(pid, LargestPid, PidBits, {name, "--pid"})));
            }
            if (given->isElementary && (options.pids.size() != 1 || options.out.empty())) {
                throw Failure(ExitCode::Usage,
                              "--es writes one elementary stream: add --out FILE and one --pid P");
            }
            if (!given->ts.empty() && !options.out.empty()) {
                throw Failure(ExitCode::Usage, "--out and --ts exclude each other: give one of them");
            }
            if (!given->ts.empty()) {
                options.out = given->ts;
            }
            if (given->isText || !given->srt.empty()) {
                options.kind = PacketKind::Pes; // captions alone have no time
                options.captions = CaptionChoice(given->pages, given->srt);
            }
            if (!options.captions && !given->pages.empty()) {
                throw Failure(ExitCode::Usage,
                              "--page chooses pages to show as text: add --text or --srt FILE");
            }
            if (options.captions && !options.out.empty()) {
                throw Failure(ExitCode::Usage,
                              "--out writes data, --text and --srt show text: give one of them");
            }
            options.form = !given->ts.empty()    ? PacketFile::Form::TransportStream
                           : given->isElementary ? PacketFile::Form::ElementaryStream
                                                 : PacketFile::Form::Packets;
            return m_invocation.RunWith([&](Session& session) { return Stream(session, options).Run(); });
        };
    });
}

void CommandLine::AddWatch()
{
    auto const seconds = std::make_shared<std::string>();
    CLI::App* const app =
        m_app.add_subcommand("watch", "Watch the service as a long-running application sees it");
    AddGlobalOptions(*app);
    app->footer(help::WatchFooter);
    app->add_option("--seconds", *seconds, "End after S seconds")->type_name("S");
    app->callback([this, seconds] {
        m_answersOnce = false;
        m_action = [this, seconds] {
            WatchOptions const options{Duration(*seconds, "watch"), m_invocation.asJson};
            return m_invocation.RunWith([&](Session& session) { return Watch(session, options).Run(); });
        };
    });
}

} // namespace zviptv::ctl
