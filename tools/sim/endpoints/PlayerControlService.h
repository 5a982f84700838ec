#pragma once

#include "Message.h"
#include "RequestTable.h"
#include "playback/Player.h"
#include "playback/Selection.h"

namespace zviptv::sim {

/// Answers the requests of player control objects.
class PlayerControlService
{
public:
    PlayerControlService(Player const& player, Selection& selection)
        : m_player(player), m_selection(selection)
    {
    }

    /// Nothing when the function is not one of player control.
    std::optional<CMessageBuffer> Answer(Request const& request);

    /// What it answers.
    static std::vector<std::string> Functions();

private:
    static RequestRow<PlayerControlService> const Rows[];

    Reply SetCurrentAudioByIndex(Request const& request);
    Reply SetAudioFormat(Request const& request);
    Reply SetDigitalDualSound(Request const& request);
    Reply SetCurrentTTX(Request const& request);
    Reply SetCurrentHybridSBT(Request const& request);
    Reply GetSTCCount(Request const& request);
    Reply SetCurrentISDBText(Request const& request);
    Reply SetCurrentISDBTextService(Request const& request);
    Reply GetCaptionDataMode(Request const& request);
    Reply GetDefaultCaptionService(Request const& request);
    Reply MuteAudio(Request const& request);
    Reply MuteVideo(Request const& request);
    Reply GetResolution(Request const& request);
    Reply SetAppID(Request const& request);
    Reply GetSourceState(Request const& request);
    Reply GetFirstPTS(Request const& request);

    Player const& m_player;
    Selection& m_selection;
};

} // namespace zviptv::sim
