// SPDX-License-Identifier: MIT
#pragma once

#include "stream/Programme.h"

#include <zviptv/IPTVTypes.h>

#include <vector>

namespace zviptv::sim {

/// A digital caption service from a caption service descriptor (A/65).
struct CaptionService
{
    EZVCaptionService number = ZV_CAPTION_SERVICE_UNKNOWN;
    EZVLanguageCode language = ZV_LANGUAGE_UNKNOWN;
    char koreanCode = '0'; ///< '1' if Korean characters are coded in two bytes each
};

/// The programme's digital caption services, of the programme and of its streams, in the order of the
/// descriptors.
std::vector<CaptionService> CaptionServices(Programme const& programme);

} // namespace zviptv::sim
