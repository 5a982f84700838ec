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
    Unknown ///< not checked because of another problem, or not reported
};

/// One line of the report, and the lines below it.
struct Finding
{
    std::string check; ///< "bus"
    State state = State::Ok;
    std::string text;

    // For problems only.
    std::string meaning;               ///< consequence for an application
    std::vector<std::string> commands; ///< commands that fix it, in this order
    std::string note;                  ///< additional or alternative steps
    ExitCode code = ExitCode::Accepted;
};

Finding Ok(char const* check, std::string const& text);
Finding Unknown(char const* check, std::string const& why);
Finding NotChecked(char const* check, std::string const& why);
Finding Wrong(char const* check, ExitCode code, std::string const& text, std::string const& meaning,
              std::vector<std::string> commands, std::string const& note = {});

/// The note of the fix follows `note`.
Finding Wrong(char const* check, ExitCode code, std::string const& text, std::string const& meaning,
              Fix const& fix, std::string const& note = {});

/// Whether the bus let the call to the service through.
bool IsLetThrough(Facts const& facts);

/// Why the policy cannot be judged on this bus: there is no connection, the bus needs no policy, or it does
/// not report it. Empty if it can be judged.
std::optional<Finding> PolicyNotApplicable(Facts const& facts, char const* check);

/// Why the owner of the name cannot be judged: there is no bus, or no owner. Empty if there is an owner.
std::optional<Finding> NoOwner(Facts const& facts, char const* check);

constexpr char OtherNames[] = "Where another policy names others on purpose, ask 'zviptvctl doctor --user "
                              "USER --group GROUP'.";

} // namespace zviptv::ctl::doctor
