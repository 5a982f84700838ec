#include "Commands.h"

#include <iterator>
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

std::vector<CommandGroup> const& CommandGroups()
{
    static std::vector<CommandGroup> const groups = {
        {"audio", "List or select audio tracks"},
        {"subtitle", "List or select subtitles, DVB and teletext"},
        {"ttx", "List or select teletext pages"},
        {"captions", "List or select ISDB captions and superimposed text"},
        {"mute", "Silence the sound or blank the picture"},
        {"unlock", "Lift or restore parental locks"},
        {"guide", "Ask the programme guide"},
    };
    return groups;
}

std::vector<Command> const& Commands()
{
    static std::vector<Command> const commands = [] {
        std::vector<Command> all;
        for (auto const part :
             {StatusCommands, TrackCommands, CaptionCommands, LockCommands, GuideCommands}) {
            std::vector<Command> rows = part();
            std::move(rows.begin(), rows.end(), std::back_inserter(all));
        }
        return all;
    }();
    return commands;
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
