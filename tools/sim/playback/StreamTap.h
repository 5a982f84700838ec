// SPDX-License-Identifier: MIT
#pragma once

#include "CaptionTap.h"
#include "Player.h"
#include "Selection.h"
#include "TapFeed.h"

#include <deque>
#include <list>
#include <memory>

namespace zviptv::sim {

/// Hands out what is played, so that a decoder can show it. For that it keeps the packets from the last
/// picture on that can be decoded without others, and the subtitles of the seconds before. Lives on the
/// player's thread.
class StreamTap
{
public:
    enum class Kind
    {
        Picture, ///< the video, and the stream of the selected subtitle
        Sound    ///< the selected audio track
    };

    /// What a decoder gets.
    enum class State
    {
        Playing, ///< everything from the last such picture on, until the feed ends
        Still,   ///< the same up to now, and the end: the clock is paused
        Waiting, ///< nothing yet; ask again
        Nothing  ///< the programme has none
    };
    struct Content
    {
        State state = State::Waiting;
        std::optional<ZVHybridSBT> subtitle; ///< the selected one
    };

    StreamTap(Player const& player, Selection const& selection) : m_player(player), m_selection(selection) {}

    /// Gets every packet that is handed out, and those that are passed over on the way to a position. Whether
    /// Caption() or Superimpose() has changed.
    bool Take(PesPacket const& pes, bool isPassedOver);

    /// What was played before is not continued.
    void Restart();

    /// Writes what is played to a pipe. Closes it when the stream jumps, another track is selected or the
    /// reader does not keep up. To see more, open another one then.
    Content Open(Kind kind, FileHandle pipe);

    CaptionTap& Caption() { return m_caption; }
    CaptionTap& Superimpose() { return m_superimpose; }

private:
    struct Feed
    {
        Feed(Kind feedKind, FileHandle pipe, std::vector<TsWriter::Stream> const& streams, unsigned index)
            : kind(feedKind), selected(index), writer(std::move(pipe), streams)
        {
        }
        Kind kind;
        unsigned selected; ///< the track
        TapFeed writer;
    };

    Content OpenPicture(FileHandle pipe);
    Content OpenSound(FileHandle pipe);
    unsigned Selected(Kind kind) const;
    void Keep(PesPacket const& pes);
    void ForgetBefore(PesPacket const& picture);
    void Forget();
    void ForgetTexts();

    Player const& m_player;
    Selection const& m_selection;
    /// From a picture on that can be decoded by itself, and the subtitles of the seconds before it.
    std::deque<PesPacket> m_kept;
    std::size_t m_keptBytes = 0;
    bool m_hasPicture = false; ///< among what is kept
    JumpWatch m_time;          ///< of the video
    CaptionTap m_caption{ZV_ISDB_TEXT_CAPTION, m_player, m_selection};
    CaptionTap m_superimpose{ZV_ISDB_TEXT_SUPERIMPOSE, m_player, m_selection};
    std::list<Feed> m_feeds;
};

} // namespace zviptv::sim
