// SPDX-License-Identifier: MIT
#include "ExpectedLeaks.h"

namespace {
bool leaksAreExpected = false;
}

/// LeakSanitizer, if present, calls this at the end of the process.
extern "C" __attribute__((visibility("default"))) int __lsan_is_turned_off()
{
    return leaksAreExpected ? 1 : 0;
}

namespace zviptv::test {

void ExpectLeaks()
{
    leaksAreExpected = true;
}

} // namespace zviptv::test
