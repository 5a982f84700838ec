// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

namespace zviptv::test {

/// The arguments after the mode on the command line.
using Arguments = std::vector<std::string>;

// The modes of a peer process. Each prints its unique bus name when it is ready, and runs until it is killed.

/// Answers calls and executes their orders.
[[noreturn]] void RunPartner();

/// Owns the helper bus's name and accepts every request.
[[noreturn]] void RunService();

/// Sends at a steady rate and prints every 100 ms how many messages those were: kind ("signals", "calls", or
/// "names", which takes and gives back a bus name), destination or that name, object path, rate a second.
[[noreturn]] void RunFlood(Arguments const& arguments);

/// Claims to be others: victim's bus name, object path, partner's bus name. Prints "done" at the end.
[[noreturn]] void RunStranger(Arguments const& arguments);

/// Prints a line immediately.
void PrintLine(std::string const& line);

} // namespace zviptv::test
