// SPDX-License-Identifier: MIT
/// @file
/// The export macro, and a check of the C++ version.

#pragma once

#if __cplusplus < 201703L
#error "The headers of zviptv need C++17: compile with -std=c++17 or later."
#endif

/// Marks symbols that the shared library exports; all other symbols are hidden.
#define ZVIPTV_API __attribute__((visibility("default")))
