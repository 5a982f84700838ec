// SPDX-License-Identifier: MIT
#include "Command.h"

#include <utility>

namespace zviptv::ctl {

CommandArguments::CommandArguments(Command const& command, std::vector<std::string> texts)
    : m_command(command), m_texts(std::move(texts))
{
}

ArgumentPlace CommandArguments::PlaceOf(std::size_t index) const
{
    return {"'" + m_command.FullName() + "'", m_command.arguments.at(index).name};
}

std::string Command::FullName() const
{
    return *group == '\0' ? name : std::string(group) + " " + name;
}

Answer Done(bool accepted, std::string const& did, std::string const& wish, std::string const& next)
{
    if (!accepted) {
        return Refused(wish, next);
    }
    Answer answer;
    answer.text = did + "\n";
    return answer;
}

Answer Refused(std::string const& wish, std::string const& next)
{
    Answer answer;
    answer.result = false;
    answer.warning = "the service refused to " + wish + ": " + next;
    return answer;
}

} // namespace zviptv::ctl
