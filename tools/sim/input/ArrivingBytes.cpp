// SPDX-License-Identifier: MIT
#include "input/ArrivingBytes.h"

#include "stream/PacketSource.h"

namespace zviptv::sim {

void ArrivingBytes::Rewind()
{
    throw StreamError(Name() + " cannot be played again from its start: it is a live input");
}

} // namespace zviptv::sim
