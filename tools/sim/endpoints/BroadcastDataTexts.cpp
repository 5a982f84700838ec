// SPDX-License-Identifier: MIT
#include "BroadcastDataTexts.h"

#include "RecordReplies.h"
#include "RequestTable.h"
#include "playback/CaptionServices.h"
#include "playback/Tracks.h"

#include <algorithm>

namespace zviptv::sim {

namespace function = protocol::function;
namespace key = protocol::key;

namespace {

/// The first record for which `suits` is true, or otherwise the first record.
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
Reply LanguageAndRecord(char const* key, std::optional<Record> const& record)
{
    Record const sent = record.value_or(Record{});
    return Reply(record.has_value()).Add(key::LandCode, static_cast<int>(sent.language)).AddRecord(key, sent);
}

/// The functions of teletext, subtitles and captions.
class BroadcastTexts
{
public:
    BroadcastTexts(Player const& player, Selection const& selection, EZVLanguageCode preferred)
        : m_player(player), m_selection(selection), m_preferred(preferred)
    {
    }

    Reply SizeOfTTX(Request const& /*request*/) { return SizeReply(TeletextPages(m_player.Current())); }

    Reply GetTTX(Request const& request)
    {
        return RecordReply(key::Ttx,
                           At(TeletextPages(m_player.Current()), request.Get<unsigned int>(key::Index)));
    }

    Reply GetCurrentTTX(Request const& /*request*/)
    {
        return LanguageAndIndex(TeletextPages(m_player.Current()), m_selection.teletext);
    }

    Reply SizeOfHybridSBT(Request const& /*request*/)
    {
        return SizeReply(HybridSubtitles(m_player.Current()));
    }

    Reply GetHybridSBT(Request const& request)
    {
        return LanguageAndRecord(
            key::HybridSbt, At(HybridSubtitles(m_player.Current()), request.Get<unsigned int>(key::Index)));
    }

    Reply CheckHardOfHearingSBT(Request const& /*request*/)
    {
        std::vector<ZVHybridSBT> const subtitles = HybridSubtitles(m_player.Current());
        bool const exists = std::any_of(subtitles.begin(), subtitles.end(), [](ZVHybridSBT const& subtitle) {
            return subtitle.hardOfHearing != 0;
        });
        return Reply(true).Add(key::Exists, static_cast<int>(exists));
    }

    Reply GetPreferredHybridSBT(Request const& /*request*/)
    {
        EZVLanguageCode const language = m_preferred;
        return LanguageAndRecord(key::HybridSbt, Preferred(HybridSubtitles(m_player.Current()),
                                                           [language](ZVHybridSBT const& subtitle) {
                                                               return subtitle.language == language;
                                                           }));
    }

    Reply GetCurrentHybridSBT(Request const& /*request*/)
    {
        return LanguageAndIndex(HybridSubtitles(m_player.Current()), m_selection.subtitle);
    }

    Reply GetPreferredTTXSubtitle(Request const& /*request*/)
    {
        EZVLanguageCode const language = m_preferred;
        std::vector<ZVTTX> pages = TeletextPages(m_player.Current());
        pages.erase(
            std::remove_if(pages.begin(), pages.end(), [](ZVTTX const& page) { return !IsSubtitle(page); }),
            pages.end());
        return RecordReply(key::TtxSubtitle, Preferred(pages, [language](ZVTTX const& page) {
                               return page.language == language;
                           }));
    }

    Reply SizeOfISDBText(Request const& request)
    {
        std::optional<EZVISDBTextType> const type = TextType(request);
        return type ? SizeReply(IsdbTexts(m_player.Current(), *type, m_player.TextLanguages()))
                    : Reply(false).Add(key::Size, 0);
    }

    Reply GetISDBText(Request const& request)
    {
        std::optional<EZVISDBTextType> const type = TextType(request);
        return RecordReply(key::IsdbText,
                           type ? At(IsdbTexts(m_player.Current(), *type, m_player.TextLanguages()),
                                     request.Get<unsigned int>(key::Index))
                                : std::nullopt);
    }

    Reply GetCurrentISDBText(Request const& request)
    {
        std::optional<EZVISDBTextType> const type = TextType(request);
        return type ? LanguageAndIndex(IsdbTexts(m_player.Current(), *type, m_player.TextLanguages()),
                                       m_selection.isdbText.at(static_cast<std::size_t>(*type)))
                    : LanguageAndIndex(std::vector<ZVISDBText>(), 0U);
    }

    Reply GetCaptionLanguage(Request const& request)
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

private:
    Player const& m_player;
    Selection const& m_selection;
    EZVLanguageCode m_preferred;
};

constexpr RequestRow<BroadcastTexts> TextFunctions[] = {
    {function::SizeOfTTX, &BroadcastTexts::SizeOfTTX},
    {function::GetTTX, &BroadcastTexts::GetTTX},
    {function::GetCurrentTTX, &BroadcastTexts::GetCurrentTTX},
    {function::SizeOfHybridSBT, &BroadcastTexts::SizeOfHybridSBT},
    {function::GetHybridSBT, &BroadcastTexts::GetHybridSBT},
    {function::CheckHardOfHearingSBT, &BroadcastTexts::CheckHardOfHearingSBT},
    {function::GetPreferredHybridSBT, &BroadcastTexts::GetPreferredHybridSBT},
    {function::GetCurrentHybridSBT, &BroadcastTexts::GetCurrentHybridSBT},
    {function::GetPreferredTTXSubtitle, &BroadcastTexts::GetPreferredTTXSubtitle},
    {function::SizeOfISDBText, &BroadcastTexts::SizeOfISDBText},
    {function::GetISDBText, &BroadcastTexts::GetISDBText},
    {function::GetCurrentISDBText, &BroadcastTexts::GetCurrentISDBText},
    {function::GetCaptionLanguage, &BroadcastTexts::GetCaptionLanguage},
};

} // namespace

std::optional<CMessageBuffer> AnswerTexts(Request const& request, Player const& player,
                                          Selection const& selection, EZVLanguageCode preferred)
{
    BroadcastTexts functions(player, selection, preferred);
    return AnswerFrom(TextFunctions, functions, request);
}

} // namespace zviptv::sim
