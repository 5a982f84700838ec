// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/client/StateWatcher.h>

#include <pybind11/pybind11.h>

namespace zviptv::python {

/// A TelevisionState of the package.
pybind11::object ToPython(TelevisionState const& value);

/// A TelevisionState or a StateChange of the package.
pybind11::object ToPython(StateEvent const& value);

} // namespace zviptv::python
