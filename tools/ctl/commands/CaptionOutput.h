// SPDX-License-Identifier: MIT
#pragma once

#include "output/OutputFile.h"
#include "output/SubRip.h"
#include "session/Session.h"
#include "session/Subscription.h"

#include <zviptv/client/CaptionDecoder.h>

#include <optional>
#include <set>
#include <string>
#include <vector>

namespace zviptv::ctl {

/// How `caption` shows captions as text.
struct CaptionOptions
{
    std::set<unsigned> pages; ///< teletext pages; empty for all subtitles and ARIB captions
    std::string srt;          ///< file of subtitles, "-" for standard output instead of lines; empty for none
};

/// Turns PES packets into captions, into a line for each, and into a file of subtitles. What goes wrong with
/// the file is a Failure.
class CaptionOutput
{
public:
    /// Asks the service for the languages of teletext pages. Throws a Failure if the program was built
    /// without the libraries that decode captions.
    CaptionOutput(Session& session, CaptionOptions const& options);

    /// Whether the packet may carry captions.
    static bool IsCaption(Packet const& packet);

    /// The captions that are complete with this packet.
    std::vector<Caption> Take(Packet const& packet);

    /// The teletext pages that have begun, at the end.
    std::vector<Caption> Flush() { return m_decoder.Flush(); }

    /// Writes a caption to the file of subtitles. False when the reader of a pipe has gone.
    bool Write(Caption const& caption);

    /// Writes the captions that are shown at the end. Returns what was left out, in words.
    std::vector<std::string> Close();

    /// Whether standard output has the file instead of lines.
    bool IsStandardOutput() const { return m_file && m_file->IsStandardOutput(); }

private:
    std::set<unsigned> const m_pages;
    CaptionDecoder m_decoder;
    std::optional<OutputFile> m_file;
    SubRip m_subtitles;
    std::uint64_t m_timeless = 0;
};

/// "00:00:02.480 teletext 888 eng: One / two", or a JSON object; with line break.
std::string CaptionText(Caption const& caption, bool asJson);

} // namespace zviptv::ctl
