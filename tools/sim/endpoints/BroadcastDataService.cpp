// SPDX-License-Identifier: MIT
#include "BroadcastDataService.h"

#include "BroadcastDataTexts.h"
#include "RecordReplies.h"
#include "RequestTable.h"
#include "playback/Tracks.h"

namespace zviptv::sim {

namespace function = protocol::function;
namespace key = protocol::key;

namespace {

ZVDualSound DualSound(EZVMultiSoundMode mode, bool available)
{
    ZVDualSound record{};
    record.mode = mode;
    record.available = available ? 1 : 0;
    return record;
}

/// The choice of the viewer's next press of the dual sound key.
EZVMultiSoundMode Next(EZVMultiSoundMode mode)
{
    return static_cast<EZVMultiSoundMode>((static_cast<int>(mode) + 1) % (ZV_MULTI_SOUND_BOTH + 1));
}

/// The current track; nullopt if there is none.
std::optional<ZVAudio> CurrentAudio(Player const& player, Selection const& selection)
{
    return At(AudioTracks(player.Current(), player.Sounds()), std::optional<int>(selection.audio));
}

/// The functions of broadcast data, except those of teletext, subtitles and captions.
class BroadcastData
{
public:
    BroadcastData(Player const& player, Selection const& selection, ParentalLock& lock)
        : m_player(player), m_selection(selection), m_lock(lock)
    {
    }

    Reply GetAudioFormat(Request const& /*request*/)
    {
        std::optional<ZVAudio> const audio = CurrentAudio(m_player, m_selection);
        return Reply(audio.has_value())
            .Add(key::EncodeType, static_cast<int>(audio.value_or(ZVAudio{}).encoding));
    }

    Reply GetDigitalDualSound(Request const& /*request*/)
    {
        bool const available = CurrentAudio(m_player, m_selection).value_or(ZVAudio{}).dualMono != 0;
        EZVMultiSoundMode const mode = m_selection.dualSound;
        return Reply(true)
            .AddRecord(key::CurrentMode, DualSound(mode, available))
            .AddRecord(key::NextMode, DualSound(available ? Next(mode) : mode, available));
    }

    Reply GetCurrentAudioInfo(Request const& /*request*/)
    {
        return LanguageAndIndex(AudioTracks(m_player.Current(), m_player.Sounds()), m_selection.audio);
    }

    Reply SizeOfAudio(Request const& /*request*/)
    {
        return SizeReply(AudioTracks(m_player.Current(), m_player.Sounds()));
    }

    Reply GetAudio(Request const& request)
    {
        return RecordReply(key::Audio, At(AudioTracks(m_player.Current(), m_player.Sounds()),
                                          request.Get<unsigned int>(key::Index)));
    }

    Reply GetRatingInfo(Request const& /*request*/)
    {
        int const age = m_lock.MinimumAge();
        Reply reply = Reply(true).Add(key::RatingInfoSize, age > 0 ? 1 : 0);
        if (age > 0) {
            reply.AddRecord(key::RatingInfo, ZVRatingInfo{0, 0, static_cast<std::uint8_t>(age)});
        }
        return reply;
    }

    Reply SetUnlockedInfo(Request const& request)
    {
        std::optional<int> const lock = request.Get<int>(key::RatingInfo);
        bool const known = lock && *lock >= ZV_PARENTAL_LOCKED && *lock <= ZV_PARENTAL_UNLOCKED_ALL;
        if (known) {
            m_lock.Unlock(static_cast<EZVParentalLock>(*lock));
        }
        return Reply(known);
    }

    Reply GetRatingLockState(Request const& /*request*/)
    {
        return Reply(true).Add(key::LockState, static_cast<int>(m_lock.IsProgrammeLocked()));
    }

    Reply UnMuteByRatingPin(Request const& /*request*/) { return Reply(m_lock.EnterPin()); }

    Reply SetUnlockedInfoWhenFactoryMode(Request const& request)
    {
        std::optional<bool> const on = request.Flag(key::LockState);
        if (on) {
            m_lock.SetFactoryMode(*on);
        }
        return Reply(on.has_value());
    }

    Reply FlagServiceLocked(Request const& /*request*/)
    {
        return Reply(true).Add(key::OutServiceLocked, static_cast<int>(m_lock.IsServiceLocked()));
    }

private:
    Player const& m_player;
    Selection const& m_selection;
    ParentalLock& m_lock;
};

constexpr RequestRow<BroadcastData> DataFunctions[] = {
    {function::GetAudioFormat, &BroadcastData::GetAudioFormat},
    {function::GetDigitalDualSound, &BroadcastData::GetDigitalDualSound},
    {function::GetCurrentAudioInfo, &BroadcastData::GetCurrentAudioInfo},
    {function::SizeOfAudio, &BroadcastData::SizeOfAudio},
    {function::GetAudio, &BroadcastData::GetAudio},
    {function::GetRatingInfo, &BroadcastData::GetRatingInfo},
    {function::SetUnlockedInfo, &BroadcastData::SetUnlockedInfo},
    {function::GetRatingLockState, &BroadcastData::GetRatingLockState},
    {function::UnMuteByRatingPin, &BroadcastData::UnMuteByRatingPin},
    {function::SetUnlockedInfoWhenFactoryMode, &BroadcastData::SetUnlockedInfoWhenFactoryMode},
    {function::FlagServiceLocked, &BroadcastData::FlagServiceLocked},
};

} // namespace

std::optional<CMessageBuffer> BroadcastDataService::Answer(Request const& request)
{
    BroadcastData functions(m_player, m_selection, m_lock);
    if (std::optional<CMessageBuffer> reply = AnswerFrom(DataFunctions, functions, request)) {
        return reply;
    }
    EZVLanguageCode const preferred = CurrentAudio(m_player, m_selection).value_or(ZVAudio{}).language;
    return AnswerTexts(request, m_player, m_selection, preferred);
}

} // namespace zviptv::sim
