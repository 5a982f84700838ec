// SPDX-License-Identifier: MIT
#include "Commands.h"

#include "CaptionCommands.h"
#include "GuideCommands.h"
#include "LockCommands.h"
#include "StatusCommands.h"
#include "TrackCommands.h"

#include <iterator>

namespace zviptv::ctl {

std::vector<CommandGroup> const& CommandGroups()
{
    static std::vector<CommandGroup> const groups = {
        {"audio", "List or select audio tracks"},
        {"subtitle", "List or select subtitles, DVB and teletext"},
        {"ttx", "List or select teletext pages"},
        {"captions", "List or select ISDB captions and superimposed text"},
        {"mute", "Mute or unmute the sound, or blank or show the picture"},
        {"unlock", "Unlock or restore the parental lock"},
        {"guide", "Query the programme guide"},
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

} // namespace zviptv::ctl
