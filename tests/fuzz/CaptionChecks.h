// SPDX-License-Identifier: MIT
#pragma once

#include "Fuzz.h"

#include <zviptv/client/Caption.h>

namespace zviptv::fuzz {

/// Checks that apply to every caption of a decoder.
inline void CheckCaption(Caption const& caption)
{
    bool const isTeletext = caption.kind == CaptionKind::Teletext;
    Require(isTeletext ? caption.page >= 100 && caption.page <= 899 : caption.page == 0, "a page's number");
    for (CaptionLine const& line : caption.lines) {
        Require(!line.runs.empty() && !line.Text().empty(), "a line has text");
        for (CaptionRun const& run : line.runs) {
            Require(IsUtf8(run.text) && !HasControls(run.text) && !HasLateControls(run.text),
                    "and text only");
        }
    }
}

} // namespace zviptv::fuzz
