#pragma once

#include "Message.h"
#include "RequestTable.h"
#include "playback/ParentalLock.h"
#include "playback/Player.h"
#include "playback/Selection.h"

namespace zviptv::sim {

/// Answers the requests of broadcast data objects from what the programme announces.
class BroadcastDataService
{
public:
    BroadcastDataService(Player const& player, Selection const& selection, ParentalLock& lock)
        : m_player(player), m_selection(selection), m_lock(lock)
    {
    }

    /// Nothing when the function is not one of broadcast data.
    std::optional<CMessageBuffer> Answer(Request const& request);

    /// What it answers.
    static std::vector<std::string> Functions();

private:
    static RequestRow<BroadcastDataService> const Rows[];

    Reply GetAudioFormat(Request const& request);
    Reply GetDigitalDualSound(Request const& request);
    Reply GetCurrentAudioInfo(Request const& request);
    Reply SizeOfAudio(Request const& request);
    Reply GetAudio(Request const& request);
    Reply SizeOfTTX(Request const& request);
    Reply GetTTX(Request const& request);
    Reply GetCurrentTTX(Request const& request);
    Reply SizeOfHybridSBT(Request const& request);
    Reply GetHybridSBT(Request const& request);
    Reply CheckHardOfHearingSBT(Request const& request);
    Reply GetPreferredHybridSBT(Request const& request);
    Reply GetCurrentHybridSBT(Request const& request);
    Reply GetPreferredTTXSubtitle(Request const& request);
    Reply SizeOfISDBText(Request const& request);
    Reply GetISDBText(Request const& request);
    Reply GetCurrentISDBText(Request const& request);
    Reply GetCaptionLanguage(Request const& request);
    Reply GetRatingInfo(Request const& request);
    Reply SetUnlockedInfo(Request const& request);
    Reply GetRatingLockState(Request const& request);
    Reply UnMuteByRatingPin(Request const& request);
    Reply SetUnlockedInfoWhenFactoryMode(Request const& request);
    Reply FlagServiceLocked(Request const& request);

    /// The track that is heard; nothing when there is none.
    std::optional<ZVAudio> CurrentAudio() const;
    EZVLanguageCode PreferredLanguage() const;

    Player const& m_player;
    Selection const& m_selection;
    ParentalLock& m_lock;
};

} // namespace zviptv::sim
