// SPDX-License-Identifier: MIT
#pragma once

#include "guide/GuideBuilder.h"
#include "guide/XmlParser.h"

namespace zviptv::sim {

/// Reads an XMLTV document into a builder. Unknown elements are ignored.
class XmltvReader : private XmlHandler
{
public:
    /// The largest size of a text in bytes; the rest is left out, with a warning.
    static constexpr std::size_t MaxTextSize = 65535;

    /// The largest number of texts of a programme; more are left out, with a warning.
    static constexpr std::size_t MaxTexts = 1000;

    /// `name` is the name of the document in error messages.
    XmltvReader(std::string name, GuideBuilder& builder, GuideWarnings& warnings);

    /// Call it only once. @throws GuideError if the document is not XMLTV or not well-formed
    void Read(ReadBytes const& read);

private:
    enum class Inside
    {
        Other,
        Channel,
        Programme
    };

    void OnStart(std::string_view name, XmlAttributes const& attributes) override;
    void OnEnd(std::string_view name) override;
    void OnText(std::string_view text) override;

    void StartItem(std::string_view name, XmlAttributes const& attributes);
    void StartProgramme(XmlAttributes const& attributes);
    void StartProgrammePart(std::string_view name, XmlAttributes const& attributes);
    void StartText(GuideField field, std::string_view language);
    void EndText();
    void EndProgramme();
    bool ReadTimes(std::string_view start, std::string_view stop);
    void AddText(GuideField field, std::string_view text, std::string_view language = {});
    void Warn(std::string const& text) { m_warnings.Add(m_parser.Line(), text); }

    GuideBuilder& m_builder;
    GuideWarnings& m_warnings;
    XmlParser m_parser;
    unsigned m_depth = 0;
    Inside m_inside = Inside::Other;
    bool m_inRating = false;
    GuideChannel m_channel;
    ProgrammeDraft m_draft;
    bool m_keep = false; ///< the programme can be kept
    std::uint32_t m_programmes = 0;
    unsigned m_textDepth = 0; ///< depth of the element whose text is being read; 0 for none
    GuideField m_field = GuideField::Title;
    std::string m_language;
    std::string m_text;
    bool m_cut = false;
};

} // namespace zviptv::sim
