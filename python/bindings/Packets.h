// SPDX-License-Identifier: MIT
#pragma once

#include <pybind11/pybind11.h>

namespace zviptv::python {

/// Adds PesPacket and CaptionData. Both are buffers: a memoryview of them shares the bytes of the message
/// that brought them, and keeps it alive.
void BindPackets(pybind11::module_& module);

} // namespace zviptv::python
