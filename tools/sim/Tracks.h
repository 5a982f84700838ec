#pragma once

#include "Message.h"
#include "stream/Programme.h"

#include <zviptv/IPTVTypes.h>

#include <vector>

namespace zviptv::sim {

// What a programme announces, as the records that applications get, in the order of the PMT.

std::vector<ZVAudio> AudioTracks(Programme const& programme);
std::vector<ZVTTX> TeletextPages(Programme const& programme);
std::vector<ZVHybridSBT> Subtitles(Programme const& programme);
std::vector<ZVISDBText> IsdbTexts(Programme const& programme, EZVISDBTextType type);

/// The type of ISDB text that a request names; nothing for another number.
std::optional<EZVISDBTextType> TextType(Request const& request);

/// A page that carries subtitles.
bool IsSubtitle(ZVTTX const& page);

/// Meant for the hard of hearing.
bool IsForHardOfHearing(ZVTTX const& page);

} // namespace zviptv::sim
