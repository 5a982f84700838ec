// SPDX-License-Identifier: MIT
#pragma once

#include "doctor/Facts.h"
#include "doctor/Fix.h"
#include "output/Failure.h"

#include <optional>
#include <string>
#include <vector>

namespace zviptv::ctl::doctor {

enum class State
{
    Ok,
    Wrong,
    Unknown ///< not looked at, since something else is wrong, or not told
};

/// One line of the report, and what is below it.
struct Finding
{
    std::string check; ///< "bus"
    State state = State::Ok;
    std::string text;

    // Of what is wrong.
    std::string meaning;               ///< for an application
    std::vector<std::string> commands; ///< that fix it, in this order
    std::string note;                  ///< what else to do, or to do instead
    ExitCode code = ExitCode::Accepted;
};

Finding Ok(char const* check, std::string const& text);
Finding Unknown(char const* check, std::string const& why);
Finding NotLookedAt(char const* check, std::string const& why);
Finding Wrong(char const* check, ExitCode code, std::string const& text, std::string const& meaning,
              std::vector<std::string> commands, std::string const& note = {});

/// The fix's own note follows `note`.
Finding Wrong(char const* check, ExitCode code, std::string const& text, std::string const& meaning,
              Fix const& fix, std::string const& note = {});

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
