// SPDX-License-Identifier: MIT
#pragma once

#include "endpoints/Service.h"
#include "glib/Owned.h"

#include <functional>
#include <string>

namespace zviptv::sim {

/// The fault of the arguments of AddFault, with its options, as a text for FaultRule::Parse().
std::string FaultText(GVariant* parameters);

/// Runs a method of the control interface, with arguments of the interface's types. `done` is called with an
/// empty text when it has taken effect, or with an error: at once, or, for another input, from the main
/// context.
/// @throws std::invalid_argument, or StreamError, with a line for the user; then nothing has changed, and
/// `done` is not called
void Perform(Service& service, std::string const& method, GVariant* parameters,
             std::function<void(std::string const& error)> done);

} // namespace zviptv::sim
