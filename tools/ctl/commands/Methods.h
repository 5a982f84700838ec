// SPDX-License-Identifier: MIT
#pragma once

#include "output/Answer.h"
#include "output/MethodTable.h"

#include <string>
#include <vector>

namespace zviptv::ctl {

class Session;

/// "GetTTX(unsigned int index) -> ZVTTX ttx"
std::string Signature(Method const& method);

/// The method with this `name` and number of arguments. If there is none, throws a Failure that says what to
/// use.
Method const& FindMethod(std::string const& name, std::size_t argumentCount);

/// Calls the method with the arguments of the command line.
Answer CallMethod(Method const& method, Session& session, std::vector<std::string> const& arguments);

/// Signatures of all methods, by interface; in JSON, the whole description of the protocol.
Answer ListMethods();

} // namespace zviptv::ctl
