// SPDX-License-Identifier: MIT
#pragma once

#include "guide/EitReader.h"
#include "guide/GuideFile.h"

namespace zviptv::sim {

/// A guide of the events with a known start. Service and event ids are those of the stream. An event id is
/// unique only within its service, so GetRating and GetGenre use that of the lowest service. `serviceNames`
/// gives the services' names.
LoadedGuide MakeGuide(EitTable const& table, ServiceNames const& serviceNames = {});

} // namespace zviptv::sim
