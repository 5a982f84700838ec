// SPDX-License-Identifier: MIT
#include "CommandLine.h"
#include "HelpTexts.h"
#include "commands/Arguments.h"
#include "commands/Stream.h"
#include "commands/Watch.h"

#include <cstdint>
#include <memory>

namespace zviptv::ctl {

namespace {

constexpr std::uint64_t LargestPid = 0x1FFF;
constexpr unsigned PidBits = 13;

std::optional<std::chrono::milliseconds> Duration(std::string const& text, std::string const& command)
{
    return text.empty() ? std::nullopt : std::optional(ParseSeconds(text, {command, "--seconds"}));
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
    };
    auto const given = std::make_shared<Given>();
    CLI::App* const app = m_app.add_subcommand(name, help);
    AddGlobalOptions(*app);
    app->footer(help::StreamFooter);
    app->add_option("--count", given->count, "End after N packets")->type_name("N");
    app->add_option("--seconds", given->seconds, "End after S seconds")->type_name("S");
    app->add_option("--out", given->out,
                    "Write the data to FILE, one packet after another; - writes them to "
                    "standard output, and no lines")
        ->type_name("FILE");
    if (isPes) {
        app->add_option("--pid", given->pids, "Packets of this PID only, 0 to 0x1FFF; may be repeated")
            ->type_name("P")
            ->allow_extra_args(false);
        app->add_flag("--es", given->isElementary,
                      "Write the elementary stream of one PID to the file of --out, without PES headers");
        app->add_option("--ts", given->ts, "Write a transport stream of the PIDs to FILE; - as for --out")
            ->type_name("FILE");
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
