#include "BroadcastDataService.h"

#include "RecordReplies.h"
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

/// What the viewer's next press of the dual sound key chooses.
EZVMultiSoundMode Next(EZVMultiSoundMode mode)
{
    return static_cast<EZVMultiSoundMode>((static_cast<int>(mode) + 1) % (ZV_MULTI_SOUND_BOTH + 1));
}

} // namespace

RequestRow<BroadcastDataService> const BroadcastDataService::Rows[] = {
    {function::GetAudioFormat, &BroadcastDataService::GetAudioFormat},
    {function::GetDigitalDualSound, &BroadcastDataService::GetDigitalDualSound},
    {function::GetCurrentAudioInfo, &BroadcastDataService::GetCurrentAudioInfo},
    {function::SizeOfAudio, &BroadcastDataService::SizeOfAudio},
    {function::GetAudio, &BroadcastDataService::GetAudio},
    {function::SizeOfTTX, &BroadcastDataService::SizeOfTTX},
    {function::GetTTX, &BroadcastDataService::GetTTX},
    {function::GetCurrentTTX, &BroadcastDataService::GetCurrentTTX},
    {function::SizeOfHybridSBT, &BroadcastDataService::SizeOfHybridSBT},
    {function::GetHybridSBT, &BroadcastDataService::GetHybridSBT},
    {function::CheckHardOfHearingSBT, &BroadcastDataService::CheckHardOfHearingSBT},
    {function::GetPreferredHybridSBT, &BroadcastDataService::GetPreferredHybridSBT},
    {function::GetCurrentHybridSBT, &BroadcastDataService::GetCurrentHybridSBT},
    {function::GetPreferredTTXSubtitle, &BroadcastDataService::GetPreferredTTXSubtitle},
    {function::SizeOfISDBText, &BroadcastDataService::SizeOfISDBText},
    {function::GetISDBText, &BroadcastDataService::GetISDBText},
    {function::GetCurrentISDBText, &BroadcastDataService::GetCurrentISDBText},
    {function::GetCaptionLanguage, &BroadcastDataService::GetCaptionLanguage},
    {function::GetRatingInfo, &BroadcastDataService::GetRatingInfo},
    {function::SetUnlockedInfo, &BroadcastDataService::SetUnlockedInfo},
    {function::GetRatingLockState, &BroadcastDataService::GetRatingLockState},
    {function::UnMuteByRatingPin, &BroadcastDataService::UnMuteByRatingPin},
    {function::SetUnlockedInfoWhenFactoryMode, &BroadcastDataService::SetUnlockedInfoWhenFactoryMode},
    {function::FlagServiceLocked, &BroadcastDataService::FlagServiceLocked},
};

std::vector<std::string> BroadcastDataService::Functions()
{
    return FunctionsOf(Rows);
}

std::optional<CMessageBuffer> BroadcastDataService::Answer(Request const& request)
{
    return AnswerFrom(Rows, *this, request);
}

std::optional<ZVAudio> BroadcastDataService::CurrentAudio() const
{
    return At(AudioTracks(m_player.Current(), m_player.Sounds()), std::optional<int>(m_selection.audio));
}

EZVLanguageCode BroadcastDataService::PreferredLanguage() const
{
    return CurrentAudio().value_or(ZVAudio{}).language;
}

Reply BroadcastDataService::GetAudioFormat(Request const& /*request*/)
{
    std::optional<ZVAudio> const audio = CurrentAudio();
    return Reply(audio.has_value())
        .Add(key::EncodeType, static_cast<int>(audio.value_or(ZVAudio{}).encoding));
}

Reply BroadcastDataService::GetDigitalDualSound(Request const& /*request*/)
{
    bool const available = CurrentAudio().value_or(ZVAudio{}).dualMono != 0;
    EZVMultiSoundMode const mode = m_selection.dualSound;
    return Reply(true)
        .AddRecord(key::CurrentMode, DualSound(mode, available))
        .AddRecord(key::NextMode, DualSound(available ? Next(mode) : mode, available));
}

Reply BroadcastDataService::GetCurrentAudioInfo(Request const& /*request*/)
{
    return LanguageAndIndex(AudioTracks(m_player.Current(), m_player.Sounds()), m_selection.audio);
}

Reply BroadcastDataService::SizeOfAudio(Request const& /*request*/)
{
    return SizeReply(AudioTracks(m_player.Current(), m_player.Sounds()));
}

Reply BroadcastDataService::GetAudio(Request const& request)
{
    return RecordReply(key::Audio, At(AudioTracks(m_player.Current(), m_player.Sounds()),
                                      request.Get<unsigned int>(key::Index)));
}

Reply BroadcastDataService::GetRatingInfo(Request const& /*request*/)
{
    int const age = m_lock.MinimumAge();
    Reply reply = Reply(true).Add(key::RatingInfoSize, age > 0 ? 1 : 0);
    if (age > 0) {
        reply.AddRecord(key::RatingInfo, ZVRatingInfo{0, 0, static_cast<std::uint8_t>(age)});
    }
    return reply;
}

Reply BroadcastDataService::SetUnlockedInfo(Request const& request)
{
    std::optional<int> const lock = request.Get<int>(key::RatingInfo);
    bool const known = lock && *lock >= ZV_PARENTAL_LOCKED && *lock <= ZV_PARENTAL_UNLOCKED_ALL;
    if (known) {
        m_lock.Unlock(static_cast<EZVParentalLock>(*lock));
    }
    return Reply(known);
}

Reply BroadcastDataService::GetRatingLockState(Request const& /*request*/)
{
    return Reply(true).Add(key::LockState, static_cast<int>(m_lock.IsProgrammeLocked()));
}

Reply BroadcastDataService::UnMuteByRatingPin(Request const& /*request*/)
{
    return Reply(m_lock.EnterPin());
}

Reply BroadcastDataService::SetUnlockedInfoWhenFactoryMode(Request const& request)
{
    std::optional<bool> const on = request.Flag(key::LockState);
    if (on) {
        m_lock.SetFactoryMode(*on);
    }
    return Reply(on.has_value());
}

Reply BroadcastDataService::FlagServiceLocked(Request const& /*request*/)
{
    return Reply(true).Add(key::OutServiceLocked, static_cast<int>(m_lock.IsServiceLocked()));
}

} // namespace zviptv::sim
