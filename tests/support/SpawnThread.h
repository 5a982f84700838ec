// SPDX-License-Identifier: MIT
#pragma once

#include "process/Spawn.h"

namespace zviptv::test {

/// As Spawn(), but the process is killed only when this one ends, whichever thread calls.
pid_t SpawnFromAnyThread(SpawnRequest const& request);

} // namespace zviptv::test
