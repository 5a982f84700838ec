// SPDX-License-Identifier: MIT
#include "guide/XmltvReader.h"

#include "guide/XmltvText.h"
#include "guide/XmltvTime.h"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

namespace zviptv::sim {

namespace {

constexpr std::size_t MaxIdSize = 1024;
constexpr std::size_t MaxLanguageSize = 64; // Describe() accepts less

// Depth of elements: 1 tv, 2 channel or programme, 3 their parts, 4 a rating's value.
constexpr unsigned ItemDepth = 2;
constexpr unsigned PartDepth = 3;

constexpr std::array<std::pair<std::string_view, GuideField>, 5> TextFields{{
    {"title", GuideField::Title},
    {"sub-title", GuideField::Subtitle},
    {"desc", GuideField::Description},
    {"category", GuideField::Genre},
    {"episode-num", GuideField::Episode},
}};

/// Converts seconds to the type of the guide.
std::optional<std::uint32_t> ParseTime(std::string_view text)
{
    auto const time = ParseXmltvTime(text);
    bool const fits = time && *time > 0 && *time <= std::numeric_limits<std::uint32_t>::max();
    return fits ? std::optional<std::uint32_t>(static_cast<std::uint32_t>(*time)) : std::nullopt;
}

} // namespace

XmltvReader::XmltvReader(std::string name, GuideBuilder& builder, GuideWarnings& warnings)
    : m_builder(builder), m_warnings(warnings), m_parser(std::move(name), *this)
{
}

void XmltvReader::Read(ReadBytes const& read)
{
    m_parser.Parse(read);
}

void XmltvReader::OnStart(std::string_view name, XmlAttributes const& attributes)
{
    ++m_depth;
    if (m_depth < ItemDepth && name != "tv") {
        m_parser.Fail("the document is not a programme guide: <" + std::string(CutUtf8(name, 60)) +
                      ">, not <tv>");
    }
    if (m_depth == ItemDepth) {
        StartItem(name, attributes);
    } else if (m_inside == Inside::Channel && m_depth == PartDepth && name == "display-name") {
        StartText(GuideField::Title, {});
    } else if (m_inside == Inside::Programme && m_depth >= PartDepth && m_textDepth == 0) {
        StartProgrammePart(name, attributes);
    }
}

void XmltvReader::StartItem(std::string_view name, XmlAttributes const& attributes)
{
    if (name == "channel") {
        m_inside = Inside::Channel;
        m_channel = {std::string(CutUtf8(attributes.Get("id"), MaxIdSize)), {}};
    } else if (name == "programme") {
        m_inside = Inside::Programme;
        StartProgramme(attributes);
    }
}

void XmltvReader::StartProgramme(XmlAttributes const& attributes)
{
    m_draft.eventId = ++m_programmes;
    m_draft.channel = CutUtf8(attributes.Get("channel"), MaxIdSize);
    m_draft.texts.clear();
    m_keep = ReadTimes(attributes.Get("start"), attributes.Get("stop"));
    if (m_keep && m_draft.channel.empty()) {
        Warn("programme without channel, left out");
        m_keep = false;
    }
}

bool XmltvReader::ReadTimes(std::string_view start, std::string_view stop)
{
    auto const startTime = ParseTime(start);
    if (!startTime) {
        Warn("no valid start time: " + Quoted(start) + ", programme left out");
        return false;
    }
    auto const stopTime = ParseTime(stop);
    if (!stop.empty() && !stopTime) {
        Warn("no valid stop time: " + Quoted(stop) + ", ignored");
    }
    if (stopTime && *stopTime <= *startTime) {
        Warn("stop time " + Quoted(stop) + " is not after the start, ignored");
    }
    m_draft.start = *startTime;
    m_draft.stop = stopTime ? *stopTime : 0;
    return true;
}

void XmltvReader::StartProgrammePart(std::string_view name, XmlAttributes const& attributes)
{
    if (m_depth == PartDepth && name == "rating") {
        m_inRating = true;
        AddText(GuideField::RatingSystem, attributes.Get("system"));
    } else if (m_depth == PartDepth && name == "icon") {
        AddText(GuideField::Icon, attributes.Get("src"));
    } else if (m_inRating && m_depth == PartDepth + 1 && name == "value") {
        StartText(GuideField::RatingValue, {});
    } else if (m_depth == PartDepth) {
        for (auto const& [element, field] : TextFields) {
            if (element == name) {
                StartText(field, attributes.Get("lang"));
            }
        }
    }
}

void XmltvReader::StartText(GuideField field, std::string_view language)
{
    m_textDepth = m_depth;
    m_field = field;
    m_language = CutUtf8(language, MaxLanguageSize);
    m_text.clear();
    m_cut = false;
}

void XmltvReader::OnText(std::string_view text)
{
    if (m_textDepth == 0 || m_cut) {
        return;
    }
    std::string_view const piece = CutUtf8(text, MaxTextSize - m_text.size());
    m_text += piece;
    m_cut = piece.size() < text.size();
    if (m_cut) {
        Warn("text over 65535 bytes, cut");
    }
}

void XmltvReader::EndText()
{
    m_textDepth = 0;
    TidyText(m_text);
    if (m_inside == Inside::Channel && !m_text.empty()) {
        m_channel.names.push_back(m_text);
    } else if (m_inside == Inside::Programme) {
        AddText(m_field, m_text, m_language);
    }
}

void XmltvReader::AddText(GuideField field, std::string_view text, std::string_view language)
{
    std::size_t const count = m_draft.texts.size();
    if (count < MaxTexts && (!text.empty() || field == GuideField::RatingSystem)) {
        m_draft.texts.push_back({field, std::string(language), std::string(CutUtf8(text, MaxTextSize))});
    } else if (count == MaxTexts) {
        Warn("programme with more than 1000 texts, cut");
    }
}

void XmltvReader::OnEnd(std::string_view)
{
    if (m_depth == m_textDepth) {
        EndText();
    }
    if (m_depth == PartDepth) {
        m_inRating = false;
    }
    if (m_depth == ItemDepth && m_inside == Inside::Channel) {
        m_builder.AddChannel(std::move(m_channel));
    }
    if (m_depth == ItemDepth && m_inside == Inside::Programme) {
        EndProgramme();
    }
    if (m_depth == ItemDepth) {
        m_inside = Inside::Other;
    }
    --m_depth;
}

void XmltvReader::EndProgramme()
{
    if (!m_keep) {
        return;
    }
    bool const hasTitle = std::any_of(m_draft.texts.begin(), m_draft.texts.end(),
                                      [](auto const& text) { return text.field == GuideField::Title; });
    if (!hasTitle) {
        Warn("programme without title");
    }
    m_builder.AddProgramme(std::move(m_draft));
}

} // namespace zviptv::sim
