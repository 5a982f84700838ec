// SPDX-License-Identifier: MIT
#include "Selection.h"

#include "Player.h"
#include "Tracks.h"

#include <algorithm>

namespace zviptv::sim {

namespace {

bool IsSame(ZVAudio const& left, ZVAudio const& right)
{
    return left.pid == right.pid && left.language == right.language;
}

bool IsSame(ZVTTX const& left, ZVTTX const& right)
{
    return left.pid == right.pid && left.magazine == right.magazine && left.page == right.page &&
           left.language == right.language;
}

bool IsSame(ZVHybridSBT const& left, ZVHybridSBT const& right)
{
    return left.pid == right.pid && left.compositionPage == right.compositionPage &&
           left.magazine == right.magazine && left.page == right.page && left.language == right.language;
}

bool IsSame(ZVISDBText const& left, ZVISDBText const& right)
{
    return left.pid == right.pid && left.language == right.language;
}

/// The position in `now` of the selected record of `before`; the first position if it is missing.
template <typename Index, typename Record>
Index Moved(Index chosen, std::vector<Record> const& before, std::vector<Record> const& now)
{
    auto const place = static_cast<std::size_t>(chosen);
    if (place >= before.size()) {
        return Index{};
    }
    auto const found = std::find_if(now.begin(), now.end(), [&before, place](Record const& record) {
        return IsSame(record, before[place]);
    });
    return found == now.end() ? Index{} : static_cast<Index>(found - now.begin());
}

} // namespace

void Selection::Follow(Player const& player, Programme const& next)
{
    Programme const& before = player.Current();
    if (next.number != before.number) {
        audio = 0;
        teletext = subtitle = 0;
        isdbText = {};
        return;
    }
    audio = Moved(audio, AudioTracks(before), AudioTracks(next));
    teletext = Moved(teletext, TeletextPages(before), TeletextPages(next));
    subtitle = Moved(subtitle, HybridSubtitles(before), HybridSubtitles(next));
    for (EZVISDBTextType const type : {ZV_ISDB_TEXT_CAPTION, ZV_ISDB_TEXT_SUPERIMPOSE}) {
        unsigned int& chosen = isdbText.at(static_cast<std::size_t>(type));
        chosen = Moved(chosen, IsdbTexts(before, type, player.TextLanguages()), IsdbTexts(next, type));
    }
}

} // namespace zviptv::sim
