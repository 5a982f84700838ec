#include "BroadcastDataService.h"

#include "CaptionServices.h"
#include "Tracks.h"

#include <vector>

namespace zviptv::sim {

namespace function = protocol::function;
namespace key = protocol::key;

namespace {

/// The entry of a list; nothing past its end.
template <typename Record, typename Index>
std::optional<Record> At(std::vector<Record> const& records, std::optional<Index> index)
{
    bool const exists = index && *index >= Index{} && static_cast<std::size_t>(*index) < records.size();
    return exists ? std::optional<Record>(records[static_cast<std::size_t>(*index)]) : std::nullopt;
}

/// The first record that `suits`, else the first at all.
template <typename Record, typename Suits>
std::optional<Record> Preferred(std::vector<Record> const& records, Suits suits)
{
    auto const found = std::find_if(records.begin(), records.end(), suits);
    if (found != records.end()) {
        return *found;
    }
    return records.empty() ? std::nullopt : std::optional<Record>(records.front());
}

template <typename Record>
Reply RecordReply(char const* key, std::optional<Record> const& record)
{
    return Reply(record.has_value()).AddRecord(key, record.value_or(Record{}));
}

template <typename Record>
Reply LanguageAndRecord(char const* key, std::optional<Record> const& record)
{
    Record const sent = record.value_or(Record{});
    return Reply(record.has_value()).Add(key::LandCode, static_cast<int>(sent.language)).AddRecord(key, sent);
}

template <typename Record, typename Index>
Reply LanguageAndIndex(std::vector<Record> const& records, Index index)
{
    std::optional<Record> const current = At(records, std::optional<Index>(index));
    return Reply(current.has_value())
        .Add(key::LandCode, static_cast<int>(current.value_or(Record{}).language))
        .Add(key::Index, index);
}

template <typename Record>
Reply SizeReply(std::vector<Record> const& records)
{
    return Reply(true).Add(key::Size, records.size());
}

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

Reply BroadcastDataService::SizeOfTTX(Request const& /*request*/)
{
    return SizeReply(TeletextPages(m_player.Current()));
}

Reply BroadcastDataService::GetTTX(Request const& request)
{
    return RecordReply(key::Ttx,
                       At(TeletextPages(m_player.Current()), request.Get<unsigned int>(key::Index)));
}

Reply BroadcastDataService::GetCurrentTTX(Request const& /*request*/)
{
    return LanguageAndIndex(TeletextPages(m_player.Current()), m_selection.teletext);
}

Reply BroadcastDataService::SizeOfHybridSBT(Request const& /*request*/)
{
    return SizeReply(HybridSubtitles(m_player.Current()));
}

Reply BroadcastDataService::GetHybridSBT(Request const& request)
{
    return LanguageAndRecord(key::HybridSbt,
                             At(HybridSubtitles(m_player.Current()), request.Get<unsigned int>(key::Index)));
}

Reply BroadcastDataService::CheckHardOfHearingSBT(Request const& /*request*/)
{
    std::vector<ZVHybridSBT> const subtitles = HybridSubtitles(m_player.Current());
    bool const exists = std::any_of(subtitles.begin(), subtitles.end(),
                                    [](ZVHybridSBT const& subtitle) { return subtitle.hardOfHearing != 0; });
    return Reply(true).Add(key::Exists, static_cast<int>(exists));
}

Reply BroadcastDataService::GetPreferredHybridSBT(Request const& /*request*/)
{
    EZVLanguageCode const language = PreferredLanguage();
    return LanguageAndRecord(key::HybridSbt, Preferred(HybridSubtitles(m_player.Current()),
                                                       [language](ZVHybridSBT const& subtitle) {
                                                           return subtitle.language == language;
                                                       }));
}

Reply BroadcastDataService::GetCurrentHybridSBT(Request const& /*request*/)
{
    return LanguageAndIndex(HybridSubtitles(m_player.Current()), m_selection.subtitle);
}

Reply BroadcastDataService::GetPreferredTTXSubtitle(Request const& /*request*/)
{
    EZVLanguageCode const language = PreferredLanguage();
    std::vector<ZVTTX> pages = TeletextPages(m_player.Current());
    pages.erase(
        std::remove_if(pages.begin(), pages.end(), [](ZVTTX const& page) { return !IsSubtitle(page); }),
        pages.end());
    return RecordReply(key::TtxSubtitle,
                       Preferred(pages, [language](ZVTTX const& page) { return page.language == language; }));
}

Reply BroadcastDataService::SizeOfISDBText(Request const& request)
{
    std::optional<EZVISDBTextType> const type = TextType(request);
    return type ? SizeReply(IsdbTexts(m_player.Current(), *type, m_player.TextLanguages()))
                : Reply(false).Add(key::Size, 0);
}

Reply BroadcastDataService::GetISDBText(Request const& request)
{
    std::optional<EZVISDBTextType> const type = TextType(request);
    return RecordReply(key::IsdbText, type
                                          ? At(IsdbTexts(m_player.Current(), *type, m_player.TextLanguages()),
                                               request.Get<unsigned int>(key::Index))
                                          : std::nullopt);
}

Reply BroadcastDataService::GetCurrentISDBText(Request const& request)
{
    std::optional<EZVISDBTextType> const type = TextType(request);
    return type ? LanguageAndIndex(IsdbTexts(m_player.Current(), *type, m_player.TextLanguages()),
                                   m_selection.isdbText.at(static_cast<std::size_t>(*type)))
                : LanguageAndIndex(std::vector<ZVISDBText>(), 0U);
}

Reply BroadcastDataService::GetCaptionLanguage(Request const& request)
{
    std::optional<int> const number = request.Get<int>(key::Service);
    std::vector<CaptionService> const services = CaptionServices(m_player.Current());
    auto const found =
        std::find_if(services.begin(), services.end(),
                     [&number](CaptionService const& service) { return service.number == number; });
    CaptionService const service = found == services.end() ? CaptionService() : *found;
    return Reply(found != services.end())
        .Add(key::LandCode, static_cast<int>(service.language))
        .Add(key::KoreanCode, std::string(1, service.koreanCode));
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
