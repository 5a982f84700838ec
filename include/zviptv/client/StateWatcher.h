// SPDX-License-Identifier: MIT
/// @file
/// Reports what changes on a television.

#pragma once

#include <zviptv/Export.h>
#include <zviptv/client/Programme.h>
#include <zviptv/client/Types.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace zviptv {

class Television;
namespace client {
class StateWatch;
}

/// The state of a television. A list is empty, and any other value missing, if the service refuses to report
/// it or has not answered yet.
struct TelevisionState
{
    std::optional<SourceState> source;       ///< state of the source that is played
    std::vector<AudioTrack> audioTracks;     ///< the audio tracks, in the order of Broadcast::GetAudio
    std::vector<Subtitle> subtitles;         ///< the subtitles, in the order of Broadcast::GetHybridSBT
    std::vector<TeletextPage> pages;         ///< the teletext pages, in the order of Broadcast::GetTTX
    std::vector<IsdbText> captions;          ///< the ISDB captions, in the order of Broadcast::GetISDBText
    std::vector<IsdbText> superimposes;      ///< the ISDB superimposed texts, in the same order
    std::optional<std::int32_t> audio;       ///< selected element of `audioTracks`
    std::optional<std::int32_t> subtitle;    ///< selected element of `subtitles`
    std::optional<std::int32_t> page;        ///< selected element of `pages`
    std::optional<std::int32_t> caption;     ///< selected element of `captions`
    std::optional<std::int32_t> superimpose; ///< selected element of `superimposes`
    std::optional<bool> programmeLock; ///< whether the present programme is locked because of its rating
    std::optional<bool> serviceLock;   ///< whether the present service is locked
    std::optional<Programme> present;  ///< the programme that is on; needs StateOptions::serviceId
};

/// Whether all values are equal.
ZVIPTV_API bool operator==(TelevisionState const& left, TelevisionState const& right);
/// Whether a value differs.
inline bool operator!=(TelevisionState const& left, TelevisionState const& right)
{
    return !(left == right);
}

/// A change of one value of TelevisionState. Use the names below: `SourceChange`, `AudioChange`.
template <auto Value>
struct StateChange;

/// The former and the present value.
template <class T, T TelevisionState::*Value>
struct StateChange<Value>
{
    T before; ///< the value that was reported last
    T after;  ///< the value now
};

using SourceChange = StateChange<&TelevisionState::source>;             ///< of the state of the source
using AudioTracksChange = StateChange<&TelevisionState::audioTracks>;   ///< of the list of audio tracks
using SubtitlesChange = StateChange<&TelevisionState::subtitles>;       ///< of the list of subtitles
using TeletextPagesChange = StateChange<&TelevisionState::pages>;       ///< of the list of teletext pages
using CaptionsChange = StateChange<&TelevisionState::captions>;         ///< of the list of ISDB captions
using SuperimposesChange = StateChange<&TelevisionState::superimposes>; ///< of the list of superimposed texts
using AudioChange = StateChange<&TelevisionState::audio>;               ///< of the selected audio track
using SubtitleChange = StateChange<&TelevisionState::subtitle>;         ///< of the selected subtitle
using TeletextPageChange = StateChange<&TelevisionState::page>;         ///< of the selected teletext page
using CaptionChange = StateChange<&TelevisionState::caption>;           ///< of the selected ISDB caption
using SuperimposeChange = StateChange<&TelevisionState::superimpose>;   ///< of the selected superimposed text
using ProgrammeLockChange = StateChange<&TelevisionState::programmeLock>; ///< of the lock of the programme
using ServiceLockChange = StateChange<&TelevisionState::serviceLock>;     ///< of the lock of the service
using ProgrammeChange = StateChange<&TelevisionState::present>;           ///< of the present programme

/// What a StateWatcher reports: the whole state first, then one event for each value that has changed.
using StateEvent =
    std::variant<TelevisionState, SourceChange, AudioTracksChange, SubtitlesChange, TeletextPagesChange,
                 CaptionsChange, SuperimposesChange, AudioChange, SubtitleChange, TeletextPageChange,
                 CaptionChange, SuperimposeChange, ProgrammeLockChange, ServiceLockChange, ProgrammeChange>;

/// One line for people: "audio track: 0 -> 1". The whole state has all its values, separated by "; ".
ZVIPTV_API std::string ToString(StateEvent const& event);

/// How a television is watched.
struct StateOptions
{
    /// The time from the start of one round of questions to the start of the next. A round that takes longer
    /// delays the next one. Less than 1 ms counts as 1 ms.
    std::chrono::milliseconds interval{1000};
    /// The service in the guide whose present programme is watched. Without it, the watcher does not watch
    /// the programme.
    std::optional<std::uint64_t> serviceId;
};

/// Reports changes of a television's state: the source, the tracks, the selections, the locks and the present
/// programme.
///
/// The service does not report changes, so the watcher asks for everything at an interval, with asynchronous
/// calls. It never starts a round of questions before the previous one has ended. While the service is away,
/// it reports nothing. When the service is back, the next round reports what has changed since the last
/// report.
///
/// Threads: use it on the thread that iterates the Television's context; the callback runs on this thread.
/// Creating a watcher does not wait. Lifetime: it may be destroyed inside its own callback; no event follows.
/// It may outlive the Television, but reports nothing after the Television has been destroyed.
///
/// Errors: if the service refuses a question, the value is missing from the state. After any other failure
/// the value stays as it was, and the failure is reported to Television::OnError: only once, even if the same
/// question fails several times in a row.
class ZVIPTV_API StateWatcher
{
public:
    /// Watches nothing.
    StateWatcher();
    /// Starts to watch. `callback` gets the events of each round, in the order of StateEvent.
    StateWatcher(Television& television, StateOptions options,
                 std::function<void(StateEvent const&)> callback);
    ~StateWatcher();
    /// Takes over the watch of `other`, which then watches nothing.
    StateWatcher(StateWatcher&& other) noexcept;
    /// Ends the watch of this object, and takes over that of `other`.
    StateWatcher& operator=(StateWatcher&& other) noexcept;

    /// The latest state; a state without values before the first event.
    TelevisionState const& State() const;

    /// Asks again as soon as possible instead of after the interval: for use after a call that changes the
    /// state.
    void Refresh();

private:
    std::shared_ptr<client::StateWatch> m_watch;
};

} // namespace zviptv
