// SPDX-License-Identifier: MIT
#include "CaptionOutput.h"

#include "Collect.h"
#include "common/PrintableText.h"
#include "output/Answer.h"
#include "output/ClockText.h"
#include "output/TrackText.h"
#include "output/Words.h"

namespace zviptv::ctl {

namespace {

/// 888 for magazine 8 and page 0x88; 0 for a hexadecimal digit.
unsigned PageNumber(unsigned magazine, unsigned page)
{
    bool const isDecimal = (page & 0xFU) <= 9 && page >> 4U <= 9;
    return isDecimal ? magazine * 100 + (page >> 4U) * 10 + (page & 0xFU) : 0;
}

/// What the service does not tell is left out: captions are shown without it.
std::map<unsigned, std::string> AskForLanguages(Session& session)
{
    std::map<unsigned, std::string> languages;
    auto& broadcast = session.Get<IBroadcastData>();
    auto const add = [&](unsigned magazine, unsigned page, EZVLanguageCode language) {
        if (language != ZV_LANGUAGE_UNKNOWN) {
            languages.emplace(PageNumber(magazine, page), LanguageWord(language));
        }
    };
    unsigned size = 0;
    if (session.Ask("SizeOfHybridSBT", [&] { return broadcast.SizeOfHybridSBT(size); })) {
        EZVLanguageCode language = ZV_LANGUAGE_UNKNOWN;
        for (auto const &subtitle :
             Collect<ZVHybridSBT>(session, "GetHybridSBT", size, [&](unsigned index, ZVHybridSBT&record) {
                 return broadcast.GetHybridSBT(index, language, record);
             })) {
            if (subtitle.kind == ZV_SUBTITLE_TELETEXT) {
                add(subtitle.magazine, subtitle.page, subtitle.language);
            }
        }
    }
    if (session.Ask("SizeOfTTX", [&] { return broadcast.SizeOfTTX(size); })) {
        for (auto const &page : Collect<ZVTTX>(session, "GetTTX", size, [&](unsigned index, ZVTTX&record) {
                 return broadcast.GetTTX(index, record);
             })) {
            add(page.magazine, page.page, page.language);
        }
    }
    return languages;
}

TeletextPages Choice(Session& session, CaptionOptions const& options)
{
    if (!TeletextDecoder::IsAvailable() || !AribCaptionDecoder::IsAvailable()) {
        std::string const missing = TeletextDecoder::IsAvailable() ? "libaribb24" : "libzvbi";
        throw Failure(ExitCode::Usage, "captions cannot be decoded: zviptvctl was built without " + missing +
                                           "; install " + missing + "-dev and build it again");
    }
    TeletextPages choice;
    choice.pages = options.pages;
    choice.languages = AskForLanguages(session);
    return choice;
}

std::string JsonText(Caption const& caption)
{
    Json::Value json(Json::objectValue);
    json["kind"] = ToString(caption.kind);
    json["page"] = caption.page == 0 ? Json::Value() : Json::Value(caption.page);
    json["languageCode"] = ToJson(caption.language);
    json["pid"] = caption.pid ? Json::Value(*caption.pid) : Json::Value();
    json["pts"] = caption.pts ? ToJson(*caption.pts) : Json::Value();
    json["lines"] = Json::Value(Json::arrayValue);
    for (CaptionLine const& line : caption.lines) {
        json["lines"].append(ToJson(line.Text()));
    }
    return Compact(json);
}

std::string Text(Caption const& caption)
{
    std::vector<std::string> lines;
    for (CaptionLine const& line : caption.lines) {
        lines.push_back(line.Text());
    }
    std::string const page = caption.page == 0 ? "" : " " + std::to_string(caption.page);
    return (caption.pts ? ClockText(*caption.pts) : "-") + " " + ToString(caption.kind) + page + " " +
           (caption.language.empty() ? "-" : caption.language) +
           (lines.empty() ? " erased" : ": " + PrintableText(Join(lines, " / ")));
}

} // namespace

CaptionOutput::CaptionOutput(Session& session, CaptionOptions const& options)
    : m_pages(options.pages), m_decoder(Choice(session, options))
{
    if (!options.srt.empty()) {
        m_file.emplace(options.srt);
    }
}

bool CaptionOutput::IsCaption(Packet const& packet)
{
    return packet.type == ZV_PES_TELETEXT || packet.type == ZV_PES_CAPTION;
}

std::vector<Caption> CaptionOutput::Take(Packet const& packet)
{
    PesPacket const pes(static_cast<PesKind>(packet.type), packet.pid.value_or(0), nullptr, packet.data);
    if (pes.Pts()) {
        m_subtitles.See(*pes.Pts());
    }
    bool const isChosen = m_pages.empty() || packet.type == ZV_PES_TELETEXT;
    return isChosen ? m_decoder.Decode(pes) : std::vector<Caption>();
}

bool CaptionOutput::Write(Caption const& caption)
{
    if (!m_file) {
        return true;
    }
    if (!caption.pts) {
        ++m_timeless;
        return true;
    }
    std::string const entry = m_subtitles.Add(caption);
    return m_file->Write(entry.data(), entry.size());
}

std::vector<std::string> CaptionOutput::Close()
{
    if (!m_file) {
        return {};
    }
    std::string const entries = m_subtitles.Finish();
    m_file->Write(entries.data(), entries.size());
    m_file->Close();
    return m_timeless == 0 ? std::vector<std::string>()
                           : std::vector<std::string>{Counted(m_timeless, "caption") +
                                                      " left out of the subtitles: no time stamp"};
}

std::string CaptionText(Caption const& caption, bool asJson)
{
    return (asJson ? JsonText(caption) : Text(caption)) + "\n";
}

} // namespace zviptv::ctl
