// SPDX-License-Identifier: MIT
#pragma once

#include "Print.h"

#include <string>

namespace zviptv::ctl {

/// The ISO 639 code, or a dash.
std::string LanguageWord(EZVLanguageCode language);

/// "eng, ac3, 2 channels, pid 0x0101"
std::string AudioText(ZVAudio const& audio);

std::string LockWord(bool locked);

// Records as JSON; a number is null if 0 means "not known".

Json::Value KnownJson(ZVAudio const& audio);
Json::Value KnownJson(std::vector<ZVAudio> const& tracks);
Json::Value KnownJson(ZVResolution const& picture);

} // namespace zviptv::ctl
