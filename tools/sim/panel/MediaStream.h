// SPDX-License-Identifier: MIT
#pragma once

#include "Decoder.h"
#include "PageSocket.h"

#include <json/value.h>

#include <chrono>
#include <cstdint>
#include <list>
#include <memory>

namespace zviptv::sim {

/// The picture or the sound of the played stream, for the pages that show it. Without such a page, or if none
/// of them has answered for 10 seconds, nothing is decoded. A page that is too slow gets fewer messages,
/// always the newest ones.
class MediaStream
{
public:
    /// Makes the service write the played stream to a pipe; `watched` gets its answer, null if it is dead.
    using Watched = std::function<void(Json::Value const& content)>;
    using Watch =
        std::function<void(std::string const& what, FileHandle const& pipe, Watched const& watched)>;

    struct Kind
    {
        std::string what; ///< the service's name for it
        /// The arguments for ffmpeg.
        std::function<std::vector<std::string>(Json::Value const& content)> arguments;
        /// Takes the first complete message from ffmpeg's output; empty if there is none yet.
        std::function<std::string(std::string& bytes)> take;
        unsigned depth; ///< messages that a page may have unanswered
    };

    /// `onState` gets the state: the service's answer, or one of the states "no ffmpeg", "failed" (ffmpeg
    /// ended without a message, or wrote none within 8 MiB), "stalled" (no message arrives) and "off".
    MediaStream(Kind kind, Watch watch, std::function<void(Json::Value const& content)> onState);
    MediaStream(MediaStream const&) = delete;
    MediaStream& operator=(MediaStream const&) = delete;

    void Add(SoupWebsocketConnection* connection);

    /// Reports how many seconds of the stream were played since the last call. If ffmpeg wrote nothing
    /// during this time, it is restarted.
    void NotePlayed(double seconds) { m_played += seconds; }

    /// Reports that a paused television shows another picture, or plays again.
    void Refresh();

private:
    using Clock = std::chrono::steady_clock;

    struct Viewer : PageSocket
    {
        using PageSocket::PageSocket;
        std::uint64_t sent = 0; ///< number of the last message
        Clock::time_point sentAt;
    };

    bool IsWatched() const;
    void Start();
    void Rest();
    void Fail();
    void Decode(Json::Value const& content, FileHandle input);
    void StartAfter(std::chrono::milliseconds delay);
    void Check();
    void Take(std::string const& bytes);
    void OnEnd();
    void Send();
    void SetState(Json::Value const& content);
    void SetState(char const* state);

    Kind m_kind;
    Watch m_watch;
    std::function<void(Json::Value const&)> m_onState;
    std::list<Viewer> m_viewers;
    Json::Value m_state;
    Json::Value m_content; ///< the input of the decoder
    std::string m_written; ///< output of ffmpeg, not yet a complete message
    Owned<GBytes> m_newest;
    std::uint64_t m_number = 0;        ///< number of the newest message
    std::uint64_t m_numberAtStart = 0; ///< m_number when the decoder started
    bool m_isAsking = false;           ///< whether the service has been asked
    unsigned m_failures = 0;           ///< successive restarts without a message
    Clock::time_point m_startedAt;     ///< start of the decoder
    Clock::time_point m_lastSign;      ///< start or last output of the decoder
    double m_played = 0;               ///< seconds of the stream since m_lastSign
    std::unique_ptr<Decoder> m_decoder;
    LoopSource m_next;     ///< the next restart
    LoopSource m_checking; ///< runs while there is a decoder
    std::shared_ptr<MediaStream*> m_self{
        std::make_shared<MediaStream*>(this)}; ///< expires with this object; calls may last longer
};

} // namespace zviptv::sim
