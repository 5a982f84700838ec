// SPDX-License-Identifier: MIT
#include "Batch.h"

#include "glib/Owned.h"
#include "output/OutputFile.h"
#include "session/Loop.h"

#include <memory>
#include <vector>

namespace zviptv::ctl {

namespace {

using Words = std::vector<std::string>;

/// The words of a line; none for an empty line or a comment.
Words WordsOf(std::string const& line)
{
    if (line.find('\0') != std::string::npos) {
        throw Failure(ExitCode::Usage, "the line contains a zero byte; remove it");
    }
    int count = 0;
    char** words = nullptr;
    Error error;
    if (g_shell_parse_argv(line.c_str(), &count, &words, error.Out()) == FALSE) {
        if (g_error_matches(error.Get(), G_SHELL_ERROR, G_SHELL_ERROR_EMPTY_STRING) != FALSE) {
            return {};
        }
        throw Failure(ExitCode::Usage, std::string("the line cannot be read: ") + error.Message());
    }
    std::unique_ptr<char*, decltype(&g_strfreev)> const owned(words, g_strfreev);
    return {words, words + count};
}

/// Whether a call failed to reach the service.
bool IsLoss(ExitCode code)
{
    return code == ExitCode::NoService || code == ExitCode::NoAnswer;
}

std::string RefusalOf(Answer const& answer)
{
    return answer.warning.empty() ? "the service answered \"false\"" : answer.warning;
}

} // namespace

ExitCode Batch::Run(std::istream& input)
{
    OutputFile out("-");
    ExitCode first = ExitCode::Accepted;
    for (std::string line; std::getline(input, line);) {
        Outcome outcome{ExitCode::Usage, {}};
        try {
            Words const words = WordsOf(line);
            if (words.empty()) {
                continue;
            }
            outcome = Perform(words);
        } catch (Failure const& failure) {
            outcome = {failure.Code(), JsonOfError(failure.what())};
        }
        outcome.json["command"] = ToJson(line);
        outcome.json["exitCode"] = static_cast<int>(outcome.code);
        first = first == ExitCode::Accepted ? outcome.code : first;
        std::string const text = Compact(outcome.json) + "\n";
        if (!out.Write(text.data(), text.size())) {
            break;
        }
    }
    return first;
}

/// After a call that failed to reach the service, the next command starts with new objects.
Batch::Outcome Batch::Perform(Words const& words)
{
    CommandLine::Question const question = m_commands.Read(m_options, words);
    try {
        Answer const answer = Ask(question);
        Outcome outcome{answer.Code(), JsonOf(answer)};
        m_isLost = m_isLost || IsLoss(outcome.code);
        if (outcome.code == ExitCode::Refused) {
            outcome.json["error"] = ToJson(RefusalOf(answer));
        }
        return outcome;
    } catch (Failure const& failure) {
        m_isLost = m_isLost || IsLoss(failure.Code());
        throw;
    }
}

Answer Batch::Ask(CommandLine::Question const& question)
{
    Session& session = SessionFor(m_commands.Options().Apply());
    Answer answer = question(session);
    if (!m_watch && session.Connection() != nullptr) {
        m_watch.emplace(session.Connection(), [this](ServiceWatch::Event event) {
            m_isLost = m_isLost || event != ServiceWatch::Event::Present;
        });
    }
    return answer;
}

/// Here the batch notices that the service has left.
Session& Batch::SessionFor(Handle const& handle)
{
    Loop::RunPending();
    bool const isOther = m_session && (m_session->HandleOfCalls().profile != handle.profile ||
                                       m_session->HandleOfCalls().id != handle.id);
    if (m_isLost || isOther) {
        m_watch.reset();
        m_session.reset();
        m_isLost = false;
    }
    if (!m_session) {
        m_session.emplace(handle);
    }
    return *m_session;
}

} // namespace zviptv::ctl
