// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/client/ByteView.h>

namespace zviptv {

/// Calls `take(id, content, whole)` for each data unit of EN 300 472 in `units`, which begins with the first
/// one: its id, what follows its length byte, and all of it. A unit that does not fit ends them.
template <typename Take>
void ForEachDataUnit(ByteView units, Take take)
{
    constexpr std::size_t head = 2; // id and length
    while (units.Size() >= head && head + units[1] <= units.Size()) {
        ByteView const whole = units.Part(0, head + units[1]);
        take(whole[0], whole.Part(head), whole);
        units = units.Part(whole.Size());
    }
}

} // namespace zviptv
