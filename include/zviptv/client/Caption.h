// SPDX-License-Identifier: MIT
/// @file
/// Captions as text.

#pragma once

#include <zviptv/Export.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace zviptv {

/// What a caption was broadcast as.
enum class CaptionKind
{
    Teletext,       ///< a page of EBU teletext
    AribCaption,    ///< an ARIB caption
    AribSuperimpose ///< ARIB superimposed text
};

/// "teletext", "caption", "superimpose".
ZVIPTV_API char const* ToString(CaptionKind kind);

/// A colour of red, green and blue, each 0 to 255.
struct Colour
{
    std::uint8_t red = 255;   ///< 0 to 255
    std::uint8_t green = 255; ///< 0 to 255
    std::uint8_t blue = 255;  ///< 0 to 255

    friend bool operator==(Colour one, Colour other)
    {
        return one.red == other.red && one.green == other.green && one.blue == other.blue;
    }
    friend bool operator!=(Colour one, Colour other) { return !(one == other); }
};

/// Characters of one line that look alike.
struct CaptionRun
{
    std::string text;                 ///< UTF-8, without line breaks and other control characters
    Colour foreground;                ///< colour of the characters
    std::optional<Colour> background; ///< nothing where the decoder does not know it (ARIB)
    bool isDoubleHeight = false;      ///< twice as high as the other characters
    bool isDoubleWidth = false;       ///< twice as wide
    bool isSmall = false;             ///< half height, as for the readings of Japanese characters (ARIB)
    bool isFlashing = false;          ///< teletext only

    friend bool operator==(CaptionRun const& one, CaptionRun const& other)
    {
        return one.text == other.text && one.foreground == other.foreground &&
               one.background == other.background && one.isDoubleHeight == other.isDoubleHeight &&
               one.isDoubleWidth == other.isDoubleWidth && one.isSmall == other.isSmall &&
               one.isFlashing == other.isFlashing;
    }
    friend bool operator!=(CaptionRun const& one, CaptionRun const& other) { return !(one == other); }
};

/// One line of a caption.
struct CaptionLine
{
    std::vector<CaptionRun> runs; ///< at least one; spaces at the line's ends are left out

    /// The text of all runs.
    ZVIPTV_API std::string Text() const;

    friend bool operator==(CaptionLine const& one, CaptionLine const& other)
    {
        return one.runs == other.runs;
    }
    friend bool operator!=(CaptionLine const& one, CaptionLine const& other) { return !(one == other); }
};

/// A caption as the viewer reads it. It is shown until the next one of the same kind, PID and page or
/// language. A caption without lines removes the previous one from the screen.
struct Caption
{
    CaptionKind kind = CaptionKind::Teletext; ///< what it was broadcast as
    unsigned page = 0;                        ///< number of the teletext page, 100 to 899; 0 for ARIB text
    std::string language;             ///< ISO 639-2 code in three lower-case letters; empty if not known
    std::optional<std::uint16_t> pid; ///< of the stream; nothing for data without one (CaptionCB)
    std::optional<std::uint64_t> pts; ///< 1/90000 s, 33 bits, when to show it; nothing if not known
    std::vector<CaptionLine> lines;   ///< from top to bottom

    /// Whether it has no lines and so removes the previous caption from the screen.
    bool IsEmpty() const { return lines.empty(); }

    /// The text, with a line feed between the lines.
    ZVIPTV_API std::string Text() const;
};

} // namespace zviptv
