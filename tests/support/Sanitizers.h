// SPDX-License-Identifier: MIT
#pragma once

namespace zviptv::test {

// One compiler has a macro for it, the other a feature test.
#if !defined(__has_feature)
#define ZVIPTV_TEST_HAS_FEATURE(name) 0
#else
#define ZVIPTV_TEST_HAS_FEATURE(name) __has_feature(name)
#endif

/// The memory of a process has no meaning if freed memory waits in a quarantine,
#if defined(__SANITIZE_ADDRESS__) || ZVIPTV_TEST_HAS_FEATURE(address_sanitizer)
constexpr bool UnderAddressSanitizer = true;
#else
constexpr bool UnderAddressSanitizer = false;
#endif

/// or if a shadow grows with every used address.
#if defined(__SANITIZE_THREAD__) || ZVIPTV_TEST_HAS_FEATURE(thread_sanitizer)
constexpr bool UnderThreadSanitizer = true;
#else
constexpr bool UnderThreadSanitizer = false;
#endif

#undef ZVIPTV_TEST_HAS_FEATURE

} // namespace zviptv::test
