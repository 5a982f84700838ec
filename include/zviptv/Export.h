// SPDX-License-Identifier: MIT
/// @file
/// What the library exports, and the language it needs.

#pragma once

#if __cplusplus < 201703L
#error "The headers of zviptv need C++17: compile with -std=c++17 or later."
#endif

/// Marks what the shared library exports; everything else in it is hidden.
#define ZVIPTV_API __attribute__((visibility("default")))
