// SPDX-License-Identifier: MIT
#pragma once

#include "stream/Programme.h"

#include <zviptv/IPTVTypes.h>

#include <vector>

namespace zviptv::sim {

/// A digital caption service that a caption service descriptor (A/65) announces.
struct CaptionService
{
    EZVCaptionService number = ZV_CAPTION_SERVICE_UNKNOWN;
    EZVLanguageCode language = ZV_LANGUAGE_UNKNOWN;
    char koreanCode = '0'; ///< '1' when Korean characters are coded in two bytes each
};

/// The programme's digital caption services, in the order announced, whether for the programme or a stream of
/// it.
std::vector<CaptionService> CaptionServices(Programme const& programme);

} // namespace zviptv::sim
