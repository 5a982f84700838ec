// SPDX-License-Identifier: MIT
#pragma once

#include "endpoints/Service.h"
#include "glib/Owned.h"

#include <functional>
#include <string>

namespace zviptv::sim {

/// The fault that the arguments of AddFault mean, with their options, as FaultRule::Parse() takes it.
std::string FaultText(GVariant* parameters);

/// Does what a method of the control interface says, with arguments of the interface's types. `done` is
/// called once it has taken effect, with the empty text, or could not: now, or for another input from the
/// main context.
/// @throws std::invalid_argument, or StreamError, with a line for the user; then nothing has changed, and
/// `done` is not called
void Perform(Service& service, std::string const& method, GVariant* parameters,
             std::function<void(std::string const& error)> done);

} // namespace zviptv::sim
