// SPDX-License-Identifier: MIT
#pragma once

#include "guide/EitReader.h"
#include "guide/GuideFile.h"

namespace zviptv::sim {

/// A guide of the events whose start is known. Service and event ids are the stream's; an event id is one of
/// its service's only, so of equal ones GetRating and GetGenre mean that of the lowest service.
/// `serviceNames` gives the services' names.
LoadedGuide MakeGuide(EitTable const& table, ServiceNames const& serviceNames = {});

} // namespace zviptv::sim
