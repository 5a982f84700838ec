// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/client/CaptionDecoder.h>

#include <pybind11/pybind11.h>

namespace zviptv::python {

/// Adds CaptionDecoder.
void BindCaptions(pybind11::module_& module);

/// A Caption of the package.
pybind11::object ToPython(Caption const& value);

/// The teletext pages to decode: a number, an iterable of numbers or None; and a mapping from numbers to
/// languages or None. Raises TypeError or ValueError.
TeletextPages ToPages(pybind11::object const& pages, pybind11::object const& languages);

} // namespace zviptv::python
