// SPDX-License-Identifier: MIT
#include "Invocation.h"

#include "commands/Arguments.h"
#include "common/PrintableText.h"
#include "output/OutputFile.h"

#include <zviptv/SystemLog.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <sstream>

namespace zviptv::ctl {

namespace {

void DropLine(EZVLogPriority /*priority*/, char const* /*tag*/, char const* /*line*/, void* /*userData*/) {}

void EchoLine(EZVLogPriority priority, char const* /*tag*/, char const* line, void* /*userData*/)
{
    constexpr std::array<char const*, 3> words = {"debug", "info", "error"};
    std::fprintf(stderr, "[%s] %s\n", words.at(priority), line);
}

} // namespace

Handle Invocation::Apply() const
{
    char const* const destination = std::getenv("ZV_IPTV_LOG");
    bool const isAskedFor = destination != nullptr && *destination != '\0';
    if (echoLog || !isAskedFor) {
        ZVSetLogSink(echoLog ? EchoLine : DropLine, nullptr);
    }
    return {static_cast<IPTVProfile>(ParseArgument<std::int32_t>(profile, {"zviptvctl", "--profile"})),
            ParseArgument<int>(id, {"zviptvctl", "--id"})};
}

ExitCode Invocation::RunWith(std::function<ExitCode(Session& session)> const& command) const
{
    Session session(Apply());
    return command(session);
}

ExitCode Invocation::AnswerWith(std::function<Answer(Session& session)> const& command) const
{
    std::ostringstream text;
    ExitCode const code = RunWith([&](Session& session) {
        Answer const answer = command(session);
        Print(text, answer, asJson);
        if (!answer.warning.empty()) {
            PrintMessage(answer.warning);
        }
        for (Failure const& failure : answer.failures) {
            PrintMessage(failure.what());
        }
        return answer.Code();
    });
    WriteOutput(text.str());
    return code;
}

ExitCode Invocation::Perform(std::function<ExitCode()> const& command, bool answersOnce) const
{
    try {
        OutputFile const probe("-"); // before another file gets the number of a closed standard output
        return command();
    } catch (Failure const& failure) {
        PrintMessage(failure.what());
        bool const isAboutService = failure.Code() == ExitCode::NoService ||
                                    failure.Code() == ExitCode::NoAnswer ||
                                    failure.Code() == ExitCode::Malformed;
        if (asJson && answersOnce && isAboutService) {
            PrintError(std::cout, failure.what());
        }
        return failure.Code();
    }
}

void PrintMessage(std::string const& text)
{
    std::cerr << "zviptvctl: " << PrintableText(text) << '\n';
}

} // namespace zviptv::ctl
