// SPDX-License-Identifier: MIT
#include "PlayerControlService.h"

#include "RecordReplies.h"
#include "RequestTable.h"
#include "playback/CaptionServices.h"
#include "playback/Tracks.h"

#include <algorithm>
#include <array>
#include <vector>

namespace zviptv::sim {

namespace function = protocol::function;
namespace key = protocol::key;

namespace {

constexpr int TimeBase = 90000;

/// Stores the selected list entry; the result is 0 if the list has no such entry.
template <typename Index>
Reply Choose(std::optional<Index> index, std::size_t count, Index& chosen)
{
    if (!index || *index < Index{} || static_cast<std::size_t>(*index) >= count) {
        return Reply(false);
    }
    chosen = *index;
    return Reply(true);
}

/// The best track with this coding: the current one, otherwise one in its language, otherwise the first.
std::optional<int> TrackOfFormat(std::vector<ZVAudio> const& tracks, int current, int encoding)
{
    std::optional<int> best;
    bool bestSpeaks = false;
    EZVLanguageCode const language = static_cast<std::size_t>(current) < tracks.size()
                                         ? tracks[static_cast<std::size_t>(current)].language
                                         : ZV_LANGUAGE_UNKNOWN;
    for (std::size_t i = 0; i < tracks.size(); ++i) {
        if (tracks[i].encoding != encoding) {
            continue;
        }
        if (static_cast<int>(i) == current) {
            return current;
        }
        bool const speaks = tracks[i].language == language;
        if (!best || (speaks && !bestSpeaks)) {
            best = static_cast<int>(i);
            bestSpeaks = speaks;
        }
    }
    return best;
}

cvtv_resolution_e ResolutionClass(std::uint32_t lines)
{
    struct Class
    {
        std::uint32_t lines;
        cvtv_resolution_e value;
    };
    constexpr std::array<Class, 4> classes{{{576, CVTV_RESOLUTION_SD},
                                            {720, CVTV_RESOLUTION_HD},
                                            {1088, CVTV_RESOLUTION_FHD},
                                            {2176, CVTV_RESOLUTION_UHD}}};
    auto const found =
        std::find_if(classes.begin(), classes.end(), [lines](Class const& c) { return lines <= c.lines; });
    return found == classes.end() ? CVTV_RESOLUTION_8K : found->value;
}

ZVResolution ToRecord(VideoFormat const& format)
{
    ZVResolution record{};
    record.width = format.width;
    record.height = format.height;
    record.frameRateNumerator = format.frameRate.numerator;
    record.frameRateDenominator = format.frameRate.denominator;
    record.aspectWidth = static_cast<std::uint16_t>(format.displayAspect.numerator);
    record.aspectHeight = static_cast<std::uint16_t>(format.displayAspect.denominator);
    record.interlaced = format.interlaced ? 1 : 0;
    return record;
}

/// Stores which application has muted, until any application ends the mute.
Reply Mute(std::string& mutedBy, std::optional<bool> on, std::string const& application)
{
    if (on && (!*on || mutedBy.empty())) {
        mutedBy = *on ? application : std::string();
    }
    return Reply(on.has_value());
}

/// The functions of player control.
class PlayerControl
{
public:
    PlayerControl(Player const& player, Selection& selection) : m_player(player), m_selection(selection) {}

    Reply SetCurrentAudioByIndex(Request const& request)
    {
        return Choose(request.Get<int>(key::Index), m_player.Current().audio.size(), m_selection.audio);
    }

    Reply SetAudioFormat(Request const& request)
    {
        std::optional<int> const type = request.Get<int>(key::EncodeType);
        std::optional<bool> const preferred = request.Flag(key::IsPreferred);
        if (!type || !preferred) {
            return Reply(false);
        }
        std::optional<int> const track =
            TrackOfFormat(AudioTracks(m_player.Current()), m_selection.audio, *type);
        m_selection.audio = track.value_or(m_selection.audio);
        return Reply(*preferred || track.has_value()); // a preferred coding need not exist
    }

    Reply SetDigitalDualSound(Request const& request)
    {
        std::optional<int> const mode = request.Get<int>(key::Mode);
        if (!mode || *mode < ZV_MULTI_SOUND_STEREO || *mode > ZV_MULTI_SOUND_BOTH) {
            return Reply(false);
        }
        m_selection.dualSound = static_cast<EZVMultiSoundMode>(*mode);
        return Reply(true);
    }

    Reply SetCurrentTTX(Request const& request)
    {
        return Choose(request.Get<unsigned int>(key::Index), m_player.Current().teletext.size(),
                      m_selection.teletext);
    }

    Reply SetCurrentHybridSBT(Request const& request)
    {
        return Choose(request.Get<unsigned int>(key::Index), HybridSubtitles(m_player.Current()).size(),
                      m_selection.subtitle);
    }

    Reply GetSTCCount(Request const& /*request*/)
    {
        std::optional<std::uint64_t> const stc = m_player.Stc();
        return Reply(stc.has_value()).Add(key::STCCount, stc.value_or(0));
    }

    Reply SetCurrentISDBText(Request const& request)
    {
        std::optional<EZVISDBTextType> const type = TextType(request);
        if (!type) {
            return Reply(false);
        }
        return Choose(request.Get<unsigned int>(key::Index),
                      IsdbTexts(m_player.Current(), *type, m_player.TextLanguages()).size(),
                      m_selection.isdbText.at(static_cast<std::size_t>(*type)));
    }

    Reply SetCurrentISDBTextService(Request const& request)
    {
        std::optional<EZVISDBTextType> const type = TextType(request);
        std::optional<int> const tag = request.Get<int>(key::CompTag);
        if (!type || !tag) {
            return Reply(false);
        }
        std::vector<ZVISDBText> const texts = IsdbTexts(m_player.Current(), *type, m_player.TextLanguages());
        auto const found = std::find_if(texts.begin(), texts.end(),
                                        [&tag](ZVISDBText const& text) { return text.componentTag == *tag; });
        if (found == texts.end()) {
            return Reply(false);
        }
        m_selection.isdbText.at(static_cast<std::size_t>(*type)) =
            static_cast<unsigned int>(found - texts.begin());
        return Reply(true);
    }

    Reply GetCaptionDataMode(Request const& /*request*/)
    {
        bool const captions = !IsdbTexts(m_player.Current(), ZV_ISDB_TEXT_CAPTION).empty() ||
                              !CaptionServices(m_player.Current()).empty();
        return Reply(true).Add(key::Mode, static_cast<int>(captions ? ZV_CAPTION_DATA_MODE_SELECTABLE
                                                                    : ZV_CAPTION_DATA_MODE_NONE));
    }

    Reply GetDefaultCaptionService(Request const& /*request*/)
    {
        std::vector<CaptionService> const services = CaptionServices(m_player.Current());
        EZVCaptionService const first =
            services.empty() ? ZV_CAPTION_SERVICE_UNKNOWN : services.front().number;
        return Reply(!services.empty()).Add(key::Service, static_cast<int>(first));
    }

    Reply MuteAudio(Request const& request)
    {
        std::optional<bool> const on = request.Flag(key::OnOff);
        return Mute(m_selection.audioMutedBy, on, request.Sender());
    }

    Reply MuteVideo(Request const& request)
    {
        std::optional<bool> const on = request.Flag(key::OnOff);
        return Mute(m_selection.videoMutedBy, on, request.Sender());
    }

    Reply GetResolution(Request const& /*request*/)
    {
        std::optional<VideoFormat> const& format = m_player.Format();
        cvtv_resolution_e const res = format ? ResolutionClass(format->height) : CVTV_RESOLUTION_UNKNOWN;
        return Reply(format.has_value())
            .Add(key::Resolution, static_cast<int>(res))
            .AddRecord(key::ResolutionInfo, ToRecord(format.value_or(VideoFormat())));
    }

    Reply SetAppID(Request const& request)
    {
        m_selection.appId = request.Text(key::AppID);
        return Reply(true);
    }

    Reply GetSourceState(Request const& /*request*/)
    {
        return Reply(true).Add(key::SourceState, static_cast<int>(m_player.State()));
    }

    Reply GetFirstPTS(Request const& /*request*/)
    {
        std::optional<std::uint64_t> const pts = m_player.FirstPts();
        auto const now = std::chrono::duration_cast<std::chrono::milliseconds>(
            m_player.Clock().Shows().time_since_epoch());
        return Reply(pts.has_value())
            .Add(key::FirstPTS, pts.value_or(0))
            .Add(key::TimeBaseDen, TimeBase)
            .Add(key::TimeBaseNum, 1)
            .Add(key::CurrentTime, static_cast<std::uint32_t>(now.count())); // all that 32-bit programs read
    }

private:
    Player const& m_player;
    Selection& m_selection;
};

constexpr RequestRow<PlayerControl> PlayerFunctions[] = {
    {function::SetCurrentAudioByIndex, &PlayerControl::SetCurrentAudioByIndex},
    {function::SetAudioFormat, &PlayerControl::SetAudioFormat},
    {function::SetDigitalDualSound, &PlayerControl::SetDigitalDualSound},
    {function::SetCurrentTTX, &PlayerControl::SetCurrentTTX},
    {function::SetCurrentHybridSBT, &PlayerControl::SetCurrentHybridSBT},
    {function::GetSTCCount, &PlayerControl::GetSTCCount},
    {function::SetCurrentISDBText, &PlayerControl::SetCurrentISDBText},
    {function::SetCurrentISDBTextService, &PlayerControl::SetCurrentISDBTextService},
    {function::GetCaptionDataMode, &PlayerControl::GetCaptionDataMode},
    {function::GetDefaultCaptionService, &PlayerControl::GetDefaultCaptionService},
    {function::MuteAudio, &PlayerControl::MuteAudio},
    {function::MuteVideo, &PlayerControl::MuteVideo},
    {function::GetResolution, &PlayerControl::GetResolution},
    {function::SetAppID, &PlayerControl::SetAppID},
    {function::GetSourceState, &PlayerControl::GetSourceState},
    {function::GetFirstPTS, &PlayerControl::GetFirstPTS},
};

} // namespace

std::optional<CMessageBuffer> PlayerControlService::Answer(Request const& request)
{
    PlayerControl functions(m_player, m_selection);
    return AnswerFrom(PlayerFunctions, functions, request);
}

} // namespace zviptv::sim
