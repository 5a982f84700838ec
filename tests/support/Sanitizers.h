// SPDX-License-Identifier: MIT
#pragma once

namespace zviptv::test {

// Of one compiler a macro tells, of the other a feature.
#if !defined(__has_feature)
#define ZVIPTV_TEST_HAS_FEATURE(name) 0
#else
#define ZVIPTV_TEST_HAS_FEATURE(name) __has_feature(name)
#endif

/// What a process holds means nothing where freed memory waits in a quarantine,
#if defined(__SANITIZE_ADDRESS__) || ZVIPTV_TEST_HAS_FEATURE(address_sanitizer)
constexpr bool UnderAddressSanitizer = true;
#else
constexpr bool UnderAddressSanitizer = false;
#endif

/// or where a shadow grows with every address that is ever touched.
#if defined(__SANITIZE_THREAD__) || ZVIPTV_TEST_HAS_FEATURE(thread_sanitizer)
constexpr bool UnderThreadSanitizer = true;
#else
constexpr bool UnderThreadSanitizer = false;
#endif

#undef ZVIPTV_TEST_HAS_FEATURE

} // namespace zviptv::test
