#pragma once

#include <string>

namespace zviptv::sim {

/// Why the system bus cannot be reached; empty when it can.
std::string WhyNoSystemBus();

/// Whether this process owns the service's name. The bus works off a process's requests in order: the answer
/// comes after the one to the library's request for the name.
bool OwnsServiceName();

} // namespace zviptv::sim
