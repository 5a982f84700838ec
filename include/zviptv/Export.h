#pragma once

/// Marks what the shared library exports; everything else in it is hidden.
#define ZVIPTV_API __attribute__((visibility("default")))
