// SPDX-License-Identifier: MIT
#pragma once

#include "doctor/Facts.h"

namespace zviptv::ctl::doctor {

VersionFacts LookUpVersions();

/// "1.0.0" after "libzv-iptv-service-api.so."; empty if the file has another name.
std::string VersionOf(std::string const& loadedFile);

} // namespace zviptv::ctl::doctor
