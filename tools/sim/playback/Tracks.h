// SPDX-License-Identifier: MIT
#pragma once

#include "mpegts/AribCaptions.h"
#include "stream/AudioFormat.h"

#include <zviptv/IPTVTypes.h>

#include <vector>

namespace zviptv::sim {

// What a programme announces, as the records that applications get, in the order of the PMT.

/// With what is known of the tracks' frames.
std::vector<ZVAudio> AudioTracks(Programme const& programme, AudioFormats const& formats = {});
std::vector<ZVTTX> TeletextPages(Programme const& programme);

/// DVB subtitles.
std::vector<ZVHybridSBT> Subtitles(Programme const& programme);

/// All subtitles: the DVB ones, then the teletext pages that carry some.
std::vector<ZVHybridSBT> HybridSubtitles(Programme const& programme);

/// One a stream; one a language where the stream's languages are known.
std::vector<ZVISDBText> IsdbTexts(Programme const& programme, EZVISDBTextType type,
                                  AribLanguages const& languages = {});

/// A page that carries subtitles.
bool IsSubtitle(ZVTTX const& page);

/// Meant for the hard of hearing.
bool IsForHardOfHearing(ZVTTX const& page);

} // namespace zviptv::sim
