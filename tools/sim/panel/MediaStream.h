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

/// Picture or sound of what is played, for the pages that want it. As long as there is none, nothing is
/// decoded. A page that does not keep up gets less, and always the newest.
class MediaStream
{
public:
    /// Has the service write what is played to a pipe; `watched` gets its answer, null when it is dead.
    using Watched = std::function<void(Json::Value const& content)>;
    using Watch =
        std::function<void(std::string const& what, FileHandle const& pipe, Watched const& watched)>;

    struct Kind
    {
        std::string what; ///< as the service calls it
        /// The arguments for ffmpeg.
        std::function<std::vector<std::string>(Json::Value const& content)> arguments;
        /// Takes the first whole message from what ffmpeg has written; empty if there is none yet.
        std::function<std::string(std::string& bytes)> take;
        unsigned depth; ///< messages that a page may have unanswered
    };

    /// `onState` gets what there is: the service's answer, with the states "no ffmpeg", "failed" (it has
    /// ended without a message), "stalled" (no message comes) and "off" too.
    MediaStream(Kind kind, Watch watch, std::function<void(Json::Value const& content)> onState);
    MediaStream(MediaStream const&) = delete;
    MediaStream& operator=(MediaStream const&) = delete;

    void Add(SoupWebsocketConnection* connection);

    /// The television has played this many seconds of the stream since the last call. An ffmpeg that has
    /// written nothing meanwhile is started again.
    void NotePlayed(double seconds) { m_played += seconds; }

    /// The television is paused and shows something else now, or plays again.
    void Refresh();

private:
    using Clock = std::chrono::steady_clock;

    struct Viewer : PageSocket
    {
        using PageSocket::PageSocket;
        std::uint64_t sent = 0; ///< number of the last message
    };

    void Start();
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
    Json::Value m_content; ///< what the decoder gets
    std::string m_written; ///< by ffmpeg, not yet a whole message
    Owned<GBytes> m_newest;
    std::uint64_t m_number = 0;        ///< of the newest message
    std::uint64_t m_numberAtStart = 0; ///< of this decoder
    bool m_isAsking = false;           ///< the service
    unsigned m_failures = 0;           ///< decoders in a row that were started again without a message
    Clock::time_point m_startedAt;     ///< the decoder
    Clock::time_point m_lastSign;      ///< the decoder has begun, or has written something
    double m_played = 0;               ///< seconds of the stream since then
    std::unique_ptr<Decoder> m_decoder;
    LoopSource m_next;     ///< when to start again
    LoopSource m_checking; ///< while there is a decoder
    std::shared_ptr<MediaStream*> m_self{
        std::make_shared<MediaStream*>(this)}; ///< ends with this, unlike calls
};

} // namespace zviptv::sim
