#pragma once

#include "doctor/Finding.h"
#include "doctor/Mending.h"

// What the checks have in common.
namespace zviptv::ctl::doctor {

Finding Ok(char const* check, std::string const& text);
Finding Unknown(char const* check, std::string const& why);
Finding NotLookedAt(char const* check, std::string const& why);
Finding Wrong(char const* check, ExitCode code, std::string const& text, std::string const& meaning,
              std::vector<std::string> commands, std::string const& note = {});

/// The remedy's own note stands behind `note`.
Finding Wrong(char const* check, ExitCode code, std::string const& text, std::string const& meaning,
              Remedy const& remedy, std::string const& note = {});

/// Whether the question to the service got past the bus.
bool IsLetThrough(Facts const& facts);

/// Why what a policy says cannot be judged on this bus: nobody reaches it, it needs no policy, or it does not
/// tell. Empty where it can.
std::optional<Finding> NoPolicyMatters(Facts const& facts, char const* check);

/// Why the owner of the name cannot be judged: there is no bus, or no owner. Empty where there is one.
std::optional<Finding> NoOwner(Facts const& facts, char const* check);

constexpr char OtherNames[] = "Where another policy names others on purpose, ask 'zviptvctl doctor --user "
                              "USER --group GROUP'.";

} // namespace zviptv::ctl::doctor
