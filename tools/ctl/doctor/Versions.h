// SPDX-License-Identifier: MIT
#pragma once

#include "doctor/Facts.h"

namespace zviptv::ctl::doctor {

VersionFacts LookUpVersions();

/// "1.0.0" behind "libzv-iptv-service-api.so."; empty where the file is named otherwise.
std::string VersionOf(std::string const& loadedFile);

} // namespace zviptv::ctl::doctor
