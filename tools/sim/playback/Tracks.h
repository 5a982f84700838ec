// SPDX-License-Identifier: MIT
#pragma once

#include "mpegts/AribCaptions.h"
#include "stream/AudioFormat.h"

#include <zviptv/IPTVTypes.h>

#include <vector>

namespace zviptv::sim {

// The tracks of a programme as records for applications, in the order of the PMT.

/// The audio tracks, with the data of their frames, as far as known.
std::vector<ZVAudio> AudioTracks(Programme const& programme, AudioFormats const& formats = {});
std::vector<ZVTTX> TeletextPages(Programme const& programme);

/// DVB subtitles.
std::vector<ZVHybridSBT> Subtitles(Programme const& programme);

/// All subtitles: DVB subtitles, then teletext pages with subtitles.
std::vector<ZVHybridSBT> HybridSubtitles(Programme const& programme);

/// One for each stream; one for each language if the stream's languages are known.
std::vector<ZVISDBText> IsdbTexts(Programme const& programme, EZVISDBTextType type,
                                  AribLanguages const& languages = {});

/// Whether the page has subtitles.
bool IsSubtitle(ZVTTX const& page);

/// Whether it is for the hard of hearing.
bool IsForHardOfHearing(ZVTTX const& page);

} // namespace zviptv::sim
