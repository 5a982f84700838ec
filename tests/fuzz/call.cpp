// SPDX-License-Identifier: MIT
#include "ScriptedChannel.h"
#include "Variants.h"

#include "commands/Commands.h"
#include "commands/Methods.h"
#include "session/Session.h"
#include "session/SystemBus.h"

#include <algorithm>
#include <sstream>

// The command line's methods and commands on any answers of a service: what they print stays readable. An
// input begins with the words of a command, blanks between them, and a line break.

using namespace zviptv::ctl;
using namespace zviptv::fuzz;

/// Instead of the connection to a bus.
SystemBus::SystemBus() = default;

namespace {

std::vector<std::string> WordsOf(std::string const& line)
{
    std::vector<std::string> words;
    std::istringstream stream(line);
    for (std::string word; std::getline(stream, word, ' ');) {
        words.push_back(word);
    }
    return words;
}

/// As the command line finds it: a command of the words, or else the method that the first one names.
Answer Run(std::vector<std::string> const& words, Session& session)
{
    for (Command const& command : Commands()) {
        std::size_t const head = *command.group == '\0' ? 1 : 2;
        std::string const first = *command.group == '\0' ? command.name : command.group;
        if (words.size() == head + command.arguments.size() && words[0] == first &&
            words[head - 1] == command.name) {
            return command.run(session,
                               {command, {words.begin() + static_cast<std::ptrdiff_t>(head), words.end()}});
        }
    }
    std::vector<std::string> const arguments(words.begin() + 1, words.end());
    Method const& method = FindMethod(words.front(), arguments.size());
    return CallMethod(method, session, arguments);
}

void CheckPrinted(Answer const& answer)
{
    std::ostringstream text;
    Print(text, answer, false);
    Require(IsUtf8(text.str()), "text is UTF-8");
    std::ostringstream json;
    Print(json, answer, true);
    std::string line = json.str();
    Require(!line.empty() && line.back() == '\n', "JSON is a line");
    line.pop_back();
    Require(IsJsonLine(line), "and JSON in UTF-8");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    std::string_view const all(reinterpret_cast<char const*>(data), size);
    std::size_t const line = std::min(all.find('\n'), size);
    std::vector<std::string> const words = WordsOf(std::string(all.substr(0, line)));
    if (words.empty()) {
        return 0;
    }
    FuzzedDataProvider input(data + std::min(line + 1, size), size - std::min(line + 1, size));
    std::deque<zviptv::Owned<GVariant>> replies;
    for (int i = input.ConsumeIntegralInRange(0, 15); i > 0; --i) {
        replies.push_back(SinkFloating(g_variant_new("(@a{sv})", NewDictionary(input))));
    }
    SetReplies(std::move(replies), true);
    Session session({});
    try {
        CheckPrinted(Run(words, session));
    } catch (Failure const& failure) {
        Require(failure.what()[0] != '\0', "a failure says what is wrong");
        Require(failure.Code() == ExitCode::Usage || failure.Code() == ExitCode::Malformed,
                "and has its code");
    }
    return 0;
}
