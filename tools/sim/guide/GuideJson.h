// SPDX-License-Identifier: MIT
#pragma once

#include "guide/Guide.h"

#include <string>

namespace zviptv::sim {

/// Answers of the guide as one line of JSON in UTF-8. docs/reference/guide.md has their members.
std::string ProgrammeJson(Guide const& guide, std::uint32_t position);

/// An array; it ends before the first programme with which it would have more than `largest` bytes.
std::string ProgrammesJson(Guide const& guide, GuideRange range, std::size_t largest = SIZE_MAX);

/// Empty if the programme has no rating.
std::string RatingJson(Guide const& guide, std::uint32_t position);
std::string GenresJson(Guide const& guide, std::uint32_t position);

} // namespace zviptv::sim
