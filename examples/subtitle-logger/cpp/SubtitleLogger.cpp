// SPDX-License-Identifier: MIT
#include "SubtitleLogger.h"

#include <algorithm>
#include <cstdio>

using namespace zviptv;

namespace {

/// "00:00:02.480" from units of 1/90000 s.
std::string Time(std::optional<std::uint64_t> pts)
{
    if (!pts) {
        return "--:--:--.---";
    }
    unsigned const ms = static_cast<unsigned>(*pts / 90);
    char text[32];
    std::snprintf(text, sizeof text, "%02u:%02u:%02u.%03u", ms / 3600000, ms / 60000 % 60, ms / 1000 % 60,
                  ms % 1000);
    return text;
}

} // namespace

SubtitleLogger::SubtitleLogger(LoggerOptions options, std::function<void(std::string const&)> write)
    : m_options(std::move(options)), m_write(std::move(write))
{
    m_television.OnError([this](Failure const& failure) { Report(failure); });
    m_availability = m_television.OnAvailability([this](bool isAvailable) { OnAvailability(isAvailable); });
    m_counted = m_television.SubscribePes({{m_options.pid}, {}}, [this](PesPacket const&) { Count(); });
    m_captions = m_television.SubscribePes({}, [this](PesPacket const& packet) { Decode(packet); });
    // OnAvailability reports changes: a call says why there is no service now.
    m_television.Player().GetSourceState([this](Result<SourceState> const& state) {
        if (!state) {
            Report(state.GetFailure());
        }
    });
}

std::string SubtitleLogger::Summary() const
{
    PushCounters const counters = m_counted.Counters();
    return "PID " + std::to_string(m_options.pid) + ": " + std::to_string(counters.packets) + " packets, " +
           std::to_string(counters.bytes) + " bytes, " + std::to_string(counters.gaps) + " gaps";
}

void SubtitleLogger::OnAvailability(bool isAvailable)
{
    m_write(isAvailable ? "the service is available" : "the service has left");
    if (isAvailable) { // a new watcher reports the whole state; the service has lost the selection
        m_watcher = StateWatcher(m_television, {std::chrono::milliseconds(500), m_options.serviceId},
                                 [this](StateEvent const& event) { OnState(event); });
    }
}

void SubtitleLogger::OnState(StateEvent const& event)
{
    if (auto const* const state = std::get_if<TelevisionState>(&event)) {
        SelectAudio(state->audioTracks);
        m_decoder = CaptionDecoder({{}, PageLanguages(state->subtitles)});
        ShowProgrammes(state->present);
    } else if (auto const* const tracks = std::get_if<AudioTracksChange>(&event)) {
        SelectAudio(tracks->after);
    } else if (auto const* const subtitles = std::get_if<SubtitlesChange>(&event)) {
        m_decoder = CaptionDecoder({{}, PageLanguages(subtitles->after)});
    } else if (auto const* const programme = std::get_if<ProgrammeChange>(&event)) {
        ShowProgrammes(programme->after);
    }
}

void SubtitleLogger::Count()
{
    if (m_counted.Counters().gaps != m_gaps) {
        m_gaps = m_counted.Counters().gaps;
        m_write("gap " + std::to_string(m_gaps) + " of PID " + std::to_string(m_options.pid));
    }
}

void SubtitleLogger::Decode(PesPacket const& packet)
{
    for (Caption const& caption : m_decoder.Decode(packet)) {
        std::string text = caption.IsEmpty() ? "(erased)" : caption.Text();
        std::replace(text.begin(), text.end(), '\n', '/');
        m_write(Time(caption.pts) + " " + ToString(caption.kind) + " " +
                (caption.language.empty() ? "???" : caption.language) + ": " + text);
    }
}

void SubtitleLogger::SelectAudio(std::vector<AudioTrack> const& tracks)
{
    auto const found = std::find_if(tracks.begin(), tracks.end(), [this](AudioTrack const& track) {
        return track.language == m_options.audio;
    });
    if (found == tracks.end()) {
        m_write("no audio track in '" + ToString(m_options.audio) + "'");
        return;
    }
    m_television.Player().SetCurrentAudioByIndex(
        static_cast<std::int32_t>(found - tracks.begin()), [this](Result<void> const& selected) {
            selected ? m_write("audio: " + ToString(m_options.audio)) : Report(selected.GetFailure());
        });
}

void SubtitleLogger::ShowProgrammes(std::optional<Programme> const& present)
{
    m_write("now: " + (present ? ToString(*present) : "unknown"));
    if (present) {
        m_television.Guide().GetProgram(present->Id(), Neighbour::Next,
                                        [this](Result<std::optional<Programme>> const& next) {
                                            if (!next) {
                                                Report(next.GetFailure());
                                            } else {
                                                m_write("next: " + (*next ? ToString(**next) : "unknown"));
                                            }
                                        });
    }
}

void SubtitleLogger::Report(Failure const& failure)
{
    if (failure.kind != FailureKind::Gone) { // the logger ends
        m_write("failed: " + ToString(failure));
    }
}
